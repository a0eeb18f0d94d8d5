#pragma once

#include <QLabel>

/// What the main window says under the card's summary: two lines of text, or more where there is room, wrapped, and
/// elided where they do not fit, so that no text makes the window grow. The whole text is in text(), for assistive
/// technology, and in the tool tip. Of several paragraphs the first keeps a line; the last is shown first. Never rich
/// text.
class PanelLineField final : public QLabel
{
    Q_OBJECT

public:
    explicit PanelLineField(QWidget* parent = nullptr);

    /// Room for two lines, whatever the text.
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// The lines as they fit into the field.
    [[nodiscard]] QStringList shownLines() const;
    [[nodiscard]] QStringList wrapped(const QString& paragraph, qsizetype lines) const;
};
