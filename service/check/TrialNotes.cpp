#include "service/check/TrialNotes.h"

#include <cerrno>
#include <cstdlib>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr char fieldEnd = '\t';

/// The text without the characters that separate notes and fields.
QByteArray fieldOf(QString text)
{
    for (QChar& character : text) {
        if (character == u'\t' || character == u'\n')
            character = u' ';
    }
    return text.toUtf8();
}

} // namespace

QByteArray encodeTrialNote(const TrialNote& note)
{
    return static_cast<char>(note.kind) + fieldOf(note.place) + fieldEnd + fieldOf(note.text) + '\n';
}

TrialNote decodeTrialNote(QByteArrayView line)
{
    if (line.isEmpty())
        return {};
    const qsizetype end = line.indexOf(fieldEnd);
    if (end < 0)
        return {
            .kind = static_cast<TrialNote::Kind>(line.front()), .place = QString::fromUtf8(line.sliced(1)), .text = {}};
    return {.kind = static_cast<TrialNote::Kind>(line.front()),
            .place = QString::fromUtf8(line.first(end).sliced(1)),
            .text = QString::fromUtf8(line.sliced(end + 1))};
}

void TrialNotes::write(TrialNote::Kind kind, const QString& place, const QString& text) const
{
    const QByteArray line = encodeTrialNote({.kind = kind, .place = place, .text = text});
    QByteArrayView rest = line;
    while (!rest.isEmpty()) {
        const ssize_t count = ::write(m_descriptor, rest.data(), static_cast<std::size_t>(rest.size()));
        if (count < 0 && errno != EINTR)
            ::_exit(EXIT_FAILURE);
        rest = rest.sliced(std::max(count, ssize_t{0}));
    }
}
