#pragma once

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

/// Replaces the program for updates. It records its start with its arguments, and each request for its window. At the
/// end of its input it records its end and exits.
class FakeUpdateProgram
{
public:
    FakeUpdateProgram()
    {
        QFile script(path());
        m_isMade = script.open(QIODevice::WriteOnly) && script.setPermissions(QFile::ReadOwner | QFile::ExeOwner) &&
                   script.write("#!/bin/sh\nexec >>\"$0.notes\"\necho start \"$@\"\n"
                                "while read -r line && [ ! -e \"$0.stop\" ]; do echo show; done\necho end\n") > 0;
    }

    [[nodiscard]] bool isMade() const { return m_isMade; }
    [[nodiscard]] QString path() const { return m_folder.filePath(QStringLiteral("programme des mises à jour")); }
    [[nodiscard]] QStringList notes() const
    {
        QFile file(path() + QStringLiteral(".notes"));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }
    /// From now on the program exits when its window is requested.
    [[nodiscard]] bool stopAtNextRequest() const
    {
        return QFile(path() + QStringLiteral(".stop")).open(QIODevice::WriteOnly);
    }

private:
    QTemporaryDir m_folder;
    bool m_isMade = false;
};
