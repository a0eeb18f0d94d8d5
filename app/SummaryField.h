#pragma once

#include <QLabel>

/// The card's summary: the first line stands out, and a line that is longer than the field is elided, so that no name
/// makes the window grow; the whole text is in text(), for assistive technology, and in the tool tip. Never rich text.
class SummaryField final : public QLabel
{
    Q_OBJECT

public:
    explicit SummaryField(QWidget* parent = nullptr);

    /// Room for three lines, whatever the text.
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QFont fontOfLine(qsizetype line) const;
    /// The lines as they fit into the field.
    [[nodiscard]] QStringList shownLines() const;
};
