#include "app/cards/UserLauncher.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_UserLauncher : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theCopysProgramAndIconAreNamedByTheirPaths()
    {
        const QString launcher =
            launcherOfCopy(u"[Desktop Entry]\nExec=pelmora %f\nIcon=id\nDBusActivatable=true\n\n[Desktop Action lire]\n"
                           "Exec=pelmora --action=lire\n"_s,
                           u"/home/anne/Pelmora.app"_s);
        QCOMPARE(launcher, u"[Desktop Entry]\nExec=\"/home/anne/Pelmora.app/bin/pelmora\" %f\n"
                           "Icon=/home/anne/Pelmora.app/share/icons/hicolor/scalable/apps/id.svg\n"
                           "TryExec=/home/anne/Pelmora.app/bin/pelmora\n\n[Desktop Action lire]\n"
                           "Exec=\"/home/anne/Pelmora.app/bin/pelmora\" --action=lire\n"_s);
    }

    void everyCharacterOfAPathIsKept()
    {
        // The path is quoted for the command, and the result is escaped for the file.
        const QString launcher = launcherOfCopy(u"Exec=pelmora %f\nIcon=id\n"_s, uR"(/a "b" $c `d` \e 5%/P.app)"_s);
        QVERIFY2(launcher.contains(uR"(Exec="/a \\"b\\" \\$c \\`d\\` \\\\e 5%%/P.app/bin/pelmora" %f)"_s),
                 qPrintable(launcher));
        QVERIFY2(launcher.contains(uR"(TryExec=/a "b" $c `d` \\e 5%/P.app/bin/pelmora)"_s), qPrintable(launcher));
    }

    void theShippedLauncherIsWhollyThatOfTheCopy()
    {
        const QString shipped = textOfFile(QStringLiteral(PELMORA_SOURCE "/packaging/com.morvel.Pelmora.desktop"));
        const QString launcher = launcherOfCopy(shipped, u"/P.app"_s);
        QCOMPARE(launcher.count(u"Exec=\"/P.app/bin/pelmora\""_s), shipped.count(u"Exec=pelmora"_s));
        QVERIFY(!launcher.contains(u"Exec=pelmora"_s) && !launcher.contains(u"DBusActivatable"_s));
    }
};

template class RunnableTests<tst_UserLauncher, void>;
#include "tst_userlauncher.moc"
