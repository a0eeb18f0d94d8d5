#include "platform/Bundle.h"
#include "support/move/StringTable.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QByteArray tableOf(const QByteArray& entries)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>" + entries + "</dict></plist>";
}

} // namespace

class tst_StringTable : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(writeFile(m_folder.filePath(u"fr.lproj/Table.strings"_s),
                          tableOf("<key>Yes</key><string>Oui</string><key>Number</key><integer>3</integer>")));
        QVERIFY(
            writeFile(m_folder.filePath(u"el.lproj/Table.strings"_s), tableOf("<key>Yes</key><string>Ναι</string>")));
        QVERIFY(writeFile(m_folder.filePath(u"br.lproj/Table.strings"_s), "Ya"));
    }

    void theFirstAvailableLanguageIsUsed_data()
    {
        QTest::addColumn<QStringList>("languages");
        QTest::addColumn<QString>("text");
        QTest::newRow("French") << QStringList{u"fr"_s} << u"Oui"_s;
        QTest::newRow("of Canada") << QStringList{u"fr-CA"_s, u"fr"_s} << u"Oui"_s;
        QTest::newRow("Greek first") << QStringList{u"el-GR"_s, u"fr-FR"_s} << u"Ναι"_s;
        QTest::newRow("English first") << QStringList{u"en-GB"_s, u"fr-FR"_s} << u"Yes"_s;
        QTest::newRow("none, then French") << QStringList{u"de-DE"_s, u"fr-FR"_s} << u"Oui"_s;
        QTest::newRow("none") << QStringList{u"de-DE"_s} << u"Yes"_s;
        QTest::newRow("no language") << QStringList() << u"Yes"_s;
        QTest::newRow("the C locale") << QStringList{u"C"_s} << u"Yes"_s;
        QTest::newRow("a way out") << QStringList{u"../"_s, QString(), u"-"_s} << u"Yes"_s;
    }

    void theFirstAvailableLanguageIsUsed()
    {
        QFETCH(const QStringList, languages);
        QFETCH(const QString, text);
        const StringTable table = StringTable::load(Bundle(m_folder.path()), u"Table"_s, languages);
        QCOMPARE(table.localizedString(u"Yes"), text);
    }

    void aTextWithoutTranslationIsShownInEnglish()
    {
        QCOMPARE(StringTable::load(Bundle(m_folder.path()), u"Table"_s, {u"fr"_s}).localizedString(u"No"), u"No"_s);
        QCOMPARE(StringTable::load(Bundle(m_folder.path()), u"Missing"_s, {u"fr"_s}).localizedString(u"Yes"), u"Yes"_s);
        QCOMPARE(StringTable().localizedString(u"Yes"), u"Yes"_s);
    }

    void aValueThatIsNotATextIsShownInEnglish()
    {
        const StringTable table = StringTable::load(Bundle(m_folder.path()), u"Table"_s, {u"fr"_s});
        QCOMPARE(table.localizedString(u"Number"), u"Number"_s);
    }

    void aBrokenTableIsEnglishAndIsLogged()
    {
        QTest::ignoreMessage(QtWarningMsg, "A table of texts cannot be read.");
        const StringTable table = StringTable::load(Bundle(m_folder.path()), u"Table"_s, {u"br"_s, u"fr"_s});
        QCOMPARE(table.localizedString(u"Yes"), u"Yes"_s);
    }

private:
    QTemporaryDir m_folder;
};

template class RunnableTests<tst_StringTable, void>;
#include "tst_stringtable.moc"
