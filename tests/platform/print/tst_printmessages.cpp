#include "platform/print/PrintMessages.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCborArray>
#include <QCborMap>
#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

PrintJob job()
{
    return {
        u"accueil/étage"_s, u"Attestation de droits"_s, QByteArray("%PDF\0\xff", 6), {{"copies", "2"}, {"sides", ""}}};
}

} // namespace

class tst_PrintMessages : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void requestsAreDecodedUnchanged()
    {
        const std::optional<PrintRequest> queues = decodePrintRequest(encodePrintRequest(std::nullopt));
        QVERIFY(queues && !*queues);
        QCOMPARE(decodePrintRequest(encodePrintRequest(job())), PrintRequest(job()));
    }

    void answersAreDecodedUnchanged()
    {
        QList<PrintQueue> queues(2);
        queues[0] = {u"accueil"_s, true, "A5", QSizeF(419.53, 595.28), true, {{"copies", "2"}}};
        queues[1].name = u"étage"_s;
        const std::optional<PrintAnswer> several = decodePrintAnswer(encodePrintAnswer(queues));
        QVERIFY(several && *several);
        QCOMPARE(several->value(), queues);
        const std::optional<PrintAnswer> none = decodePrintAnswer(encodePrintAnswer({}));
        QVERIFY(none && *none);
        QVERIFY(none->value().isEmpty());
    }

    void refusalsAreDecodedUnchanged()
    {
        const Error refusal(u"Impression"_s, 1286, u"L’imprimante « accueil » dort."_s);
        const std::optional<PrintAnswer> answer = decodePrintAnswer(encodePrintAnswer(std::unexpected(refusal)));
        QVERIFY(answer && !*answer);
        QCOMPARE(answer->error(), refusal);
        QCOMPARE(answer->error().localizedDescription(), refusal.localizedDescription());
    }

    void anIncompleteRequestIsRefused()
    {
        const QByteArray whole = encodePrintRequest(job());
        for (qsizetype size = 0; size < whole.size(); ++size)
            QVERIFY2(!decodePrintRequest(whole.first(size)), qPrintable(QString::number(size)));
        QVERIFY(!decodePrintRequest(whole + '\0'));
    }

    void anIncompleteAnswerIsRefused()
    {
        const QByteArray whole = encodePrintAnswer(QList<PrintQueue>(1));
        for (qsizetype size = 0; size < whole.size(); ++size)
            QVERIFY2(!decodePrintAnswer(whole.first(size)), qPrintable(QString::number(size)));
        QVERIFY(!decodePrintAnswer(whole + '\0'));
    }

    void bytesThatAreNotAMessageAreRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("text") << "Bonjour\n"_ba;
        QTest::newRow("number") << QCborValue(1).toCbor();
        QTest::newRow("undefined") << QCborValue().toCbor();
    }

    void bytesThatAreNotAMessageAreRefused()
    {
        QFETCH(const QByteArray, bytes);
        QVERIFY(!decodePrintRequest(bytes));
        QVERIFY(!decodePrintAnswer(bytes));
    }
};

template class RunnableTests<tst_PrintMessages, QCoreApplication>;
#include "tst_printmessages.moc"
