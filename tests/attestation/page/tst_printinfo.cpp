#include "attestation/page/PrintInfo.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

PrintQueue queueWithPaper(const QByteArray& media, QSizeF paper)
{
    PrintQueue queue;
    queue.name = u"accueil"_s;
    queue.media = media;
    queue.paper = paper;
    queue.defaults = {{"copies", "1"}, {"InputSlot", "Tray2"}, {"sides", "two-sided-long-edge"}};
    return queue;
}

QByteArray settingOf(const PrintJob& job, const QByteArray& name)
{
    QByteArrayList values;
    for (const PrintOption& option : job.options) {
        if (option.name == name)
            values.append(option.value);
    }
    return values.join(" and ");
}

} // namespace

class tst_PrintInfo : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theSheetHasTheSizeOfTheQueuesPaper()
    {
        const PrintInfo info = PrintInfo::defaultsOf(queueWithPaper("iso_a5_148x210mm", {419.53, 595.28}));
        QCOMPARE(info.sheet.size(), QSizeF(420, 595));
        QCOMPARE(settingOf(info.job({}), "media"), "iso_a5_148x210mm"_ba);
    }

    void aPaperWithoutANameIsGivenByItsSize()
    {
        const PrintInfo info = PrintInfo::defaultsOf(queueWithPaper("custom_200x300mm", {567, 850}));
        QCOMPARE(info.sheet.size(), QSizeF(567, 850));
    }

    void aQueueWithoutAPaperSizeGetsA4()
    {
        const PrintInfo info = PrintInfo::defaultsOf(queueWithPaper({}, {}));
        QCOMPARE(info.sheet.size(), QSizeF(595, 842));
        QCOMPARE(settingOf(info.job({}), "media"), "A4"_ba);
    }

    void aLandscapeQueueTurnsTheSheetAndNotTheDocument()
    {
        PrintQueue queue = queueWithPaper("iso_a4_210x297mm", {595.28, 841.89});
        queue.landscape = true;
        const PrintInfo info = PrintInfo::defaultsOf(queue);
        QCOMPARE(info.sheet.size(), QSizeF(842, 595));
        QCOMPARE(settingOf(info.job({}), "orientation-requested"), "3"_ba);
    }

    void theJobHasANeutralTitleAndIsNotScaled()
    {
        const PrintJob job = PrintInfo::defaultsOf(queueWithPaper({}, {})).job("%PDF");
        QCOMPARE(job.queue, u"accueil"_s);
        QCOMPARE(job.title, u"Attestation de droits"_s);
        QCOMPARE(job.pdf, "%PDF"_ba);
        QCOMPARE(settingOf(job, "print-scaling"), "none"_ba);
        QCOMPARE(settingOf(job, "sides"), "one-sided"_ba);
        QCOMPARE(settingOf(job, "InputSlot"), "Tray2"_ba);
    }

    void aRequestedSettingReplacesTheQueuesDefault()
    {
        PrintInfo info = PrintInfo::defaultsOf(queueWithPaper({}, {}));
        info.set("copies", "3");
        QCOMPARE(settingOf(info.job({}), "copies"), "3"_ba);
    }
};

template class RunnableTests<tst_PrintInfo, QCoreApplication>;
#include "tst_printinfo.moc"
