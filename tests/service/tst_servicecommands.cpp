#include "card/wire/ServiceMessage.h"
#include "card/wire/ServiceVocabulary.h"
#include "service/ServiceCommands.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCborArray>
#include <QCoreApplication>
#include <QTest>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

using Card = std::expected<QString, ReadResult>;

const QString feitian = u"Feitian SCR301"_s;
const QString insuredCard =
    u"<T_AsnDonneesVitale><listeBenef><T_AsnBeneficiaire><amo><qualBenef>0</qualBenef><codeRegime>01</codeRegime>"
    "<caisse>751</caisse></amo></T_AsnBeneficiaire></listeBenef></T_AsnDonneesVitale>"_s;

/// A library whose card and readers the test chooses.
class FakeLibrary final : public ReadingLibrary
{
public:
    FakeLibrary(QStringList readers, Card card)
        : m_readers(std::move(readers))
        , m_card(std::move(card))
    {
    }

    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode mode) override
    {
        return mode == LibraryMode::System ? LibraryKind::System : LibraryKind::Embedded;
    }
    [[nodiscard]] QStringList readers() override { return m_readers; }
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) override
    {
        return m_readers.contains(vitaleReader) && m_readers.contains(professionalReader);
    }
    [[nodiscard]] QString informations() override { return u"<informations/>"_s; }
    [[nodiscard]] Card readCard() override { return m_card; }
    [[nodiscard]] std::unique_ptr<ReaderWatch> watchReader(const ReaderReport& report) override
    {
        report(CardReaderState::Card);
        return nullptr;
    }
    [[nodiscard]] QString hint() const override { return m_hint; }

    void setHint(const QString& hint) { m_hint = hint; }
    void setReaders(const QStringList& readers) { m_readers = readers; }

private:
    QString m_hint;
    QStringList m_readers;
    Card m_card;
};

ServiceCommands commands(const Card& card = insuredCard, const QByteArray& funds = {})
{
    FundTable table;
    [[maybe_unused]] const QStringList skipped = table.add(u"t"_s, funds);
    return ServiceCommands(std::make_unique<FakeLibrary>(QStringList{feitian, u"CPS"_s}, card), table);
}

QCborMap request(QLatin1StringView command, QCborMap fields = {})
{
    fields.insert(ServiceWord::command, command);
    return fields;
}

QCborMap initRequest(const QString& mode)
{
    return request(ServiceWord::init, {{ServiceWord::mode, mode}});
}

QCborMap chooseRequest(const QString& vitaleReader, const QString& professionalReader)
{
    return request(ServiceWord::setReaders,
                   {{ServiceWord::vitaleReaderName, vitaleReader}, {ServiceWord::cpsReaderName, professionalReader}});
}

QString statusOf(const std::optional<QCborMap>& reply)
{
    return reply ? reply->value(ServiceWord::status).toString() : u"(none)"_s;
}

std::optional<QCborMap> readAfterBind(ServiceCommands subject)
{
    if (statusOf(subject.answer(initRequest(u"0"_s))) != ServiceWord::success ||
        statusOf(subject.answer(chooseRequest(feitian, feitian))) != ServiceWord::success)
        return std::nullopt;
    return subject.answer(request(ServiceWord::vitaleRead));
}

} // namespace

