#include "app/models/CardFile.h"
#include "card/CardKeys.h"
#include "card/PelmoraError.h"
#include "platform/NativePath.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

// A card with one beneficiary. Its XML declares the given encoding.
QString card(const QString& encoding)
{
    return uR"(<?xml version="1.0" encoding="%1"?><T_AsnDonneesVitale><listeBenef><T_AsnBeneficiaire>
<ident><nomUsuel>SPECIMEN</nomUsuel><prenomUsuel>Zoé</prenomUsuel></ident>
</T_AsnBeneficiaire></listeBenef></T_AsnDonneesVitale>)"_s.arg(encoding);
}

} // namespace

class tst_CardFile : public TestCase
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    std::expected<CardRecord, Error> loaded(const QByteArray& content) const
    {
        const QString path = m_folder.filePath(u"card.xml"_s);
        return loadCardFile(writeFile(path, content) ? path : QString());
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }

    void aLoadedCardHasNoFundLabelAndNoXml()
    {
        const auto record = loaded(card(u"UTF-8"_s).toUtf8());
        QVERIFY(record.has_value());
        QCOMPARE(record->text(CardKey::fundCodeLibelle), u"Non spécifié"_s);
        QVERIFY(!record->contains(CardKey::xmlString));
    }

    void theFirstNameIsReadInEveryEncoding_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QString utf16 = card(u"UTF-16"_s);
        QTest::newRow("UTF-8") << card(u"UTF-8"_s).toUtf8();
        QTest::newRow("UTF-8 with a mark") << "\xEF\xBB\xBF" + card(u"UTF-8"_s).toUtf8();
        QTest::newRow("UTF-8 that declares another") << card(u"ISO-8859-1"_s).toUtf8();
        QTest::newRow("ISO-8859-1") << card(u"ISO-8859-1"_s).toLatin1();
        QTest::newRow("windows-1252") << card(u"windows-1252"_s).toLatin1();
        QTest::newRow("UTF-16") << QByteArray(
            QStringEncoder(QStringEncoder::Utf16, QStringEncoder::Flag::WriteBom)(utf16));
    }

    void theFirstNameIsReadInEveryEncoding()
    {
        QFETCH(const QByteArray, content);
        const auto record = loaded(content);
        QVERIFY2(record.has_value(), record ? "" : qPrintable(record.error().localizedDescription()));
        QCOMPARE(record->text(CardKey::firstName), u"Zoé"_s);
    }

    void aFileInUtf16WithoutAByteOrderMarkIsRead()
    {
        QString text = card(u"UTF-16"_s);
        text.replace(u"Zoé"_s, u"Zoe"_s);
        const auto record = loaded(QByteArray(QStringEncoder(QStringEncoder::Utf16LE)(text)));
        QVERIFY(record.has_value());
        QCOMPARE(record->text(CardKey::firstName), u"Zoe"_s);
    }

    void aFileWithoutBeneficiariesGivesTheNoBeneficiaryError()
    {
        const auto record = loaded("<T_AsnDonneesVitale/>");
        QVERIFY(!record.has_value());
        QVERIFY(record.error() == PelmoraError::vitaleNoBen());
        QCOMPARE(record.error().localizedDescription(), PelmoraError::vitaleNoBen().localizedDescription());
    }

    void aFileWhoseNameIsNotUtf8IsLoaded()
    {
        const QByteArray name = QFile::encodeName(m_folder.path()) + "/Zo\xE9.xml";
        QVERIFY(loaded(card(u"UTF-8"_s).toUtf8()).has_value());
        QCOMPARE(std::rename(QFile::encodeName(m_folder.filePath(u"card.xml"_s)).constData(), name.constData()), 0);
        QVERIFY(loadCardFile(pathFromBytes(name)).has_value());
        QCOMPARE(std::remove(name.constData()), 0);
    }

    void aMissingFileGivesAnError()
    {
        const auto record = loadCardFile(m_folder.filePath(u"missing.xml"_s));
        QVERIFY(!record.has_value());
        QCOMPARE(record.error().localizedDescription(), u"Le fichier n’existe pas."_s);
    }

    void aFolderIsRefused()
    {
        const auto record = loadCardFile(m_folder.path());
        QVERIFY(!record.has_value());
        QCOMPARE(record.error().localizedDescription(), u"Le fichier ne peut pas être lu."_s);
    }

    void aDeviceOrAPipeIsRefused()
    {
        const QString pipe = m_folder.filePath(u"pipe"_s);
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString& path : {u"/dev/zero"_s, pipe}) {
            const auto record = loadCardFile(path);
            QVERIFY(!record.has_value());
            QCOMPARE(record.error().localizedDescription(), u"Le fichier ne peut pas être lu."_s);
        }
    }

    void aFileOverTheMaximumIsRefused()
    {
        const auto record = loaded(QByteArray(17 * 1024 * 1024, ' '));
        QVERIFY(!record.has_value());
        QCOMPARE(record.error().localizedDescription(),
                 u"Ce fichier n’est pas une carte Vitale. Le document XML est trop volumineux."_s);
    }

    void theErrorForAFileThatIsNotACardStartsBySayingSo_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("no XML") << QByteArray("Bonjour");
        QTest::newRow("other XML") << QByteArray("<svg/>");
    }
    void theErrorForAFileThatIsNotACardStartsBySayingSo()
    {
        QFETCH(const QByteArray, content);
        const auto record = loaded(content);
        QVERIFY(!record.has_value());
        QVERIFY(record.error().localizedDescription().startsWith(u"Ce fichier n’est pas une carte Vitale. "));
    }

    void bytesThatAreNotUtf8AreRefused_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("Latin 1 in UTF-8") << card(u"UTF-8"_s).toLatin1();
        QTest::newRow("Latin 1 without a declaration") << QByteArray("<T_AsnDonneesVitale>\xE9</T_AsnDonneesVitale>");
        QTest::newRow("cut in its last character") << card(u"UTF-8"_s).toUtf8() + '\xC3';
    }

    void bytesThatAreNotUtf8AreRefused()
    {
        QFETCH(const QByteArray, content);
        const auto record = loaded(content);
        QVERIFY(!record.has_value());
        QCOMPARE(record.error().localizedDescription(),
                 u"Ce fichier n’est pas une carte Vitale. Le fichier n’est pas un texte lisible."_s);
    }
};

template class RunnableTests<tst_CardFile, QCoreApplication>;
#include "tst_cardfile.moc"
