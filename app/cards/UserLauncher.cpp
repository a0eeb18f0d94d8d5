#include "app/cards/UserLauncher.h"

#include "app/cards/Console.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView launcherName{"com.morvel.Pelmora.desktop"};
constexpr QLatin1StringView programInTree{"/bin/pelmora"};
constexpr QLatin1StringView ownFolderInTree{"/libexec/pelmora"};

/// The folder of the portable copy that this program belongs to.
std::optional<QString> portableTree()
{
    const QString folder = QFileInfo(QFile::symLinkTarget(u"/proc/self/exe"_s)).path();
    QString tree = folder.endsWith(ownFolderInTree) ? folder.chopped(ownFolderInTree.size()) : QString();
    // A launcher is a text in UTF-8.
    if (!tree.endsWith(".app"_L1) || tree.contains(QChar::ReplacementCharacter))
        return std::nullopt;
    return tree;
}

QString userLauncher()
{
    return QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation) + u'/' + launcherName;
}

/// A value as launchers have it.
QString escaped(QString text)
{
    return text.replace(u'\\', u"\\\\"_s).replace(u'\n', u"\\n"_s).replace(u'\t', u"\\t"_s).replace(u'\r', u"\\r"_s);
}

/// A program in a command line of a launcher.
QString quoted(const QString& program)
{
    QString text = program;
    for (const QChar special : u"\\\"`$"_s)
        text.replace(special, u'\\' + QString(special));
    return escaped(u'"' + text.replace(u'%', u"%%"_s) + u'"');
}

QString marker(const QString& tree)
{
    return u"TryExec="_s + escaped(tree + programInTree) + u'\n';
}

QString textOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

int fail(const QString& reason)
{
    Console::complain(reason);
    return 1;
}

int refuseInstalled()
{
    return fail(u"seule une copie portable a un lanceur à elle ; celui d’un programme installé est pour tous."_s);
}

} // namespace

QString launcherOfCopy(const QString& launcher, const QString& tree)
{
    constexpr QLatin1StringView installedCommand{"Exec=pelmora"};
    constexpr QLatin1StringView icon{"Icon="};
    QString copied;
    for (const QString& line : launcher.split(u'\n')) {
        if (line.startsWith("DBusActivatable="_L1))
            continue;
        if (line.startsWith(installedCommand))
            copied += u"Exec="_s + quoted(tree + programInTree) + line.sliced(installedCommand.size()) + u'\n';
        else if (line.startsWith(icon)) {
            copied += u"Icon=%1\n"_s.arg(
                escaped(tree + u"/share/icons/hicolor/scalable/apps/%1.svg"_s.arg(line.sliced(icon.size()))));
            copied += marker(tree);
        } else
            copied += line + u'\n';
    }
    return copied.chopped(1);
}

int addLauncher()
{
    const std::optional<QString> tree = portableTree();
    if (!tree)
        return refuseInstalled();
    const QString launcher = textOf(*tree + u"/share/applications/"_s + launcherName);
    QSaveFile file(userLauncher());
    if (launcher.isEmpty())
        return fail(u"l’installation de Pelmora est incomplète."_s);
    if (!QDir().mkpath(QFileInfo(file.fileName()).path()) || !file.open(QIODevice::WriteOnly) ||
        file.write(launcherOfCopy(launcher, *tree).toUtf8()) < 0 || !file.commit())
        return fail(u"« %1 » ne peut pas être écrit."_s.arg(file.fileName()));
    return 0;
}

int removeLauncher()
{
    const std::optional<QString> tree = portableTree();
    if (!tree)
        return refuseInstalled();
    // That of another copy stays.
    if (!textOf(userLauncher()).contains(u'\n' + marker(*tree)))
        return fail(u"cette copie n’a pas de lanceur."_s);
    if (!QFile::remove(userLauncher()))
        return fail(u"« %1 » ne peut pas être effacé."_s.arg(userLauncher()));
    return 0;
}
