#include "app/AttestationFiles.h"
#include "attestation/PageFonts.h"
#include "attestation/SchemeLogos.h"
#include "card/CardKeys.h"
#include "platform/Bundle.h"
#include "platform/UserDefaults.h"
#include "prefs/MVSettings.h"
#include "support/MXLog.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

CardRecord recordOf(const QString& lastName, const QString& firstName)
{
    CardRecord record;
    record.setText(CardKey::lastName, lastName);
    record.setText(CardKey::firstName, firstName);
    return record;
}

} // namespace

class tst_AttestationFiles : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    Bundle m_bundle{QStringLiteral(PELMORA_STAGE_SHARE)};
    SchemeLogos m_logos{m_bundle};
    std::optional<PageFonts> m_fonts;

    std::expected<QString, SaveFailure> savedIn(const QString& folder, const CardRecord& record)
    {
        return AttestationFiles(folder, m_logos, *m_fonts).save(record);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        MVSettings::setStore(std::make_unique<UserDefaults>(m_folder.filePath(u"Pelmora.conf"_s)));
        std::expected<PageFonts, Error> fonts = PageFonts::load(m_bundle);
        QVERIFY(fonts.has_value());
        m_fonts = *std::move(fonts);
    }

    void anAttestationIsNamedAfterItsInsuredPersonSurnameFirst()
    {
        QCOMPARE(AttestationFiles::fileName(recordOf(u"SPECIMEN"_s, u"Zoé"_s)), u"SPECIMEN Zoé.pdf"_s);
        QCOMPARE(AttestationFiles::fileName(CardRecord()), u"(null) (null).pdf"_s);
        QCOMPARE(AttestationFiles::fileName(recordOf(u"../A"_s, u"/B"_s)), u".._A _B.pdf"_s);
    }

    void aMissingFolderIsMade()
    {
        const QString folder = m_folder.filePath(u"a/b"_s);
        QCOMPARE(savedIn(folder, recordOf(u"SPECIMEN"_s, u"Zoé"_s)).value(), folder + u"/SPECIMEN Zoé.pdf"_s);
        QFile file(folder + u"/SPECIMEN Zoé.pdf"_s);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().startsWith("%PDF-1.4"));
    }

    void aFolderThatCannotBeMadeIsTold()
    {
        MXLog::defaultLogger().setLogLevel(0);
        const auto saved = savedIn(u"/proc/x"_s, recordOf(u"SPECIMEN"_s, u"Zoé"_s));
        MXLog::defaultLogger().setLogLevel(MXLog::Notice);
        QVERIFY(!saved.has_value());
        QCOMPARE(saved.error().description(), u"le dossier « /proc/x » ne peut pas être utilisé."_s);
    }

    void aFolderInTheWayOfTheFileIsTold()
    {
        const QString inTheWay = m_folder.filePath(u"SPECIMEN Paul.pdf"_s);
        QVERIFY(QDir().mkdir(inTheWay));
        const auto saved = savedIn(m_folder.path(), recordOf(u"SPECIMEN"_s, u"Paul"_s));
        QVERIFY(!saved.has_value());
        QCOMPARE(saved.error().description(), u"« %1 » n’a pas été enregistré : un dossier porte déjà ce nom."_s.arg(inTheWay));
    }
};

QTEST_MAIN(tst_AttestationFiles)
#include "tst_attestationfiles.moc"
