#include "app/windows/CardFileChoice.h"

#include "app/windows/CardFilePanel.h"

#include <QGuiApplication>

bool CardFileChoice::areKeysHeld(bool hasEvent)
{
    constexpr Qt::KeyboardModifiers fileKeys = Qt::ControlModifier | Qt::AltModifier;
    const Qt::KeyboardModifiers keys =
        hasEvent ? QGuiApplication::keyboardModifiers() : QGuiApplication::queryKeyboardModifiers();
    return (keys & fileKeys) == fileKeys;
}

void CardFileChoice::begin(QWidget& window, const QString& folder)
{
    if (m_panel) {
        m_panel->raise();
        return;
    }
    m_panel = makeCardFilePanel(window, folder);
    connect(m_panel, &QFileDialog::accepted, this, [this] {
        if (const QStringList files = m_panel->selectedFiles(); !files.isEmpty())
            Q_EMIT chosen(files.first());
    });
    m_panel->open();
}
