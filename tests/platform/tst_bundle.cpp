#include "platform/Bundle.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_Bundle : public TestCase
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    int m_count = 0;

    // A folder of resources with that information dictionary.
    QString folderWithInformation(const QByteArray& content)
    {
        const QString path = m_folder.filePath(QString::number(++m_count));
        return writeFile(path + u"/Info.plist"_s, content) ? path : QString();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        QVERIFY(writeFile(m_folder.filePath(u"01.svg"_s), {}));
        QVERIFY(QDir(m_folder.path()).mkdir(u"folder.svg"_s));
    }

    void aResourceIsFoundByNameAndType()
    {
        QCOMPARE(Bundle(m_folder.path()).pathForResource(u"01"_s, u"svg"_s), m_folder.filePath(u"01.svg"_s));
    }

    void aNameThatIsNotAResourceHasNoPath()
    {
        const Bundle bundle(m_folder.path());
        QVERIFY(!bundle.pathForResource(u"99"_s, u"svg"_s));
        QVERIFY(!bundle.pathForResource(u"01"_s, u"png"_s));
        QVERIFY(!bundle.pathForResource(u"folder"_s, u"svg"_s));
        QVERIFY(!bundle.pathForResource(u""_s, u"svg"_s));
    }

    void programsAreFoundBesideTheResources()
    {
        QCOMPARE(Bundle(u"/tree/share/pelmora"_s).pathForProgram(u"pelmora-cards"_s),
                 u"/tree/libexec/pelmora/pelmora-cards"_s);
    }

    void theInformationDictionaryIsReadByItsKeys()
    {
        const Bundle bundle(
            folderWithInformation("<plist version=\"1.0\"><dict><key>MVDebugLevel</key><integer>0</integer>"
                                  "<key>MVContactMail</key><string>a@morvel.example</string></dict></plist>"));
        QCOMPARE(bundle.objectForInfoDictionaryKey(u"MVContactMail"), QVariant(u"a@morvel.example"_s));
        QCOMPARE(bundle.objectForInfoDictionaryKey(u"MVDebugLevel"), QVariant(qint64{0}));
        QVERIFY(!bundle.objectForInfoDictionaryKey(u"Absent").isValid());
    }

    void theInformationDictionaryIsReadOnce()
    {
        const QString folder =
            folderWithInformation("<plist version=\"1.0\"><dict><key>Key</key><string>first</string></dict></plist>");
        const Bundle bundle(folder);
        const Bundle copy = bundle;
        QCOMPARE(bundle.objectForInfoDictionaryKey(u"Key"), QVariant(u"first"_s));
        QVERIFY(QFile::remove(folder + u"/Info.plist"_s));
        QCOMPARE(bundle.objectForInfoDictionaryKey(u"Key"), QVariant(u"first"_s));
        QCOMPARE(copy.objectForInfoDictionaryKey(u"Key"), QVariant(u"first"_s));
    }

    void aMissingOrBrokenInformationDictionaryIsEmptyAndLoggedOnce_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("missing") << m_folder.filePath(u"nowhere"_s);
        QTest::newRow("garbage") << folderWithInformation("\xff\xfe<<<");
        QTest::newRow("no dictionary") << folderWithInformation("<plist version=\"1.0\"><string>a</string></plist>");
    }

    void aMissingOrBrokenInformationDictionaryIsEmptyAndLoggedOnce()
    {
        QFETCH(const QString, folder);
        QTest::ignoreMessage(QtWarningMsg, "The information dictionary cannot be read.");
        const Bundle bundle(folder);
        QVERIFY(!bundle.objectForInfoDictionaryKey(u"MVDebugLevel").isValid());
        QVERIFY(!bundle.objectForInfoDictionaryKey(u"MVContactMail").isValid());
    }

    void theShippedInformationDictionaryDescribesTheProgram()
    {
        const Bundle bundle(QStringLiteral(PELMORA_STAGE_SHARE));
        const QHash<QString, QString> expected{
            {u"CFBundleIdentifier"_s, u"com.morvel.Pelmora"_s},
            {u"CFBundleName"_s, u"Pelmora"_s},
            {u"CFBundleExecutable"_s, u"pelmora"_s},
            {u"CFBundleShortVersionString"_s, QStringLiteral(PELMORA_VERSION)},
            {u"CFBundleVersion"_s, QStringLiteral(PELMORA_VERSION)},
            {u"MVContactMail"_s, u"support@morvel.example"_s},
        };
        for (const auto& [key, value] : expected.asKeyValueRange())
            QCOMPARE(bundle.objectForInfoDictionaryKey(key), QVariant(value));
        // The log level keeps the logger's default.
        QVERIFY(!bundle.objectForInfoDictionaryKey(u"MVDebugLevel").isValid());
    }

    void aNameNeverLeadsOutOfTheFolder()
    {
        const Bundle inner(m_folder.filePath(u"folder.svg"_s));
        QVERIFY(!inner.pathForResource(u"../01"_s, u"svg"_s));
        QVERIFY(!inner.pathForResource(m_folder.filePath(u"01"_s), u"svg"_s));
    }
};

template class RunnableTests<tst_Bundle, QCoreApplication>;
#include "tst_bundle.moc"
