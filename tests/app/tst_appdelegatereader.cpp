#include "app/models/RecentAttestations.h"
#include "app/windows/ProgressSheet.h"
#include "tests/app/Office.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

using namespace Qt::StringLiterals;

namespace {

const QString summaryOfNone = u"Aucune"_s;
const QString absentCard = u"La carte vitale n'est pas dans le lecteur."_s;
const FakeScript insertion = FakeScript().telling("set_readers", {u"empty"_s, u"card"_s});
const FakeScript readAndRemoval = FakeScript()
                                      .telling("init", {u"card"_s})
                                      .telling("vitale_read", {u"empty"_s})
                                      .telling("informations", {u"empty"_s});

/// An office that starts after a setting was switched on.
std::unique_ptr<Office> officeWith(const FakeScript& script, const Setting<bool>& setting, bool isWindowInFront = true)
{
    auto office = std::make_unique<Office>(script);
    MVSettings::setPreferencesWithBooleanValue(office->settings, setting, true);
    office->start();
    if (isWindowInFront)
        office->window->activateWindow();
    else
        office->window->hide();
    return office;
}

bool hasCard(const Office& office)
{
    return office.summary() != summaryOfNone;
}

} // namespace

/// The controller when cards are inserted and removed.
class tst_AppDelegateReader : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void anInsertedCardIsReadIfTheSettingIsOn()
    {
        const auto office = officeWith(insertion, Settings::readOnInsertion);
        QTRY_VERIFY(hasCard(*office));
        QCOMPARE(office->reads(), 1);
        office->delegate->applicationWillTerminate();
    }

    void withoutTheSettingAnInsertedCardIsNotRead_data()
    {
        QTest::addColumn<FakeScript>("script");
        QTest::addColumn<bool>("isWanted");
        QTest::newRow("not wanted") << insertion << false;
        QTest::newRow("in the reader at the bind") << FakeScript().telling("init", {u"card"_s}) << true;
    }

    void withoutTheSettingAnInsertedCardIsNotRead()
    {
        QFETCH(const FakeScript, script);
        QFETCH(const bool, isWanted);
        const auto office = officeWith(script, isWanted ? Settings::readOnInsertion : Settings::forgetOnRemoval);
        QTRY_COMPARE(office->panelLine(), u"Carte présente – appuyez sur Lire."_s);
        QTRY_VERIFY(office->delegate->isEnabled());
        QVERIFY(!office->delegate->isReading());
        QCOMPARE(office->reads(), 0);
        office->delegate->applicationWillTerminate();
    }

    void anAutomaticReadDoesNotShowAHiddenWindow()
    {
        const auto office = officeWith(insertion, Settings::readOnInsertion, false);
        QTRY_VERIFY(hasCard(*office));
        QVERIFY(!office->window->isVisible());
        QVERIFY(!office->window->sheet() || !office->window->sheet()->isVisible());
        office->delegate->applicationWillTerminate();
    }

    void aFailedAutomaticReadIsShownInThePanelWithoutAnAlert()
    {
        const auto office =
            officeWith(FakeScript(insertion).failing("vitale_read", 11), Settings::readOnInsertion, false);
        QTRY_COMPARE(office->notice(), absentCard);
        QVERIFY(!office->window->isVisible());
        QVERIFY(!Office::alert());
        // A read that the user requests shows its failure in an alert.
        office->delegate->readVitale(nullptr);
        QTRY_COMPARE(Office::alertText(), absentCard);
        QVERIFY(office->window->isVisible());
        Office::pressOk();
        office->delegate->applicationWillTerminate();
    }

    void aRemovedCardIsForgottenIfTheSettingIsOn()
    {
        const auto office = officeWith(readAndRemoval, Settings::forgetOnRemoval);
        QTRY_VERIFY(office->delegate->isEnabled());
        office->delegate->viewAttestation();
        QTRY_COMPARE(office->reads(), 1);
        QTRY_COMPARE(office->panelLine(), u"Insérez une carte, puis appuyez sur Lire."_s);
        QCOMPARE(office->summary(), summaryOfNone);
        QVERIFY(!office->viewer()->isVisible());
        // The next request reads again.
        office->delegate->viewAttestation();
        QTRY_COMPARE(office->reads(), 2);
        office->delegate->applicationWillTerminate();
    }

    void aCardOfAFileOrWithoutTheSettingIsKept_data()
    {
        QTest::addColumn<bool>("isWanted");
        QTest::newRow("not wanted") << false;
        QTest::newRow("from a file") << true;
    }

    void aCardOfAFileOrWithoutTheSettingIsKept()
    {
        QFETCH(const bool, isWanted);
        const auto office = officeWith(readAndRemoval, isWanted ? Settings::forgetOnRemoval : Settings::forgetRecents);
        QTRY_VERIFY(office->delegate->isEnabled());
        if (isWanted)
            office->delegate->loadXMLFile(Office::specimen());
        else
            office->delegate->readVitale(nullptr);
        QTRY_VERIFY(hasCard(*office));
        // The reader's state arrives with the answer to any request.
        bool isAnswered = false;
        office->client->getInformationsWithCompletionHandler([&isAnswered, receiver = office->window.get()](auto&&...) {
            QMetaObject::invokeMethod(receiver, [&isAnswered] { isAnswered = true; });
        });
        QTRY_VERIFY(isAnswered);
        QTest::qWait(0);
        QVERIFY(hasCard(*office));
        office->delegate->applicationWillTerminate();
    }

    void recentAttestationsAreClearedAtTheStartIfTheSettingIsOn()
    {
        Office office;
        RecentAttestations recents(office.settings);
        QVERIFY(recents.add(u"/folder/1.pdf"_s));
        MVSettings::setPreferencesWithBooleanValue(office.settings, Settings::forgetRecents, true);
        office.start();
        QCOMPARE(recents.paths(), QStringList());
        office.delegate->applicationWillTerminate();
    }
};

template class RunnableTests<tst_AppDelegateReader, QApplication>;
#include "tst_appdelegatereader.moc"
