#pragma once

#include <QFileDialog>
#include <QObject>
#include <QPointer>

/// Lets the user choose a card XML file in a panel over a window; one panel at a time. Main thread only.
class CardFileChoice final : public QObject
{
    Q_OBJECT

public:
    /// Whether the keys are held down that ask for a file in the place of the card in the reader. Without an event of
    /// ours nothing has told of keys: the desktop is asked.
    [[nodiscard]] static bool areKeysHeld(bool hasEvent);

    /// Shows the panel, at the folder, or brings the one that is there to the front.
    void begin(QWidget& window, const QString& folder);

Q_SIGNALS:
    void chosen(const QString& path);

private:
    QPointer<QFileDialog> m_panel; // belongs to the window
};
