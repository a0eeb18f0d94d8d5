#include "platform/gui/AlertQueue.h"

#include <QEvent>
#include <QLabel>
#include <QPushButton>
#include <QWindow>

#include <algorithm>

using namespace Qt::StringLiterals;

AlertQueue::AlertQueue(QWidget* window)
    : m_window(window)
{
}

AlertQueue::~AlertQueue()
{
    delete m_box;
}

void AlertQueue::presentError(const Error& error, const QString& helpTopic)
{
    const Alert alert{QMessageBox::Warning, u"Pelmora"_s, error.localizedDescription(), error.detail(), helpTopic};
    if (std::ranges::find(m_alerts, alert) == m_alerts.end())
        append({alert});
}

void AlertQueue::presentMessage(const QString& title, const QString& text)
{
    appendUnlessLast({{QMessageBox::Information, title, text, {}, {}}});
}

void AlertQueue::presentMessageThenWarning(const AlertText& message, const AlertText& warning)
{
    appendUnlessLast({{QMessageBox::Information, message.title, message.text, {}, {}},
                      {QMessageBox::Warning, warning.title, warning.text, {}, {}}});
}

void AlertQueue::appendUnlessLast(const std::vector<Alert>& alerts)
{
    if (m_alerts.size() < alerts.size() || !std::equal(alerts.rbegin(), alerts.rend(), m_alerts.rbegin()))
        append(alerts);
}

void AlertQueue::append(const std::vector<Alert>& alerts)
{
    m_alerts.insert(m_alerts.end(), alerts.begin(), alerts.end());
    if (!m_box)
        showFirstOnceWindowIsPlaced();
}

void AlertQueue::showFirstOnceWindowIsPlaced()
{
    // A window that was just shown has no position yet, and the alert is placed over it.
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
        // Later, after the window has handled the event.
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
    // Texts may come from cards: they are never markup.
    m_box->setTextFormat(Qt::PlainText);
    m_box->setText(alert.text);
    if (!alert.detail.isEmpty()) {
        m_box->setInformativeText(alert.detail);
        // setTextFormat does not apply to the informative text.
        if (auto* label = m_box->findChild<QLabel*>(u"qt_msgbox_informativelabel"_s))
            label->setTextFormat(Qt::PlainText);
    }
    if (!alert.helpTopic.isEmpty())
        addHelpButton(alert.helpTopic);
    m_box->setDefaultButton(m_box->addButton(u"OK"_s, QMessageBox::AcceptRole));
    connect(m_box, &QMessageBox::finished, this, &AlertQueue::removeFirst);
    m_box->open();
}

void AlertQueue::addHelpButton(const QString& topic)
{
    const QPushButton* button = m_box->addButton(u"&Aide"_s, QMessageBox::HelpRole);
    // The box would close at any button.
    disconnect(button, &QPushButton::clicked, nullptr, nullptr);
    connect(button, &QPushButton::clicked, this, [this, topic] { Q_EMIT helpRequested(topic); });
}

void AlertQueue::removeFirst()
{
    m_alerts.pop_front();
    m_box.clear();
    showFirst();
}
