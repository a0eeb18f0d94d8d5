#pragma once

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QUrl>

/// Receives the files and mails that the program opens with the desktop.
class Desktop final : public QObject
{
    Q_OBJECT

public:
    Desktop()
    {
        for (const char* scheme : {"file", "mailto"})
            QDesktopServices::setUrlHandler(QLatin1String(scheme), this, "open");
    }
    ~Desktop() override
    {
        for (const char* scheme : {"file", "mailto"})
            QDesktopServices::unsetUrlHandler(QLatin1String(scheme));
    }
    Q_DISABLE_COPY_MOVE(Desktop)

    [[nodiscard]] const QList<QUrl>& opened() const { return m_opened; }

public Q_SLOTS:
    void open(const QUrl& address) { m_opened.append(address); }

private:
    QList<QUrl> m_opened;
};
