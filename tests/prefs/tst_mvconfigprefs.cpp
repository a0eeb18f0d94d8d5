#include "prefs/MVConfigPrefs.h"
#include "prefs/StatusItemControl.h"
#include "tests/common/RunnableTests.h"
#include "tests/prefs/PaneTest.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QSignalSpy>
#include <QSpinBox>

using namespace Qt::StringLiterals;

/// Records its requests, with the stored value at that time.
class StatusItemRecord final : public StatusItemControl
{
public:
    void showStatusItem() override { note(u"show"_s); }
    void hideStatusItem() override { note(u"hide"_s); }

    QStringList requests;
    const UserDefaults* settings = nullptr;

private:
    void note(const QString& request)
    {
        const bool stored = MVSettings::booleanPreferencesForKey(*settings, Settings::statusItemMenu);
        requests.append(request + (stored ? u", stored on"_s : u", stored off"_s));
    }
};

class tst_MVConfigPrefs final : public PaneTest
{
    Q_OBJECT

private:
    StatusItemRecord m_statusItem;
    std::unique_ptr<MVConfigPrefs> m_pane;

    // Opens the pane while keys are held, like a click on its button.
    void open(Qt::KeyboardModifiers keys)
    {
        QWidget clicked;
        clicked.show();
        if (keys)
            QTest::keyPress(&clicked, Qt::Key_Alt, keys);
        QTest::mouseClick(&clicked, Qt::LeftButton, keys);
        m_pane->paneWillAppear();
        QTest::keyRelease(&clicked, Qt::Key_Alt);
        QTest::mouseClick(&clicked, Qt::LeftButton);
    }

    bool showsTheSwitch() const
    {
        return !m_pane->debugModeButton()->isHidden() && !control<QLabel>(*m_pane, "debugModeLabel")->isHidden() &&
               !control<QLabel>(*m_pane, "debugModeHint")->isHidden();
    }
    bool hidesTheSwitch() const
    {
        return m_pane->debugModeButton()->isHidden() && control<QLabel>(*m_pane, "debugModeLabel")->isHidden() &&
               control<QLabel>(*m_pane, "debugModeHint")->isHidden();
    }

private Q_SLOTS:
    void init()
    {
        begin();
        m_statusItem.requests.clear();
        m_statusItem.settings = m_settings.get();
        m_pane = std::make_unique<MVConfigPrefs>(*m_settings, m_statusItem, m_bundle);
        m_pane->initialization();
    }
    void cleanup()
    {
        m_pane.reset();
        end();
    }

    void theDebugSwitchIsShownWhileAltIsHeld_data()
    {
        QTest::addColumn<Qt::KeyboardModifiers>("keys");
        QTest::addColumn<bool>("isOn");
        QTest::addColumn<bool>("isShown");
        QTest::newRow("nothing, off") << Qt::KeyboardModifiers() << false << false;
        QTest::newRow("Alt, off") << Qt::KeyboardModifiers(Qt::AltModifier) << false << true;
        QTest::newRow("Alt and Shift, off") << (Qt::AltModifier | Qt::ShiftModifier) << false << true;
        QTest::newRow("Ctrl, off") << Qt::KeyboardModifiers(Qt::ControlModifier) << false << false;
        QTest::newRow("nothing, on") << Qt::KeyboardModifiers() << true << true;
        QTest::newRow("Alt, on") << Qt::KeyboardModifiers(Qt::AltModifier) << true << true;
    }
    void theDebugSwitchIsShownWhileAltIsHeld()
    {
        QFETCH(const Qt::KeyboardModifiers, keys);
        QFETCH(const bool, isOn);
        QFETCH(const bool, isShown);
        MVSettings::setPreferencesWithBooleanValue(*m_settings, Settings::debugMode, isOn);
        open(keys);
        QVERIFY(isShown ? showsTheSwitch() : hidesTheSwitch());
    }

