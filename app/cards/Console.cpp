#include "app/cards/Console.h"

#include "platform/NativePath.h"

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

// In UTF-8 whatever the locale, and file names as they are, whatever their bytes.
bool writeText(std::FILE* stream, const QString& text)
{
    const QByteArray bytes = bytesOfPath(text);
    const bool written = std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream) ==
                         static_cast<std::size_t>(bytes.size());
    return std::fflush(stream) == 0 && written;
}

} // namespace

bool Console::print(const QString& text)
{
    return writeText(stdout, text);
}

void Console::complain(const QString& reason)
{
    // A line is one line, and gives a terminal no orders.
    QString line = reason;
    for (QChar& character : line) {
        if (character.category() == QChar::Other_Control)
            character = u' ';
    }
    advise("pelmora : "_L1 + line);
}

void Console::advise(const QString& advice)
{
    // Where the standard error cannot be written either, the exit code remains.
    static_cast<void>(writeText(stderr, advice + u'\n'));
}