class tst_ServiceCommands : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initAnswersWhetherTheLibraryIsEmbedded_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("embedded");
        QTest::newRow("automatic") << u"0"_s << u"true"_s;
        QTest::newRow("system") << u"1"_s << u"false"_s;
        QTest::newRow("embedded") << u"2"_s << u"true"_s;
    }

    void initAnswersWhetherTheLibraryIsEmbedded()
    {
        QFETCH(QString, mode);
        QFETCH(QString, embedded);
        ServiceCommands subject = commands();
        const QCborMap expected{{u"Status"_s, u"success"_s}, {u"Embedded"_s, embedded}};
        QCOMPARE(subject.answer(initRequest(mode)), std::optional(expected));
    }

    void initWithAnotherModeFails_data()
    {
        QTest::addColumn<QCborMap>("message");
        QTest::newRow("3") << initRequest(u"3"_s);
        QTest::newRow("blank") << initRequest(u" 0"_s);
        QTest::newRow("empty") << initRequest(u""_s);
        QTest::newRow("number") << request(ServiceWord::init, {{ServiceWord::mode, 0}});
        QTest::newRow("missing") << request(ServiceWord::init);
    }

    void initWithAnotherModeFails()
    {
        QFETCH(QCborMap, message);
        ServiceCommands subject = commands();
        QCOMPARE(statusOf(subject.answer(message)), u"error"_s);
    }

    void theReadersAreListedInTheLibrarysOrder()
    {
        ServiceCommands subject = commands();
        const QCborMap expected{{u"Status"_s, u"success"_s}, {u"Readers"_s, QCborArray{feitian, u"CPS"_s}}};
        QCOMPARE(subject.answer(request(ServiceWord::readersList)), std::optional(expected));
    }

    void unknownOrMissingReadersCannotBeChosen()
    {
        ServiceCommands subject = commands();
        QCOMPARE(statusOf(subject.answer(chooseRequest(feitian, u"CPS"_s))), u"success"_s);
        QCOMPARE(statusOf(subject.answer(chooseRequest(u"autre"_s, u"CPS"_s))), u"error"_s);
        QCOMPARE(statusOf(subject.answer(chooseRequest(feitian, u"autre"_s))), u"error"_s);
        QCOMPARE(statusOf(subject.answer(request(ServiceWord::setReaders, {{ServiceWord::vitaleReaderName, feitian}}))),
                 u"error"_s);
        QCOMPARE(statusOf(subject.answer(request(ServiceWord::setReaders))), u"error"_s);
    }

    void theLibrarysDocumentIsSent()
    {
        ServiceCommands subject = commands();
        const QCborMap expected{{u"Status"_s, u"success"_s}, {u"Informations"_s, u"<informations/>"_s}};
        QCOMPARE(subject.answer(request(ServiceWord::informationsCommand)), std::optional(expected));
    }

    void aCardIsReadOnlyAfterInit()
    {
        ServiceCommands subject = commands();
        const QCborMap failed{{u"Status"_s, u"error"_s}};
        QCOMPARE(subject.answer(request(ServiceWord::vitaleRead)), std::optional(failed));
        QCOMPARE(statusOf(subject.answer(chooseRequest(feitian, feitian))), u"success"_s);
        QCOMPARE(subject.answer(request(ServiceWord::vitaleRead)), std::optional(failed));
    }

    void aReadWithoutAChosenReaderLooksForTheAcceptedOne()
    {
        auto owned = std::make_unique<FakeLibrary>(QStringList{u"CPS"_s}, insuredCard);
        FakeLibrary& library = *owned;
        ServiceCommands subject(std::move(owned), FundTable());
        QCOMPARE(statusOf(subject.answer(initRequest(u"2"_s))), u"success"_s);
        const QCborMap absent{{u"Status"_s, u"error"_s},
                              {u"Result"_s, 13},
                              {u"Detail"_s, u"Aucun lecteur « Feitian SCR301 » n’est branché."_s}};
        QCOMPARE(subject.answer(request(ServiceWord::vitaleRead)), std::optional(absent));
        // A refused choice chooses no reader.
        QCOMPARE(statusOf(subject.answer(chooseRequest(feitian, u"CPS"_s))), u"error"_s);
        QCOMPARE(subject.answer(request(ServiceWord::vitaleRead)), std::optional(absent));
        library.setReaders({u"CPS"_s, feitian});
        QCOMPARE(statusOf(subject.answer(request(ServiceWord::vitaleRead))), u"success"_s);
        library.setReaders({feitian});
        QCOMPARE(statusOf(subject.answer(initRequest(u"2"_s))), u"success"_s);
        QCOMPARE(statusOf(subject.answer(request(ServiceWord::vitaleRead))), u"success"_s);
    }

    void theAnswerToAFailedReadHasTheLibrarysHint()
    {
        auto owned = std::make_unique<FakeLibrary>(QStringList(), std::unexpected(ReadResult::ReaderFault));
        FakeLibrary& library = *owned;
        ServiceCommands subject(std::move(owned), FundTable());
        const QString hint = u"Le service PC/SC ne répond pas."_s;
        library.setHint(hint);
        const QCborMap none{{u"Status"_s, u"success"_s}, {u"Readers"_s, QCborArray()}, {u"Detail"_s, hint}};
        QCOMPARE(subject.answer(request(ServiceWord::readersList)), std::optional(none));
        QCOMPARE(statusOf(subject.answer(initRequest(u"2"_s))), u"success"_s);
        const QCborMap failed{{u"Status"_s, u"error"_s}, {u"Result"_s, 13}, {u"Detail"_s, hint}};
        QCOMPARE(subject.answer(request(ServiceWord::vitaleRead)), std::optional(failed));
        library.setReaders({feitian});
        QCOMPARE(subject.answer(request(ServiceWord::vitaleRead)), std::optional(failed));
        const QCborMap one{{u"Status"_s, u"success"_s}, {u"Readers"_s, QCborArray{feitian}}};
        QCOMPARE(subject.answer(request(ServiceWord::readersList)), std::optional(one));
    }

    void aCardComesWithTheLabelOfItsFund()
    {
        const QCborMap expected{
            {u"Status"_s, u"success"_s}, {u"Vitale"_s, insuredCard}, {u"FundCodeLibelle"_s, u"CPAM de test"_s}};
        QCOMPARE(readAfterBind(commands(insuredCard, "01;;Régime général\n01;751;CPAM de test\n")),
                 std::optional(expected));
    }

    void aFundWithoutALabelHasNoLabelField()
    {
        const QCborMap expected{{u"Status"_s, u"success"_s}, {u"Vitale"_s, insuredCard}};
        QCOMPARE(readAfterBind(commands(insuredCard)), std::optional(expected));
    }

    void aDocumentThatIsNotACardIsSentUnchanged()
    {
        const QCborMap expected{{u"Status"_s, u"success"_s}, {u"Vitale"_s, u"<autre/>"_s}};
        QCOMPARE(readAfterBind(commands(u"<autre/>"_s, "01;;Régime général\n")), std::optional(expected));
    }

    void aFailedReadCarriesItsResultCode()
    {
        const QCborMap absent{{u"Status"_s, u"error"_s}, {u"Result"_s, 11}};
        QCOMPARE(readAfterBind(commands(std::unexpected(ReadResult::CardAbsent))), std::optional(absent));
        const QCborMap broken{{u"Status"_s, u"error"_s}, {u"Result"_s, 17}};
        QCOMPARE(readAfterBind(commands(std::unexpected(ReadResult::ReadError))), std::optional(broken));
    }

    void aCardTooLargeForAMessageIsAReadError()
    {
        const qsizetype limit = ServiceMessageReader::maximumItemSize;
        const QCborMap expected{{u"Status"_s, u"error"_s}, {u"Result"_s, 17}};
        QCOMPARE(readAfterBind(commands(u"<a>%1</a>"_s.arg(QString(limit, u'x')))), std::optional(expected));
        QCOMPARE(readAfterBind(commands(u"<a>%1</a>"_s.arg(QString(limit / 2, u'é')))), std::optional(expected));
        QCOMPARE(statusOf(readAfterBind(commands(u"<a>%1</a>"_s.arg(QString(limit / 2, u'x'))))), u"success"_s);
    }

    void anUnknownCommandHasNoAnswer_data()
    {
        QTest::addColumn<QCborMap>("message");
        QTest::newRow("empty") << QCborMap();
        QTest::newRow("unknown") << request("eject"_L1);
        QTest::newRow("other case") << request("Init"_L1);
        QTest::newRow("not a text") << QCborMap{{ServiceWord::command, 1}};
    }

    void anUnknownCommandHasNoAnswer()
    {
        QFETCH(QCborMap, message);
        ServiceCommands subject = commands();
        QCOMPARE(subject.answer(message), std::nullopt);
    }

    void theReaderIsWatchedOnlyAfterInit()
    {
        ServiceCommands subject = commands();
        int reports = 0;
        const ReaderReport count = [&reports](CardReaderState) { ++reports; };
        subject.watchReader(count);
        QCOMPARE(reports, 0);
        QCOMPARE(statusOf(subject.answer(initRequest(u"9"_s))), ServiceWord::error);
        subject.watchReader(count);
        QCOMPARE(reports, 0);
        for (int inits = 1; inits <= 2; ++inits) {
            QCOMPARE(statusOf(subject.answer(initRequest(u"0"_s))), ServiceWord::success);
            subject.watchReader(count);
            QVERIFY(subject.answer(request(ServiceWord::readersList)).has_value());
            subject.watchReader(count);
            QCOMPARE(reports, inits);
        }
    }
};

template class RunnableTests<tst_ServiceCommands, QCoreApplication>;
#include "tst_servicecommands.moc"
