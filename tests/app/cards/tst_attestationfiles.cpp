#include "app/cards/AttestationFiles.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/text/PageFonts.h"
#include "card/CardKeys.h"
#include "platform/Bundle.h"
#include "platform/files/FailedWrites.h"
#include "tests/common/Files.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/platform/FileSizeLimit.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStorageInfo>
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

const std::unexpected failedDocument(Error(u"essai"_s, 1, u"Pas de logo."_s));

} // namespace

class tst_AttestationFiles : public TestCase
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    Bundle m_bundle{QStringLiteral(PELMORA_STAGE_SHARE)};
    SchemeLogos m_logos{m_bundle};
    std::optional<PageFonts> m_fonts;
    LogCapture m_log;

    std::expected<QString, SaveFailure> savedIn(const QString& folder, const CardRecord& record)
    {
        return AttestationFiles(folder, PageOptions(), m_logos, *m_fonts).save(record);
    }

    QString fileInTheWay() const
    {
        const QString path = m_folder.filePath(u"file"_s);
        return writeFile(path, {}) ? path : QString();
    }

private Q_SLOTS:
    void init() { m_log.clear(); }

    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
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
        QVERIFY(contentOf(folder + u"/SPECIMEN Zoé.pdf"_s).startsWith("%PDF-1.4"));
    }

    void blanksAndAccentsInThePathAreKept()
    {
        const QString folder = m_folder.filePath(u"Médecins, 2ᵉ étage #1 100 %/à côté"_s);
        const auto saved = savedIn(folder, recordOf(u"D’ÉTÉ"_s, u"Jean-Noël"_s));
        QCOMPARE(saved.value(), folder + u"/D’ÉTÉ Jean-Noël.pdf"_s);
        QVERIFY(QFile::exists(saved.value()));
    }

    void theSameCardTwiceIsOneFile()
    {
        const QString folder = m_folder.filePath(u"twice"_s);
        QCOMPARE(savedIn(folder, recordOf(u"SPECIMEN"_s, u"Zoé"_s)).value(),
                 savedIn(folder, recordOf(u"SPECIMEN"_s, u"Zoé"_s)).value());
        QCOMPARE(namesIn(folder), QStringList{u"SPECIMEN Zoé.pdf"_s});
    }

    void aFolderThatCannotBeUsedIsTold_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("cannot be made") << u"/proc/x"_s;
        QTest::newRow("a file is in the way") << fileInTheWay();
        QTest::newRow("a file is in the way of those above") << fileInTheWay() + u"/below"_s;
        QTest::newRow("no name") << u""_s;
    }

    void aFolderThatCannotBeUsedIsTold()
    {
        QFETCH(const QString, folder);
        const auto saved = savedIn(folder, recordOf(u"SPECIMEN"_s, u"Zoé"_s));
        QVERIFY(!saved.has_value());
        QCOMPARE(saved.error().kind, SaveFailure::Kind::FolderUnusable);
        QCOMPARE(saved.error().path, folder);
        QCOMPARE(saved.error().error({}).localizedDescription(),
                 u"le dossier « %1 » ne peut pas être utilisé."_s.arg(folder));
        QVERIFY(m_log.lines().filter(u"SPECIMEN"_s).isEmpty());
    }

    void aFileThatCannotBeWrittenIsTold_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("reason");
        const QString blocked = m_folder.filePath(u"blocked"_s);
        QVERIFY(QDir().mkpath(blocked + u"/SPECIMEN Paul.pdf"_s));
        QTest::newRow("a folder is in the way") << blocked << u"un dossier porte déjà ce nom"_s;
        // No user can create files there, not even root. Some machines mount it read-only.
        QTest::newRow("not allowed") << u"/sys"_s
                                     << (QStorageInfo(u"/sys"_s).isReadOnly() ? u"le disque est en lecture seule"_s
                                                                              : u"l’écriture n’y est pas autorisée"_s);
    }

    void aFileThatCannotBeWrittenIsTold()
    {
        QFETCH(const QString, folder);
        QFETCH(const QString, reason);
        const auto saved = savedIn(folder, recordOf(u"SPECIMEN"_s, u"Paul"_s));
        QVERIFY(!saved.has_value());
        QCOMPARE(saved.error().kind, SaveFailure::Kind::WriteFailed);
        QCOMPARE(saved.error().path, folder + u"/SPECIMEN Paul.pdf"_s);
        QCOMPARE(saved.error().write.reason, reason);
        QCOMPARE(saved.error().error({}).localizedDescription(),
                 u"l’attestation n’a pas été enregistrée dans « %1 » : %2."_s.arg(folder, reason));
    }

    void aDiskThatFillsUpLeavesTheOldFile()
    {
        const QString folder = m_folder.filePath(u"full"_s);
        const QString path = savedIn(folder, recordOf(u"SPECIMEN"_s, u"Zoé"_s)).value();
        const qint64 size = QFileInfo(path).size();
        {
            ignoreSignalsOfFailedWrites(); // as all our programs do
            const FileSizeLimit limit(1000);
            const auto saved = savedIn(folder, recordOf(u"SPECIMEN"_s, u"Zoé"_s));
            QVERIFY(!saved.has_value());
            QCOMPARE(saved.error().kind, SaveFailure::Kind::WriteFailed);
        }
        QCOMPARE(QFileInfo(path).size(), size);
        QCOMPARE(namesIn(folder).size(), 1);
    }

    void aDocumentThatCouldNotBeMadeIsToldAndNothingIsWritten()
    {
        const QString folder = m_folder.filePath(u"empty"_s);
        const auto saved = AttestationFiles::write({folder, u"SPECIMEN Zoé.pdf"_s, failedDocument});
        QVERIFY(!saved.has_value());
        QCOMPARE(saved.error().kind, SaveFailure::Kind::NoDocument);
        QCOMPARE(saved.error().path, folder + u"/SPECIMEN Zoé.pdf"_s);
        QCOMPARE(saved.error().cause, failedDocument.error().localizedDescription());
        QVERIFY(QDir(folder).isEmpty());
    }

    void theFoldersFaultIsToldBeforeTheDocuments()
    {
        const auto saved = AttestationFiles::write({fileInTheWay(), u"SPECIMEN Zoé.pdf"_s, failedDocument});
        QVERIFY(!saved.has_value());
        QCOMPARE(saved.error().kind, SaveFailure::Kind::FolderUnusable);
    }
};

template class RunnableTests<tst_AttestationFiles, QCoreApplication>;
#include "tst_attestationfiles.moc"
