#pragma once

#include "RecordedMove.h"
#include "support/move/MoveToApplications.h"
#include "support/move/StringTable.h"

// The scene of the moving tests: a copy in Downloads, and a user whose own Applications folder holds another
// application.
namespace MoveScene {

using namespace Qt::StringLiterals;

using Facts = MoveOperations::ItemFacts;
using Volume = MoveOperations::Volume;

inline constexpr Facts missing{false, false, false};
inline constexpr Facts folder{true, true, true};
inline constexpr Facts lockedFolder{true, true, false};

inline const QString ownFolder = u"/home/anne/Applications"_s;
inline const QString destination = u"/home/anne/Applications/Pelmora.app"_s;
inline const QString source = u"/home/anne/Downloads/Pelmora.app"_s;

inline constexpr int release10_4 = 824;
inline constexpr int release10_5 = 949;
inline constexpr int release10_6 = 1038;
inline constexpr int release10_8 = 1187;

inline MoveSurroundings surroundings(int release = release10_8)
{
    MoveSurroundings values;
    values.bundlePath = source;
    values.processIdentifier = 4711;
    values.platformRelease = release;
    values.applicationsFolders = {u"/Applications"_s, ownFolder};
    values.userApplicationsFolder = ownFolder;
    values.localApplicationsFolders = {u"/Développeur/Applications"_s, u"/Applications"_s};
    values.downloadsFolders = {u"/home/anne/Downloads"_s};
    return values;
}

inline void furnish(RecordedMove& platform)
{
    platform.facts = {{ownFolder, folder}, {u"/Applications"_s, lockedFolder}};
    platform.entries = {{ownFolder, {u"notes.txt"_s, u"Autre.app"_s}}};
}

inline MoveOutcome moveWith(RecordedMove& platform, const MoveSurroundings& values = surroundings())
{
    const MoveCommands commands(macintoshCommands, values.platformRelease);
    return moveToApplications(values, commands, StringTable(), platform);
}

// What is asked for before the question, when the copy lies on the root file system.
inline QStringList questions(const MoveSurroundings& values = surroundings())
{
    const QString parent = values.bundlePath.left(values.bundlePath.lastIndexOf(u'/'));
    return {u"suppressed?"_s,
            u"volume? | "_s + parent,
            u"facts? | /home/anne/Applications"_s,
            u"entries? | /home/anne/Applications"_s,
            u"resolve | /home/anne/Applications"_s,
            u"facts? | /home/anne/Applications"_s,
            u"facts? | "_s + ownFolder + values.bundlePath.mid(values.bundlePath.lastIndexOf(u'/')),
            u"active?"_s,
            u"ask"_s};
}

// The operations after the question.
inline QStringList afterQuestion(const RecordedMove& platform)
{
    return platform.record.mid(platform.record.indexOf(u"ask"_s) + 1);
}

inline const QString movingLine = u"log info | INFO -- Moving myself to the Applications folder"_s;
inline const QString destinationFacts = u"facts? | /home/anne/Applications/Pelmora.app"_s;
inline const QString copying = u"copy | /home/anne/Downloads/Pelmora.app | /home/anne/Applications/Pelmora.app"_s;
inline const QString removing = u"remove | /home/anne/Downloads/Pelmora.app"_s;
inline const QString relaunching =
    u"start | /bin/sh | -c | (while /bin/kill -0 4711 >&/dev/null; do /bin/sleep 0.1; done; "
    "/usr/bin/xattr -d -r com.apple.quarantine '/home/anne/Applications/Pelmora.app'; "
    "/usr/bin/open '/home/anne/Applications/Pelmora.app') &"_s;
inline const QString ejecting = u"start | /bin/sh | -c | (/bin/sleep 5 && /usr/bin/hdiutil detach '/dev/disk2s1') &"_s;
inline const QString failureAlert = u"alert | Could not move to Applications folder"_s;
inline const QString listing = u"run | /usr/bin/hdiutil | info | -plist"_s;

inline QByteArray imageList(const QByteArray& images)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict><key>images</key>" + images +
           "</dict></plist>";
}

inline QByteArray entity(const QByteArray& device)
{
    return "<dict><key>dev-entry</key><string>" + device + "</string></dict>";
}

inline QByteArray image(const QByteArray& entities)
{
    return "<dict><key>image-path</key><string>/a.dmg</string><key>system-entities</key>" + entities + "</dict>";
}

inline QByteArray twoImages()
{
    return imageList("<array>" + image("<array>" + entity("/dev/disk1") + "</array>") +
                     image("<array>" + entity("/dev/disk2") + entity("/dev/disk2s1") + "</array>") + "</array>");
}

inline void putOnDiskImage(RecordedMove& platform)
{
    platform.volume = Volume{false, u"/dev/disk2s1"_s};
    platform.commandEnd = {0, twoImages()};
}

// A move that takes an administrator's rights: to a folder that is not the user's.
inline void requireAuthorization(RecordedMove& platform)
{
    platform.entries.clear();
}

inline const QStringList authorizing{movingLine, u"create authorization"_s, u"request | system.privilege.admin"_s};
inline const QStringList authorizedDelete{u"authorized commands?"_s,
                                          u"run authorized | /bin/rm | -rf | /Applications/Pelmora.app"_s};
inline const QString authorizedCopy = u"run authorized | /bin/cp | -pR | /home/anne/Downloads/Pelmora.app | "
                                      "/Applications/Pelmora.app"_s;
inline const QStringList authorizedFailure{
    u"free authorization"_s, u"log error | ERROR -- Could not copy myself to /Applications with authorization"_s,
    failureAlert};

} // namespace MoveScene
