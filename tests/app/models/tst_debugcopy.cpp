#include "app/models/DebugCopy.h"
#include "card/CardKeys.h"
#include "card/CardParser.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "platform/XmlDocument.h"
#include "prefs/settings/MVSettings.h"
#include "tests/common/Files.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString xml = u"<?xml version=\"1.0\"?>\n<T_AsnDonneesVitale>Zoé</T_AsnDonneesVitale>"_s;

CardRecord card()
{
    BeneficiaryRecord first;
    first.setText(CardKey::firstName, u"Zoé"_s);
    first.setRights({});
    BeneficiaryRecord second;
    second.setText(CardKey::firstName, u"Paul"_s);
    CardRecord record;
    record.setText(CardKey::lastName, u"SPECIMEN"_s);
    record.setText(CardKey::firstName, u"Zoé"_s);
    record.setText(CardKey::ssn, u"285057511612381"_s);
    record.setText(CardKey::xmlString, xml);
    record.setBeneficiaries({first, second});
    return record;
}

// The application calls this after a read.
void saveXMLIfNeeded(const UserDefaults& settings, const std::optional<CardRecord>& record, const QString& folder)
{
    if (isDebugCopyWanted(settings, record))
        writeDebugCopy(*record, folder);
}

} // namespace

class tst_DebugCopy : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<UserDefaults> m_settings;
    QString m_folder;
    LogCapture m_log;

