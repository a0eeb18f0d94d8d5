#pragma once

#include "card/client/ServiceProcess.h"
#include "tests/fakes/FakeScript.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <utility>

#include <signal.h>

/// The scriptable card service program, with a record of what it was asked.
class FakeService
{
public:
    explicit FakeService(FakeScript script = {})
        : m_script(std::move(script))
    {
        // Services only write to a file that exists. So a service that starts late does not create a file in a folder
        // that is being removed.
        QFile record(recordPath());
        if (!record.open(QIODevice::WriteOnly))
            qWarning("The fake card service's record cannot be made");
    }

    /// The command that starts it. It may be started several times, also with other scripts. All use the same record.
    [[nodiscard]] ServiceCommand command() const { return command(m_script); }
    [[nodiscard]] ServiceCommand command(const FakeScript& script) const
    {
        return {QStringLiteral(PELMORA_FAKE_SERVICE),
                QStringList{QStringLiteral("--record"), recordPath()} + script.arguments()};
    }

    /// The lines of the record so far.
    [[nodiscard]] QStringList notes() const
    {
        QFile file(recordPath());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    /// The requests, as JSON with sorted keys.
    [[nodiscard]] QStringList requests() const { return notes().filter(QStringLiteral("{")); }

    /// One field of the requests that have it.
    [[nodiscard]] QStringList requested(const QString& key) const
    {
        QStringList values;
        for (const QString& request : requests()) {
            const QJsonObject fields = QJsonDocument::fromJson(request.toUtf8()).object();
            if (fields.contains(key))
                values.append(fields.value(key).toString());
        }
        return values;
    }

    /// The process numbers of the services that were started, in order.
    [[nodiscard]] QList<pid_t> processes() const
    {
        QList<pid_t> numbers;
        for (const QString& note : notes()) {
            if (note.startsWith(QStringLiteral("pid ")))
                numbers.append(note.sliced(4).toInt());
        }
        return numbers;
    }

    /// Path for a file of the test's own.
    [[nodiscard]] QString filePath(const QString& name) const { return m_folder.filePath(name); }

    /// Whether a process has ended. A zombie process has.
    [[nodiscard]] static bool isDead(pid_t process)
    {
        QFile file(QStringLiteral("/proc/%1/stat").arg(process));
        if (!file.open(QIODevice::ReadOnly))
            return true;
        const QByteArray content = file.readAll();
        return content.isEmpty() || content.sliced(content.lastIndexOf(')') + 2).startsWith('Z');
    }

    /// Whether a process has ended and its parent has reaped it.
    [[nodiscard]] static bool isReaped(pid_t process) { return ::kill(process, 0) != 0; }

private:
    [[nodiscard]] QString recordPath() const { return m_folder.filePath(QStringLiteral("record")); }

    FakeScript m_script;
    QTemporaryDir m_folder;
};
