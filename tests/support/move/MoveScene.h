#pragma once

#include "support/move/LinuxMoveCommands.h"
#include "support/move/MoveToApplications.h"
#include "support/move/StringTable.h"
#include "tests/support/move/MoveTexts.h"
#include "tests/support/move/RecordedMove.h"

// The surroundings of the moving tests: a copy in Downloads, and a user whose own Applications folder holds another
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

inline MoveSurroundings surroundings()
{
    MoveSurroundings values;
    values.bundlePath = source;
    values.processIdentifier = 4711;
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
    return moveToApplications(values, LinuxMoveCommands(), StringTable(), platform);
}

// The operations before the question, when the copy is on the root file system.
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
inline const QString imageDevice = u"/dev/loop0p1"_s;

inline QString textOf(const QString& operation, const MoveCommand& command)
{
    return operation + u" | "_s + MoveTexts::textOf(command);
}

inline const QString opening = textOf(u"run"_s, LinuxMoveCommands().openRunningCopy(destination));
inline const QString relaunching = textOf(u"start"_s, LinuxMoveCommands().relaunch(4711, destination));
inline const QString ejecting = textOf(u"start"_s, LinuxMoveCommands().ejectImage(imageDevice));
inline const QString failureAlert = u"alert | Could not move to Applications folder"_s;
inline const QString listing = u"images?"_s;

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
    return "<dict><key>image-path</key><string>/a.iso</string><key>system-entities</key>" + entities + "</dict>";
}

inline QByteArray twoImages()
{
    return imageList("<array>" + image("<array>" + entity("/dev/loop1") + "</array>") +
                     image("<array>" + entity("/dev/loop0") + entity(imageDevice.toUtf8()) + "</array>") + "</array>");
}

inline void putOnDiskImage(RecordedMove& platform)
{
    platform.volume = Volume{false, imageDevice};
    platform.images = twoImages();
}

// A move that needs an administrator's rights, to a folder of another owner.
inline void requireAuthorization(RecordedMove& platform)
{
    platform.entries.clear();
}

inline const QString lockedDestination = u"/Applications/Pelmora.app"_s;
inline const QStringList authorizing{movingLine, u"request"_s};
inline const QString authorizedDelete =
    textOf(u"run authorized"_s, LinuxMoveCommands().privilegedDelete(lockedDestination));
inline const QString authorizedCopy =
    textOf(u"run authorized"_s, LinuxMoveCommands().privilegedCopy(source, lockedDestination));
inline const QStringList authorizedFailure{
    u"free authorization"_s, u"log error | ERROR -- Could not copy myself to /Applications with authorization"_s,
    failureAlert};

} // namespace MoveScene
