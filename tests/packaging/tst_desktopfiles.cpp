#include "app/models/DesktopAction.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QMap>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString id = u"com.morvel.Pelmora"_s;
const QString share = QStringLiteral(PELMORA_STAGE "/share/");

/// The launcher's values. The keys of its menu begin with their group.
QMap<QString, QString> launcherEntries()
{
    QMap<QString, QString> entries;
    QString group;
    for (const QString& line : textOfFile(share + u"applications/"_s + id + u".desktop"_s).split(u'\n')) {
        if (line.startsWith("[Desktop Action"_L1))
            group = line + u' ';
        if (const qsizetype sign = line.indexOf(u'='); sign > 0)
            entries.insert(group + line.first(sign), line.sliced(sign + 1));
    }
    return entries;
}

QString description()
{
    return textOfFile(share + u"metainfo/"_s + id + u".metainfo.xml"_s);
}

// The text that the first group of an expression matches.
QString found(const QString& text, const QString& expression)
{
    return QRegularExpression(expression).match(text).captured(1);
}

// The options that a man page describes, in its order.
QStringList optionsIn(const QString& page)
{
    static const QRegularExpression option(u"^\\.It.* Fl Fl (\\S+)"_s, QRegularExpression::MultilineOption);
    QStringList options;
    for (const QRegularExpressionMatch& match : option.globalMatch(textOfFile(share + page)))
        options.append(u"--"_s + match.captured(1));
    return options;
}

// The names of packages in a text, sorted, without the given ones.
QStringList packagesIn(QString text, const QStringList& without)
{
    text.remove(QRegularExpression(u"#.*|\\([^)]*\\)|,"_s));
    QStringList names = text.split(QRegularExpression(u"\\s+"_s), Qt::SkipEmptyParts);
    names.removeIf([&without](const QString& name) { return without.contains(name); });
    names.sort();
    return names;
}

} // namespace

class tst_DesktopFiles : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void oneNameTiesThemTogether()
    {
        const QMap<QString, QString> launcher = launcherEntries();
        QCOMPARE(launcher.value(u"Icon"_s), id);
        QCOMPARE(launcher.value(u"Exec"_s), u"pelmora %f"_s);
        QCOMPARE(launcher.value(u"Name"_s), u"Pelmora"_s);
        QCOMPARE(found(description(), u"<id>(.*)</id>"_s), id);
        QCOMPARE(found(description(), u"<launchable type=\"desktop-id\">(.*)</launchable>"_s), id + u".desktop"_s);
        QCOMPARE(found(description(), u"<binary>(.*)</binary>"_s), u"pelmora"_s);
        const QString dictionary = textOfFile(share + u"pelmora/Info.plist"_s);
        QCOMPARE(found(dictionary, u"CFBundleIdentifier</key>\\s*<string>(.*)</string>"_s), id);
    }

    void theLaunchersMenuHasTheActionsOfTheProgram()
    {
        const QMap<QString, QString> launcher = launcherEntries();
        QStringList names;
        for (const DesktopActionName& each : desktopActions)
            names.append(each.name.toString());
        QCOMPARE(launcher.value(u"Actions"_s), names.join(u';') + u';');
        QCOMPARE(launcher.value(u"DBusActivatable"_s), u"true"_s);
        for (const QString& name : names) {
            QCOMPARE(launcher.value(u"[Desktop Action %1] Exec"_s.arg(name)), u"pelmora --action="_s + name);
            QVERIFY(!launcher.value(u"[Desktop Action %1] Name[fr]"_s.arg(name)).isEmpty());
        }
    }

    void theBusStartsTheProgramOfThisTree()
    {
        QCOMPARE(textOfFile(share + u"dbus-1/services/"_s + id + u".service"_s),
                 u"[D-BUS Service]\nName=%1\nExec=\"%2/bin/pelmora\"\n"_s.arg(id, QStringLiteral(PELMORA_STAGE)));
    }

    void theTypeOfCardFilesIsTheLaunchersOne()
    {
        const QString type = launcherEntries().value(u"MimeType"_s).chopped(1);
        QVERIFY(textOfFile(share + u"mime/packages/%1.xml"_s.arg(id)).contains(u"type=\"%1\""_s.arg(type)));
        QVERIFY(description().contains(u"<mediatype>%1</mediatype>"_s.arg(type)));
    }

    void theLauncherSpeaksFrenchAndEnglish()
    {
        const QMap<QString, QString> launcher = launcherEntries();
        for (const QString& key : {u"GenericName"_s, u"Comment"_s, u"Keywords"_s}) {
            const QString french = launcher.value(key + u"[fr]"_s);
            QVERIFY2(!launcher.value(key).isEmpty(), qPrintable(key));
            QVERIFY2(!french.isEmpty() && french != launcher.value(key), qPrintable(key));
        }
    }

    void theDescriptionAndThePackageKnowThisVersion()
    {
        QCOMPARE(found(description(), u"<release version=\"([^\"]*)\""_s), QStringLiteral(PELMORA_VERSION));
        const QString changes = textOfFile(QStringLiteral(PELMORA_SOURCE "/debian/changelog"));
        QCOMPARE(found(changes, u"^pelmora \\(([^)]*)\\)"_s), QStringLiteral(PELMORA_VERSION));
    }

    void theDebianPackageIsBuiltWithWhatTheScriptsInstall()
    {
        // Every machine that makes packages has the compiler. Qt's French texts are needed only at run time.
        const QString scripts = textOfFile(QStringLiteral(PELMORA_SOURCE "/tools/packages.sh"));
        const QStringList installed =
            packagesIn(found(scripts, u"(?s)\nbuild_packages=\\((.*?)\n\\)"_s), {u"g++"_s, u"qt6-translations-l10n"_s});
        QVERIFY(installed.contains(u"cmake"_s));
        const QString control = textOfFile(QStringLiteral(PELMORA_SOURCE "/debian/control"));
        QCOMPARE(packagesIn(found(control, u"(?s)\nBuild-Depends:(.*?)\n\n"_s), {u"debhelper-compat"_s}), installed);
    }

    void bothManPagesDescribeTheSameOptions()
    {
        const QStringList english = optionsIn(u"man/man1/pelmora.1"_s);
        QVERIFY(english.contains(u"--save"_s));
        QCOMPARE(optionsIn(u"man/fr/man1/pelmora.1"_s), english);
    }

    void thereIsAnIconOfEachSize()
    {
        for (const int side : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
            const QString path = u"%1icons/hicolor/%2x%2/apps/%3.png"_s.arg(share).arg(side).arg(id);
            const QImage icon(path);
            QCOMPARE(icon.size(), QSize(side, side));
            // The corner is transparent, and the centre is drawn.
            QCOMPARE(qAlpha(icon.pixel(0, 0)), 0);
            QCOMPARE(qAlpha(icon.pixel(side / 2, side / 2)), 255);
        }
        QVERIFY(QFile::exists(share + u"icons/hicolor/scalable/apps/"_s + id + u".svg"_s));
        QVERIFY(QFile::exists(share + u"icons/hicolor/symbolic/apps/"_s + id + u"-symbolic.svg"_s));
        QVERIFY(QFile::exists(share + u"pelmora/StatusItemIcon.svg"_s));
    }
};

template class RunnableTests<tst_DesktopFiles, QGuiApplication>;
#include "tst_desktopfiles.moc"
