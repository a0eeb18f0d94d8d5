#include "prefs/ModeMenu.h"

#include "platform/gui/CurrentEntry.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QWheelEvent>

#include <utility>

ModeMenu::ModeMenu(QWidget* parent)
    : QComboBox(parent)
{
    m_rest.setSingleShot(true);
    m_rest.setInterval(keyRest);
    connect(&m_rest, &QTimer::timeout, this, &ModeMenu::settle);
    connect(this, &QComboBox::activated, this, &ModeMenu::entryActivated);
    tellCurrentEntry(*this);
}

void ModeMenu::showPopup()
{
    // A choice in the list replaces that by keys.
    m_rest.stop();
    const QScopedValueRollback opening(m_isOpening, true);
    QComboBox::showPopup();
}

void ModeMenu::hidePopup()
{
    QComboBox::hidePopup();
    if (m_isBrowsing)
        m_rest.start();
}

void ModeMenu::keyPressEvent(QKeyEvent* event)
{
    if (!m_isBrowsing)
        m_indexBefore = currentIndex();
    {
        const QScopedValueRollback inKeyPress(m_isInKeyPress, true);
        QComboBox::keyPressEvent(event);
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        settle();
}

void ModeMenu::wheelEvent(QWheelEvent* event)
{
    // The pane scrolls instead.
    event->ignore();
}

void ModeMenu::focusOutEvent(QFocusEvent* event)
{
    QComboBox::focusOutEvent(event);
    if (!m_isOpening && !view()->isVisible())
        settle();
}

void ModeMenu::entryActivated()
{
    if (m_isInKeyPress) {
        m_isBrowsing = true;
        m_rest.start();
        Q_EMIT browsed();
        return;
    }
    m_rest.stop();
    m_isBrowsing = false;
    Q_EMIT chosen();
}

void ModeMenu::settle()
{
    m_rest.stop();
    // Nothing was chosen when the keys led back to the same entry.
    if (std::exchange(m_isBrowsing, false) && currentIndex() != m_indexBefore)
        Q_EMIT chosen();
}
