#include "app/Console.h"

#include <QFile>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

// File names come out byte for byte as they went in, whatever the locale.
bool write(std::FILE* stream, const QString& text)
{
    const QByteArray bytes = QFile::encodeName(text);
    const bool written = std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream) ==
                         static_cast<std::size_t>(bytes.size());
    return std::fflush(stream) == 0 && written;
}

} // namespace

bool Console::print(const QString& text)
{
    return write(stdout, text);
}

void Console::complain(const QString& reason)
{
    QString line = reason;
    line.replace(u'\n', u' ');
    advise("pelmora : "_L1 + line);
}

void Console::advise(const QString& advice)
{
    // Where the standard error cannot be written either, the exit code remains.
    static_cast<void>(write(stderr, advice + u'\n'));
}
