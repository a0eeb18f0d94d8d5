#include "tests/card/client/ClientTest.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;
using namespace ClientOutcome;
using namespace ClientTest;

/// The client's log lines.
class tst_LVitAccessLog : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_log.clear(); }

    void requestsAndRepliesAreLoggedAtDebugLevel()
    {
        const FakeService fake;
        QCOMPARE(summary(awaitBind(makeClient(fake.command()))), success);
        const QString received =
            u"Received response in _sendSimpleMessage:withCompletionHandler: event handler: ADDRESS\n"_s;
        QCOMPARE(lines(), (QStringList{
                              u"Message:\n{\"Command\": \"init\", \"Mode\": \"0\"}"_s,
                              received + uR"({"Status": "success", "Embedded": "true"})"_s,
                              u"Message:\n{\"Command\": \"readers_list\"}"_s,
                              received + uR"({"Status": "success", "Readers": ["Feitian SCR301"]})"_s,
                              u"Readers: (Feitian SCR301)"_s,
                              u"Message:\n{\"Command\": \"set_readers\", \"cps_reader_name\": \"Feitian SCR301\", "
                              "\"vitale_reader_name\": \"Feitian SCR301\"}"_s,
                              received + uR"({"Status": "success"})"_s,
                          }));
    }

    void aListOfReadersIsLogged_data()
    {
        QTest::addColumn<QStringList>("list");
        QTest::addColumn<QStringList>("logged");
        QTest::newRow("two, none accepted") << QStringList{u"X"_s, u"Y"_s} << QStringList{u"Readers: (X, Y)"_s};
        QTest::newRow("control characters")
            << QStringList{u"X\n\x1b[31m"_s, u"Y\u009B"_s} << QStringList{u"Readers: (X??[31m, Y?)"_s};
        QTest::newRow("none") << QStringList() << QStringList();
    }

    void aListOfReadersIsLogged()
    {
        QFETCH(const QStringList, list);
        QFETCH(const QStringList, logged);
        const auto [fake, client] = Served(FakeScript().readers(list));
        QVERIFY(awaitBind(client));
        QCOMPARE(lines().filter(QRegularExpression(u"^Readers: "_s)), logged);
    }

    void anAbsentReaderNameIsLoggedAsAnError()
    {
        const auto [fake, client] = Served();
        QCOMPARE(summary(awaitSetReaders(client, QVariantMap{{u"CPS"_s, u"C"_s}})), success);
        QCOMPARE(m_log.lines(MXLog::Error), QStringList{u"NULL value in message"_s});
    }

    void anInterruptionIsLogged()
    {
        const auto [fake, client] = Served(FakeScript().doing("any", "crash"));
        QCOMPARE(summary(awaitRead(client)), general);
        QCOMPARE(lines(), (QStringList{
                              u"Message:\n{\"Command\": \"vitale_read\"}"_s,
                              u"Received XPC_ERROR_CONNECTION_INTERRUPTED"_s,
                              u"Received response in _sendSimpleMessage:withCompletionHandler: event handler: ADDRESS\n"
                              "no dictionary"_s,
                          }));
    }

    void anUnsolicitedMessageIsLogged()
    {
        const auto [fake, client] = Served(FakeScript().doing("any", "unsolicited"));
        QCOMPARE(summary(awaitRead(client)), success);
        QCOMPARE(lines().value(1),
                 u"Received response in _initConnection event handler: ADDRESS\n{\"Event\": \"something\"}"_s);
    }

    void theLogOfManyUnsolicitedMessagesIsBounded()
    {
        const auto [fake, client] = Served(FakeScript().doing("vitale_read", "burst"));
        QCOMPARE(summary(awaitRead(client)), success);
        QCOMPARE(summary(awaitBind(client)), success);
        QCOMPARE(lines().filter(u"_initConnection"_s).size(), 200);
        QVERIFY(lines().contains(u"Card service: 99800 more lines left out"_s));
    }

    void aReplyThatIsNotADictionaryIsLogged()
    {
        const auto [fake, client] = Served(FakeScript().doing("any", "null"));
        QCOMPARE(summary(awaitRead(client)), general);
        QCOMPARE(lines().value(1), u"Received response in _sendSimpleMessage:withCompletionHandler: event handler: "
                                   "ADDRESS\nno dictionary"_s);
    }

    void aConnectionThatCannotBeMadeIsNotLogged()
    {
        const FakeService fake;
        const auto client = makeClient({fake.filePath(u"absent"_s), {}});
        QCOMPARE(summary(awaitBind(client)), failureWithoutError);
        QCOMPARE(summary(awaitRead(client)), general);
        QCOMPARE(m_log.lines(), QStringList());
    }

    void noDataOfACardAreLogged()
    {
        const auto [fake, client] = Served();
        QCOMPARE(summary(awaitRead(client)), success);
        const ClientPointer failing =
            std::make_shared<LVitAccess>(fake.command(FakeScript().text("vitale_read", "Vitale", "SPECIMEN")));
        QVERIFY(awaitRead(failing));
        const FakeService inBytes;
        const ClientPointer bytes =
            std::make_shared<LVitAccess>(inBytes.command(FakeScript().bytes("vitale_read", "Vitale", "SPECI")));
        QVERIFY(awaitRead(bytes));
        const QString logged = m_log.lines().join(u'\n');
        QVERIFY2(!logged.contains(u"SPECI"), qPrintable(logged));
        QVERIFY2(!logged.contains(u"CPAM"), qPrintable(logged));
        QVERIFY2(logged.contains(uR"("FundCodeLibelle": text of 13 characters)"), qPrintable(logged));
        QVERIFY2(logged.contains(uR"("Vitale": text of 8 characters)"), qPrintable(logged));
        QVERIFY2(logged.contains(uR"("Vitale": 5 bytes)"), qPrintable(logged));
    }

private:
    /// The lines, with one placeholder for all addresses of messages.
    [[nodiscard]] QStringList lines() const
    {
        QStringList found = m_log.lines(MXLog::Debug);
        found.replaceInStrings(QRegularExpression(u"0x[0-9a-f]+"_s), u"ADDRESS"_s);
        return found;
    }

    LogCapture m_log;
};

template class RunnableTests<tst_LVitAccessLog, QCoreApplication>;

#include "tst_lvitaccesslog.moc"
