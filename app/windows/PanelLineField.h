#pragma once

#include <QLabel>

class FileLink;

/// The text under the card's summary: two wrapped lines, or more if there is room, elided so that no text enlarges the
/// window. text() and the tool tip have the whole text. The first paragraph keeps at least one line; the rest goes to
/// the last one, which may end with a link to a file. Never rich text.
class PanelLineField final : public QLabel
{
    Q_OBJECT

public:
    explicit PanelLineField(QWidget* parent = nullptr);

    /// The text ends with the file's name if there is a path.
    void show(const QString& text, const QString& path);
    /// Hidden while there is no file.
    [[nodiscard]] FileLink& link() { return *m_link; }

    /// Two lines for any text.
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// The lines that fit, without the link.
    [[nodiscard]] QStringList shownLines() const;
    [[nodiscard]] QString textBeforeLink() const;
    void placeLink();
    [[nodiscard]] QStringList wrapped(const QString& paragraph, qsizetype lines) const;

    FileLink* m_link; // a child
};
