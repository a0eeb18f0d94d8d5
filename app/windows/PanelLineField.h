#pragma once

#include <QLabel>

/// The text under the card's summary: two wrapped lines, or more if there is room, elided so that no text enlarges the
/// window. text() and the tool tip have the whole text. The first paragraph keeps at least one line; the rest goes to
/// the last one. Never rich text.
class PanelLineField final : public QLabel
{
    Q_OBJECT

public:
    explicit PanelLineField(QWidget* parent = nullptr);

    /// Two lines for any text.
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// The lines that fit.
    [[nodiscard]] QStringList shownLines() const;
    [[nodiscard]] QStringList wrapped(const QString& paragraph, qsizetype lines) const;
};
