#pragma once

#include <QFileDialog>
#include <QPointer>

/// Asks for a card XML file in a panel over a window; one panel at a time. Main thread only.
class CardFileChoice final : public QObject
{
    Q_OBJECT

public:
    /// Whether the keys that ask for a file are held down. Without an event the desktop is asked.
    [[nodiscard]] static bool areKeysHeld(bool hasEvent);

    /// Shows the panel at the folder, or raises the open one.
    void begin(QWidget& window, const QString& folder);

Q_SIGNALS:
    void chosen(const QString& path);

private:
    QPointer<QFileDialog> m_panel; // belongs to the window
};
