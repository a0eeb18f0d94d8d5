#include "support/move/MoveCommands.h"

#include "support/move/FormatText.h"
#include "support/move/ShellQuoting.h"

#include <algorithm>
#include <utility>

constexpr MoveCommandTable macintoshCommands{{
    {MovePurpose::ListMountedImages, {u"/usr/bin/hdiutil", u"info", u"-plist"}},
    {MovePurpose::TestRunning,
     {u"/bin/sh", u"-c", u"/bin/ps ax -o comm | /usr/bin/grep %@/ | /usr/bin/grep -v grep >/dev/null"}},
    {MovePurpose::OpenRunningCopy, {u"/usr/bin/open", u"%@"}},
    {MovePurpose::Relaunch,
     {u"/bin/sh", u"-c", u"(while /bin/kill -0 %d >&/dev/null; do /bin/sleep 0.1; done; %@; /usr/bin/open %@) &"}},
    {MovePurpose::RemoveQuarantine, {u"/usr/bin/xattr -d -r com.apple.quarantine %@"}},
    {MovePurpose::RemoveQuarantineBefore, {u"/usr/bin/xattr -d com.apple.quarantine %@"}},
    {MovePurpose::EjectImage, {u"/bin/sh", u"-c", u"(/bin/sleep 5 && /usr/bin/hdiutil detach %@) &"}},
    {MovePurpose::PrivilegedDelete, {u"/bin/rm", u"-rf", u"%@"}},
    {MovePurpose::PrivilegedCopy, {u"/bin/cp", u"-pR", u"%@", u"%@"}},
}};

// Mounted images and running programs are read from /proc, and files carry no quarantine. A process that has ended and
// waits for its parent to ask for it has ended all the same. What an administrator installs belongs to the
// administrator, serves every user however private its source was, and appears whole: only a name changes last. What is
// replaced loses its name first, so that it is never there in part. All that is made on the way lies in a folder of an
// own name which is closed to others, so that they cannot put anything in its place, nor start a program that is still
// somebody else's. Links are not followed: tar, unlike cp, opens each folder from the one above it.
constexpr MoveCommandTable linuxCommands{{
    {MovePurpose::OpenRunningCopy, {u"/bin/sh", u"-c", u"%@/bin/pelmora%@ >/dev/null 2>&1 </dev/null &"}},
    {MovePurpose::Relaunch,
     {u"/bin/sh", u"-c",
      u"(p=%d; while kill -0 $p && ! grep -q '^State:.*Z' /proc/$p/status; do sleep 0.1; done; %@; "
      "exec %@/bin/pelmora%@) >/dev/null 2>&1 </dev/null &"}},
    {MovePurpose::RemoveQuarantine, {u":"}},
    {MovePurpose::RemoveQuarantineBefore, {u":"}},
    {MovePurpose::EjectImage,
     {u"/bin/sh", u"-c",
      u"(d=%@; sleep 5 && udisksctl unmount -b \"$d\" && udisksctl loop-delete -b \"$d\") >/dev/null 2>&1 &"}},
    {MovePurpose::PrivilegedDelete,
     {u"/bin/sh", u"-c",
      u"d=$(mktemp -d -- \"${0%/*}/.pelmora-administrator-XXXXXX\") && mv -T -- \"$0\" \"$d/old\" 2>/dev/null; "
      "rm -rf -- \"${0%/*}\"/.pelmora-administrator-*",
      u"%@"}},
    {MovePurpose::PrivilegedCopy,
     {u"/bin/sh", u"-c",
      u"rm -rf -- \"${1%/*}\"/.pelmora-administrator-*; umask 022; "
      "d=$(mktemp -d -- \"${1%/*}/.pelmora-administrator-XXXXXX\") && mkdir -- \"$d/new\" && "
      "tar --create --format=posix --one-file-system --directory=\"$0\" --file=\"$d/tar\" . && "
      "tar --extract --no-same-owner --directory=\"$d/new\" --file=\"$d/tar\" && "
      "chmod -R a-s,u+rwX,go+rX,go-w -- \"$d/new\" && sync -f -- \"$d/new\" && mv -T -- \"$d/new\" \"$1\"; "
      "s=$?; rm -rf -- \"$d\"; exit $s",
      u"%@", u"%@"}},
}};

namespace {

bool hasPlaceholder(QStringView word)
{
    return word.contains(QStringLiteral("%@")) || word.contains(QStringLiteral("%d"));
}

} // namespace

MoveCommands::MoveCommands(const MoveCommandTable& table, int platformRelease, QStringList programArguments)
    : m_table(table)
    , m_platformRelease(platformRelease)
    , m_programArguments(std::move(programArguments))
{
}

std::optional<MoveCommand> MoveCommands::listMountedImages() const
{
    if (rowOf(MovePurpose::ListMountedImages) == nullptr)
        return std::nullopt;
    return command(MovePurpose::ListMountedImages, {});
}

MoveCommand MoveCommands::testRunning(const QString& destination) const
{
    return command(MovePurpose::TestRunning, {{destination, true}});
}

MoveCommand MoveCommands::openRunningCopy(const QString& destination) const
{
    return command(MovePurpose::OpenRunningCopy, {{destination, true}, programArguments()});
}

MoveCommand MoveCommands::relaunch(qint64 processIdentifier, const QString& destination) const
{
    const MovePurpose quarantine = m_platformRelease > PlatformRelease::lastOf10_5
                                       ? MovePurpose::RemoveQuarantine
                                       : MovePurpose::RemoveQuarantineBefore;
    const QString removal = formattedText(rowOf(quarantine)->words.front(), {quotedForShell(destination)});
    return command(
        MovePurpose::Relaunch,
        {{QString::number(processIdentifier), false}, {removal, false}, {destination, true}, programArguments()});
}

MoveCommand MoveCommands::ejectImage(const QString& device) const
{
    return command(MovePurpose::EjectImage, {{device, true}});
}

MoveCommand MoveCommands::privilegedDelete(const QString& destination) const
{
    return command(MovePurpose::PrivilegedDelete, {{destination, true}});
}

MoveCommand MoveCommands::privilegedCopy(const QString& source, const QString& destination) const
{
    return command(MovePurpose::PrivilegedCopy, {{source, true}, {destination, true}});
}

const MoveCommandRow* MoveCommands::rowOf(MovePurpose purpose) const
{
    const auto isFor = [purpose](const MoveCommandRow& row) {
        return row.purpose == purpose && !row.words.front().isEmpty();
    };
    const auto row = std::ranges::find_if(m_table, isFor);
    return row == m_table.end() ? nullptr : &*row;
}

MoveCommand MoveCommands::command(MovePurpose purpose, const QList<Value>& values) const
{
    const MoveCommandRow* row = rowOf(purpose);
    if (row == nullptr)
        return {};
    QStringList words;
    QList<Value> waiting = values;
    for (const QStringView word : row->words) {
        if (word.isEmpty())
            continue;
        if (word == u"%@") {
            words.append(waiting.takeFirst().text);
            continue;
        }
        if (!hasPlaceholder(word)) {
            words.append(word.toString());
            continue;
        }
        QStringList texts;
        for (const Value& value : waiting)
            texts.append(value.isPath ? quotedForShell(value.text) : value.text);
        words.append(formattedText(word, texts));
    }
    return {words.takeFirst(), words};
}

MoveCommands::Value MoveCommands::programArguments() const
{
    QString words;
    for (const QString& argument : m_programArguments)
        words += u' ' + quotedForShell(argument);
    return {words, false};
}
