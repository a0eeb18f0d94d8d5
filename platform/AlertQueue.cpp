#include "platform/AlertQueue.h"

#include <QPushButton>
#include <QWidget>

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
    present({QMessageBox::Warning, u"Pelmora"_s, error.localizedDescription()});
}

void AlertQueue::presentMessage(const QString& title, const QString& text)
{
    present({QMessageBox::Information, title, text});
}

void AlertQueue::present(Alert alert)
{
    if (std::ranges::find(m_alerts, alert) != m_alerts.end())
        return;
    m_alerts.push_back(std::move(alert));
    if (m_alerts.size() == 1)
        showFirst();
}

void AlertQueue::showFirst()
{
    const Alert& alert = m_alerts.front();
    m_box = new QMessageBox(alert.icon, alert.title, QString(), QMessageBox::NoButton, m_window);
    m_box->setAttribute(Qt::WA_DeleteOnClose);
    // Texts may hold what others wrote: nothing in them is markup.
    m_box->setTextFormat(Qt::PlainText);
    m_box->setText(alert.text);
    m_box->setDefaultButton(m_box->addButton(u"OK"_s, QMessageBox::AcceptRole));
    connect(m_box, &QMessageBox::finished, this, &AlertQueue::removeFirst);
    m_box->open();
}

void AlertQueue::removeFirst()
{
    m_alerts.pop_front();
    if (!m_alerts.empty())
        showFirst();
}
