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

QMap<QString, QString> launcherEntries()
{
    QMap<QString, QString> entries;
    for (const QString& line : textOfFile(share + u"applications/"_s + id + u".desktop"_s).split(u'\n')) {
        if (const qsizetype sign = line.indexOf(u'='); sign > 0)
            entries.insert(line.first(sign), line.sliced(sign + 1));
    }
    return entries;
}

QString description()
{
    return textOfFile(share + u"metainfo/"_s + id + u".metainfo.xml"_s);
}

// What the expression's first group finds in a text.
QString found(const QString& text, const QString& expression)
{
    return QRegularExpression(expression).match(text).captured(1);
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
        QCOMPARE(found(description(), u"<icon type=\"stock\">(.*)</icon>"_s), id);
        QCOMPARE(found(description(), u"<binary>(.*)</binary>"_s), u"pelmora"_s);
        const QString dictionary = textOfFile(share + u"pelmora/Info.plist"_s);
        QCOMPARE(found(dictionary, u"CFBundleIdentifier</key>\\s*<string>(.*)</string>"_s), id);
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

    void theDescriptionKnowsThisVersion()
    {
        QCOMPARE(found(description(), u"<release version=\"([^\"]*)\""_s), QStringLiteral(PELMORA_VERSION));
    }

    void thereIsAnIconOfEachSize()
    {
        for (const int side : {16, 32, 48, 64, 128, 256}) {
            const QString path = u"%1icons/hicolor/%2x%2/apps/%3.png"_s.arg(share).arg(side).arg(id);
            const QImage icon(path);
            QCOMPARE(icon.size(), QSize(side, side));
            // Something is drawn, and its corners are left out.
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