    void onceDebugModeIsOnItsSwitchStaysUntilTheNextStart()
    {
        open(Qt::AltModifier);
        QVERIFY(show(*m_pane));
        QTest::mouseClick(m_pane->debugModeButton(), Qt::LeftButton, {}, QPoint(8, 8));
        QVERIFY(MVSettings::booleanPreferencesForKey(*m_settings, Settings::debugMode));
        open({});
        QVERIFY(showsTheSwitch());
        QVERIFY(m_pane->debugModeButton()->isChecked());

        restart();
        m_pane = std::make_unique<MVConfigPrefs>(*m_settings, m_statusItem, m_bundle);
        m_pane->initialization();
        open({});
        QVERIFY(hidesTheSwitch());
        QVERIFY(!m_pane->debugModeButton()->isChecked());
    }

    void switchedOffAndOpenedWithoutAltTheDebugSwitchIsHidden()
    {
        open(Qt::AltModifier);
        m_pane->debugModeButton()->setChecked(true);
        m_pane->debugModeButton()->setChecked(false);
        QVERIFY(showsTheSwitch());
        open({});
        QVERIFY(hidesTheSwitch());
    }

    void theStatusItemFollowsItsCheckBoxAfterTheSettingIsStored()
    {
        QVERIFY(show(*m_pane));
        auto* box = control<QCheckBox>(*m_pane, "statusItemButton");
        QVERIFY(box->isChecked());
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, 8));
        QCOMPARE(m_statusItem.requests, QStringList{u"hide, stored off"_s});
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, 8));
        QCOMPARE(m_statusItem.requests, (QStringList{u"hide, stored off"_s, u"show, stored on"_s}));
    }

    void aSenderThatIsNotAButtonIsIgnored()
    {
        const QLabel label;
        QCheckBox button;
        button.setTristate();
        m_pane->changeStatusItemPrefs(nullptr);
        m_pane->changeStatusItemPrefs(&label);
        QCOMPARE(m_statusItem.requests, QStringList());
        m_pane->changeStatusItemPrefs(&button);
        button.setChecked(true);
        m_pane->changeStatusItemPrefs(&button);
        QCOMPARE(m_statusItem.requests, (QStringList{u"hide, stored on"_s, u"show, stored on"_s}));
        button.setCheckState(Qt::PartiallyChecked);
        m_pane->changeStatusItemPrefs(&button);
        QCOMPARE(m_statusItem.requests.constLast(), u"hide, stored on"_s);
    }

    void theDebugActionDoesNothing()
    {
        m_pane->changeDebugMode(m_pane->debugModeButton());
        QVERIFY(!MVSettings::booleanPreferencesForKey(*m_settings, Settings::debugMode));
        QCOMPARE(m_statusItem.requests, QStringList());
    }

    void showingThePaneDoesNotShowOrHideTheStatusItem()
    {
        QVERIFY(show(*m_pane));
        open({});
        QCOMPARE(m_statusItem.requests, QStringList());
    }

    void eachChangeOfAForgettingOptionIsStoredAndNotified()
    {
        open({});
        QVERIFY(show(*m_pane));
        const QSignalSpy changed(m_pane.get(), &MVConfigPrefs::forgettingChanged);
        for (const auto& [name, setting] : {std::pair{"forgetOnRemovalButton", Settings::forgetOnRemoval},
                                            std::pair{"forgetOnLockButton", Settings::forgetOnLock},
                                            std::pair{"forgetRecentsButton", Settings::forgetRecents}}) {
            QVERIFY(!MVSettings::booleanPreferencesForKey(*m_settings, setting));
            control<QCheckBox>(*m_pane, name)->setChecked(true);
            QVERIFY(MVSettings::booleanPreferencesForKey(*m_settings, setting));
        }
        control<QSpinBox>(*m_pane, "forgetMinutesField")->setValue(10);
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_settings, Settings::forgetAfterMinutes), 10);
        QCOMPARE(changed.size(), 4);
    }
};

template class RunnableTests<tst_MVConfigPrefs, QApplication>;
#include "tst_mvconfigprefs.moc"
