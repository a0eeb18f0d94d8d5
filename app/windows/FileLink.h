#pragma once

#include <QAbstractButton>

/// The name of a file as a link. Enter, the space bar and a click open the file, the context menu also its folder. A
/// long name is elided. Never rich text.
class FileLink final : public QAbstractButton
{
    Q_OBJECT

public:
    explicit FileLink(QWidget* parent);

    /// Shows that file's name; an empty path hides the link.
    void setPath(const QString& path);
    /// The name, with blanks for control characters.
    [[nodiscard]] const QString& name() const { return m_name; }

    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    void folderRequested();

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QFont linkFont() const;

    QString m_name; // not text(), where "&" marks a key
};
