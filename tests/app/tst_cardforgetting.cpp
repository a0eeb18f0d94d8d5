#include "app/CardForgetting.h"
#include "app/CardOccupation.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/print/PrintDesk.h"
#include "attestation/text/PageFonts.h"
#include "platform/Bundle.h"
#include "platform/files/FileWorker.h"
#include "prefs/settings/MVSettings.h"
#include "tests/app/models/ReadingDesk.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QSignalSpy>

#include <semaphore>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// The class under test, with all objects that may use the card.
struct Subject
{
    Subject()
        : fonts(PageFonts::load(Bundle(QStringLiteral(PELMORA_STAGE_SHARE))))
        , logos(Bundle(QStringLiteral(PELMORA_STAGE_SHARE)))
        , prints(desk.settings, logos, *fonts, QString())
        , occupation(*desk.workflow, prints)
        , forgetting(desk.settings, occupation)
        , due(&forgetting, &CardForgetting::due)
    {
    }

    /// The active timer with that interval; null if there is none.
    [[nodiscard]] QTimer* timer(std::chrono::milliseconds time) const
    {
        for (QTimer* timer : forgetting.findChildren<QTimer*>()) {
            if (timer->isActive() && timer->intervalAsDuration() == time)
                return timer;
        }
        return nullptr;
    }

    ReadingDesk desk;
    std::expected<PageFonts, Error> fonts;
    SchemeLogos logos;
    PrintDesk prints;
    CardOccupation occupation;
    CardForgetting forgetting;
    QSignalSpy due;
};

/// A file whose writing lasts until the test ends it.
class SlowFile
{
public:
    explicit SlowFile(QObject* asker)
    {
        FileWorker::shared().start(asker, [release = m_release]() -> std::function<void()> {
            release->acquire();
            return [] {};
        });
    }
    void end() { m_release->release(); }

private:
    std::shared_ptr<std::binary_semaphore> m_release = std::make_shared<std::binary_semaphore>(0);
};

} // namespace

class tst_CardForgetting : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aRemovedCardIsForgottenIfTheSettingIsOn_data()
    {
        QTest::addColumn<bool>("isWanted");
        QTest::addColumn<PanelLine::CardOrigin>("origin");
        QTest::addColumn<int>("count");
        QTest::newRow("wanted") << true << PanelLine::CardOrigin::Reader << 1;
        QTest::newRow("not wanted") << false << PanelLine::CardOrigin::Reader << 0;
        QTest::newRow("of a file") << true << PanelLine::CardOrigin::File << 0;
    }

    void aRemovedCardIsForgottenIfTheSettingIsOn()
    {
        QFETCH(const bool, isWanted);
        QFETCH(const PanelLine::CardOrigin, origin);
        QFETCH(const int, count);
        Subject subject;
        MVSettings::setPreferencesWithBooleanValue(subject.desk.settings, Settings::forgetOnRemoval, isWanted);
        subject.forgetting.cardLeft();
        QCOMPARE(subject.due.size(), 0); // no card is shown
        subject.forgetting.cardShown(origin);
        subject.forgetting.cardLeft();
        QCOMPARE(subject.due.size(), count);
        subject.forgetting.cardLeft();
        QCOMPARE(subject.due.size(), count);
    }

    void aCardIsForgottenOnlyAfterItsFileIsWritten()
    {
        Subject subject;
        MVSettings::setPreferencesWithBooleanValue(subject.desk.settings, Settings::forgetOnRemoval, true);
        subject.forgetting.cardShown(PanelLine::CardOrigin::Reader);
        SlowFile file(&subject.forgetting);
        subject.forgetting.cardLeft();
        QTest::qWait(0);
        QCOMPARE(subject.due.size(), 0);
        file.end();
        QTRY_COMPARE(subject.due.size(), 1);
    }

    void aCardReadDuringTheWriteIsKept()
    {
        Subject subject;
        MVSettings::setPreferencesWithBooleanValue(subject.desk.settings, Settings::forgetOnRemoval, true);
        subject.forgetting.cardShown(PanelLine::CardOrigin::Reader);
        SlowFile file(&subject.forgetting);
        subject.forgetting.cardLeft();
        QVERIFY(subject.timer(500ms));
        subject.forgetting.cardShown(PanelLine::CardOrigin::Reader);
        QVERIFY(!subject.timer(500ms));
        file.end();
        QTRY_VERIFY(!FileWorker::shared().isBusy());
        QCOMPARE(subject.due.size(), 0);
    }

    void leavingTheSessionForgetsTheCardOnlyIfTheSettingIsOn()
    {
        Subject subject;
        subject.forgetting.cardShown(PanelLine::CardOrigin::File);
        subject.forgetting.sessionLeft();
        QCOMPARE(subject.due.size(), 0);
        MVSettings::setPreferencesWithBooleanValue(subject.desk.settings, Settings::forgetOnLock, true);
        subject.forgetting.sessionLeft();
        QCOMPARE(subject.due.size(), 1);
    }

    void theDelayStartsWithTheCardAndAgainWithItsChange()
    {
        Subject subject;
        MVSettings::setPreferencesWithIntegerValue(subject.desk.settings, Settings::forgetAfterMinutes, 15);
        subject.forgetting.followSettings();
        QVERIFY(!subject.timer(15min));
        subject.forgetting.cardShown(PanelLine::CardOrigin::File);
        QVERIFY(subject.timer(15min));
        MVSettings::setPreferencesWithIntegerValue(subject.desk.settings, Settings::forgetAfterMinutes, 0);
        subject.forgetting.followSettings();
        QVERIFY(!subject.timer(15min));
        MVSettings::setPreferencesWithIntegerValue(subject.desk.settings, Settings::forgetAfterMinutes, 5);
        subject.forgetting.followSettings();
        QTimer* const timer = subject.timer(5min);
        QVERIFY(timer);
        timer->setInterval(0);
        QTRY_COMPARE(subject.due.size(), 1);
    }

    void theDelayIsBoundedToADay_data()
    {
        QTest::addColumn<qint64>("minutes");
        QTest::addColumn<bool>("isADay");
        QTest::newRow("huge") << std::numeric_limits<qint64>::max() << true;
        QTest::newRow("negative") << qint64{-5} << false;
    }

    void theDelayIsBoundedToADay()
    {
        QFETCH(const qint64, minutes);
        QFETCH(const bool, isADay);
        Subject subject;
        MVSettings::setPreferencesWithIntegerValue(subject.desk.settings, Settings::forgetAfterMinutes, minutes);
        subject.forgetting.cardShown(PanelLine::CardOrigin::Reader);
        QCOMPARE(subject.timer(24h) != nullptr, isADay);
    }
};

template class RunnableTests<tst_CardForgetting, QApplication>;
#include "tst_cardforgetting.moc"
