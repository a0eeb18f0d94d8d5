#include "platform/gui/SecretClipboard.h"

#include <QClipboard>
#include <QGuiApplication>

using namespace Qt::StringLiterals;

SecretClipboard::SecretClipboard(std::chrono::milliseconds lifetime)
{
    m_lifetime.setSingleShot(true);
    m_lifetime.setInterval(lifetime);
    connect(&m_lifetime, &QTimer::timeout, this, &SecretClipboard::clear);
}

SecretClipboard::~SecretClipboard()
{
    clear();
}

void SecretClipboard::copy(const QString& text)
{
    m_copied = new QMimeData;
    m_copied->setText(text);
    // Klipper has introduced this format, and other clipboard managers know it too.
    m_copied->setData(u"x-kde-passwordManagerHint"_s, "secret"_ba);
    QGuiApplication::clipboard()->setMimeData(m_copied);
    m_lifetime.start();
}

void SecretClipboard::clear() const
{
    QClipboard* clipboard = QGuiApplication::clipboard();
    // Another program's content has another address.
    if (m_copied && clipboard->mimeData() == m_copied)
        clipboard->clear();
}
