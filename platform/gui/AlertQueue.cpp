#include "platform/gui/AlertQueue.h"

#include <QEvent>
#include <QLabel>
#include <QPushButton>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

AlertQueue::AlertQueue(QWidget* window)
    : m_window(window)
{
}

AlertQueue::~AlertQueue()
{
    delete m_box;
}

void AlertQueue::presentError(const Error& error)
{
    const Alert alert{QMessageBox::Warning, u"Pelmora"_s, error.localizedDescription(), error.detail()};
    if (std::ranges::find(m_alerts, alert) == m_alerts.end())
        append({alert});
}

void AlertQueue::presentMessage(const QString& title, const QString& text)
{
    const std::vector<Alert> alerts{{QMessageBox::Information, title, text, {}}};
    if (!endsWith(alerts))
        append(alerts);
}

void AlertQueue::presentMessageThenWarning(const AlertText& message, const AlertText& warning)
{
    const std::vector<Alert> alerts{{QMessageBox::Information, message.title, message.text, {}},
                                    {QMessageBox::Warning, warning.title, warning.text, {}}};
    if (!endsWith(alerts))
        append(alerts);
}

bool AlertQueue::endsWith(const std::vector<Alert>& alerts) const
{
    return m_alerts.size() >= alerts.size() && std::equal(alerts.rbegin(), alerts.rend(), m_alerts.rbegin());
}

void AlertQueue::append(const std::vector<Alert>& alerts)
{
    m_alerts.insert(m_alerts.end(), alerts.begin(), alerts.end());
    if (!m_box)
        showFirstOnceWindowIsPlaced();
}

void AlertQueue::showFirstOnceWindowIsPlaced()
{
    // A window that has just been shown does not know yet where it lies, and the alert is to lie over it.
    QWindow* window = m_window->windowHandle();
    if (m_window->isVisible() && !m_window->isMinimized() && window != nullptr && !window->isExposed())
        window->installEventFilter(this);
    else
        showFirst();
}

bool AlertQueue::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Expose) {
        watched->removeEventFilter(this);
        // Once the window itself has seen the event.
        QMetaObject::invokeMethod(this, &AlertQueue::showFirst, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}

void AlertQueue::showFirst()
{
    if (m_box || m_alerts.empty())
        return;
    const Alert& alert = m_alerts.front();
    m_box = new QMessageBox(alert.icon, alert.title, QString(), QMessageBox::NoButton, m_window);
    m_box->setAttribute(Qt::WA_DeleteOnClose);
    // Texts may hold what others wrote: nothing in them is markup.
    m_box->setTextFormat(Qt::PlainText);
    m_box->setText(alert.text);
    if (!alert.detail.isEmpty()) {
        m_box->setInformativeText(alert.detail);
        // The box has given its format to the other text alone.
        if (auto* label = m_box->findChild<QLabel*>(u"qt_msgbox_informativelabel"_s))
            label->setTextFormat(Qt::PlainText);
    }
    m_box->setDefaultButton(m_box->addButton(u"OK"_s, QMessageBox::AcceptRole));
    connect(m_box, &QMessageBox::finished, this, &AlertQueue::removeFirst);
    m_box->open();
}

void AlertQueue::removeFirst()
{
    m_alerts.pop_front();
    m_box.clear();
    showFirst();
}