private Q_SLOTS:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        QVERIFY(m_root->isValid());
        m_folder = m_root->filePath(u"à côté/Attestations"_s);
        m_settings = std::make_unique<UserDefaults>(m_root->filePath(u"Pelmora.conf"_s));
        MVSettings::setPreferencesWithBooleanValue(*m_settings, Settings::debugMode, true);
        m_log.clear();
    }

    void cleanup() { m_settings.reset(); }

    void theXmlAndTheRecordAreWrittenReadableByTheirOwnerOnly()
    {
        saveXMLIfNeeded(*m_settings, card(), m_folder);
        QCOMPARE(namesIn(m_folder), (QStringList{u"SPECIMEN_Zoé.plist"_s, u"SPECIMEN_Zoé.xml"_s}));
        QCOMPARE(contentOf(m_folder + u"/SPECIMEN_Zoé.xml"_s), xml.toUtf8());
        for (const QString& name : namesIn(m_folder))
            QCOMPARE(modeOf(m_folder + u'/' + name), 0600U);

        const auto list = parsePropertyList(contentOf(m_folder + u"/SPECIMEN_Zoé.plist"_s));
        QVERIFY(list.has_value());
        const QVariantMap expected{
            {u"LastName"_s, u"SPECIMEN"_s},
            {u"FirstName"_s, u"Zoé"_s},
            {u"SSN"_s, u"285057511612381"_s},
            {u"XMLString"_s, xml},
            {u"Beneficiaries"_s, QVariantList{QVariantMap{{u"FirstName"_s, u"Zoé"_s}, {u"AMORights"_s, QVariantList()}},
                                              QVariantMap{{u"FirstName"_s, u"Paul"_s}}}},
        };
        QCOMPARE(list->toMap(), expected);
        QVERIFY(m_log.lines().isEmpty());
    }

    void everyFieldOfARealCardIsInThePropertyList()
    {
        const QString text = textOfFile(QStringLiteral(PELMORA_SOURCE "/resources/card/specimen.xml"));
        const auto document = XmlDocument::fromText(text);
        QVERIFY(document.has_value());
        auto record = parseCardDocument(&*document);
        QVERIFY(record.has_value());
        record->setText(CardKey::xmlString, text);
        saveXMLIfNeeded(*m_settings, *record, m_folder);
        const auto list = parsePropertyList(contentOf(m_folder + u"/SPECIMEN_Hélène.plist"_s));
        QVERIFY(list.has_value());
        QStringList keys = record->keys();
        keys.append(u"Beneficiaries"_s);
        keys.sort();
        QCOMPARE(list->toMap().keys(), keys);
        QCOMPARE(list->toMap().value(u"Beneficiaries"_s).toList().size(), record->beneficiaries().size());
    }

    void withoutDebugModeOrACardOrItsXmlNothingIsWritten_data()
    {
        QTest::addColumn<bool>("debugMode");
        QTest::addColumn<bool>("hasCard");
        QTest::addColumn<bool>("hasXml");
        QTest::newRow("no debug mode") << false << true << true;
        QTest::newRow("no card") << true << false << false;
        QTest::newRow("no XML") << true << true << false;
    }

    void withoutDebugModeOrACardOrItsXmlNothingIsWritten()
    {
        QFETCH(const bool, debugMode);
        QFETCH(const bool, hasCard);
        QFETCH(const bool, hasXml);
        MVSettings::setPreferencesWithBooleanValue(*m_settings, Settings::debugMode, debugMode);
        CardRecord withoutXml;
        withoutXml.setText(CardKey::lastName, u"SPECIMEN"_s);
        saveXMLIfNeeded(*m_settings, hasCard ? std::optional(hasXml ? card() : withoutXml) : std::nullopt, m_folder);
        QVERIFY(!QDir(m_folder).exists());
    }

    void debugModeIsOffByDefault()
    {
        MVSettings::removePreferences(*m_settings, {Settings::debugMode.key});
        saveXMLIfNeeded(*m_settings, card(), m_folder);
        QVERIFY(!QDir(m_folder).exists());
    }

    void olderCopiesAreReplaced()
    {
        saveXMLIfNeeded(*m_settings, card(), m_folder);
        CardRecord later = card();
        later.setText(CardKey::xmlString, u"<later/>"_s);
        saveXMLIfNeeded(*m_settings, later, m_folder);
        QCOMPARE(namesIn(m_folder).size(), 2);
        QCOMPARE(contentOf(m_folder + u"/SPECIMEN_Zoé.xml"_s), QByteArray("<later/>"));
    }

    void missingOrUnusableNamesStillGiveFileNames_data()
    {
        QTest::addColumn<std::optional<QString>>("lastName");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("absent") << std::optional<QString>()
                                << QStringList{u"(null)_(null).plist"_s, u"(null)_(null).xml"_s};
        QTest::newRow("a path") << std::optional(u"../../x"_s)
                                << QStringList{u".._.._x_(null).plist"_s, u".._.._x_(null).xml"_s};
    }

    void missingOrUnusableNamesStillGiveFileNames()
    {
        QFETCH(const std::optional<QString>, lastName);
        CardRecord record;
        record.setText(CardKey::xmlString, xml);
        if (lastName)
            record.setText(CardKey::lastName, *lastName);
        saveXMLIfNeeded(*m_settings, record, m_folder);
        QTEST(namesIn(m_folder), "names");
    }

    void aTextThatCannotBeEncodedInUtf8IsTriedInWindows1252AndThenLogged()
    {
        CardRecord record = card();
        record.setText(CardKey::xmlString, u"SPECIMEN"_s + QChar(0xD800));
        saveXMLIfNeeded(*m_settings, record, m_folder);
        QCOMPARE(namesIn(m_folder), QStringList{u"SPECIMEN_Zoé.plist"_s});
        QCOMPARE(m_log.lines(), QStringList{u"The debug copy's XML was not written: le texte ne peut pas être codé"_s});
    }

    void aFolderThatCannotBeUsedIsNotChanged()
    {
        QVERIFY(writeFile(m_folder, {}));
        saveXMLIfNeeded(*m_settings, card(), m_folder);
        QCOMPARE(contentOf(m_folder), QByteArray());
    }

    void aFailedWriteIsLoggedWithoutDataOfTheCard()
    {
        QVERIFY(QDir().mkpath(m_folder + u"/SPECIMEN_Zoé.xml"_s));
        QVERIFY(QDir().mkpath(m_folder + u"/SPECIMEN_Zoé.plist"_s));
        saveXMLIfNeeded(*m_settings, card(), m_folder);
        QCOMPARE(m_log.lines(MXLog::Error),
                 (QStringList{u"The debug copy's XML was not written: un dossier porte déjà ce nom"_s,
                              u"The debug copy's property list was not written: un dossier porte déjà ce nom"_s}));
        QCOMPARE(m_log.lines().size(), 2);
    }
};

template class RunnableTests<tst_DebugCopy, QCoreApplication>;
#include "tst_debugcopy.moc"
