#include "card/CardKeys.h"
#include "card/client/LVitAccess.h"
#include "tests/card/client/ClientOutcome.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace ClientOutcome;

namespace {

const QString success = u"success"_s;
const QString specimen = QStringLiteral(PELMORA_STAGE_SHARE "/specimen.xml");

ClientPointer makeClient(const QStringList& arguments)
{
    return std::make_shared<LVitAccess>(ServiceCommand{QStringLiteral(PELMORA_SERVICE_PROGRAM), arguments});
}

} // namespace

/// The client with the shipped card service.
class tst_CardServiceClient : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void bindInformationsAndReadOfTheSpecimenCard()
    {
        const ClientPointer client = makeClient({u"--simulate"_s, specimen});
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(client->initialized(), true);

        QCOMPARE(awaitReaders(client)->result, (QVariantMap{{u"Readers"_s, QStringList{u"Feitian SCR301"_s}}}));

        const auto informations = awaitInformations(client);
        QCOMPARE(summary(informations), success);
        for (const InformationField& field : informationFields)
            QVERIFY2(!informations->result->value(field.key.toString()).toString().isEmpty(), field.path.data());

        const auto card = awaitRead(client);
        QCOMPARE(summary(card), success);
        QCOMPARE(card->result->text(CardKey::lastName), u"SPECIMEN"_s);
        QCOMPARE(card->result->beneficiaries().size(), 3);
        QCOMPARE(card->result->text(CardKey::xmlString), textOfFile(specimen));
        QVERIFY(!card->result->text(CardKey::fundCodeLibelle).value_or(QString()).isEmpty());
    }

    void theCardIsAbsentWhileItsFileIs()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"card.xml"_s);
        QVERIFY(QFile::copy(specimen, path));
        const ClientPointer client = makeClient({u"--simulate"_s, path});
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(summary(awaitRead(client)), success);
        QVERIFY(QFile::remove(path));
        QCOMPARE(summary(awaitRead(client)), u"Pelmora -30"_s);
        QVERIFY(QFile::copy(specimen, path));
        QCOMPARE(summary(awaitRead(client)), success);
        QCOMPARE(client->initialized(), true);
    }

    void aCardThatCannotBeReadIsAReadError()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"card.xml"_s);
        const ClientPointer client = makeClient({u"--simulate"_s, path});
        QCOMPARE(summary(awaitBind(client)), success);
        QVERIFY(writeFile(path, "<T_AsnDonneesVitale><tech>"));
        QCOMPARE(summary(awaitRead(client)), u"Pelmora -31"_s);
        QVERIFY(writeFile(path, ""));
        QCOMPARE(summary(awaitRead(client)), u"Pelmora -31"_s);
        QVERIFY(writeFile(path, "<T_AsnDonneesVitale/>"));
        QCOMPARE(summary(awaitRead(client)), u"Pelmora -40"_s);
    }

    void withoutASimulatedReaderNoReaderIsFound()
    {
        const ClientPointer client = makeClient({});
        QCOMPARE(summary(awaitBind(client)), u"Pelmora -20"_s);
        QCOMPARE(client->initialized(), false);
    }

    void everyAccessModeBinds_data()
    {
        QTest::addColumn<unsigned>("mode");
        for (const unsigned mode : {0U, 1U, 2U})
            QTest::addRow("%u", mode) << mode;
    }

    void everyAccessModeBinds()
    {
        QFETCH(const unsigned, mode);
        const ClientPointer client = makeClient({u"--simulate"_s, specimen});
        client->setAccessMode(mode);
        QCOMPARE(summary(awaitBind(client)), success);
    }

    void aBindOfAProgramThatCannotStartItsReaderFails()
    {
        const ClientPointer client = makeClient({u"--simulate"_s});
        QCOMPARE(summary(awaitBind(client)), u"Pelmora -10"_s);
        QCOMPARE(client->initialized(), false);
    }
};

template class RunnableTests<tst_CardServiceClient, QCoreApplication>;

#include "tst_cardserviceclient.moc"
