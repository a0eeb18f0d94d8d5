#include "prefs/SettingTie.h"
#include "tests/common/RunnableTests.h"
#include "tests/prefs/PaneTest.h"

#include <QApplication>
#include <QCheckBox>
#include <QSignalSpy>
#include <QSpinBox>

using namespace Qt::StringLiterals;

class tst_SettingTie final : public PaneTest
{
    Q_OBJECT

private:
    std::unique_ptr<QCheckBox> m_box;

private Q_SLOTS:
    void init()
    {
        begin();
        m_box = std::make_unique<QCheckBox>();
    }
    void cleanup()
    {
        m_box.reset();
        end();
    }

    void theBoxShowsTheStoredValue()
    {
        tieToSetting(*m_box, *m_settings, Settings::statusItemMenu);
        QVERIFY(m_box->isChecked());
        QCheckBox other;
        tieToSetting(other, *m_settings, Settings::debugMode);
        QVERIFY(!other.isChecked());
    }

    void aSwitchIsStoredBeforeLaterConnectionsAreCalled()
    {
        tieToSetting(*m_box, *m_settings, Settings::statusItemMenu);
        QList<bool> stored;
        connect(m_box.get(), &QCheckBox::toggled, this,
                [&] { stored.append(MVSettings::booleanPreferencesForKey(*m_settings, Settings::statusItemMenu)); });
        m_box->setChecked(false);
        m_box->setChecked(true);
        QCOMPARE(stored, (QList<bool>{false, true}));
    }

    void whenShownTheControlReadsTheSettingAndStoresNothing()
    {
        tieToSetting(*m_box, *m_settings, Settings::showRightLabelPrintOption);
        const QSignalSpy switched(m_box.get(), &QCheckBox::toggled);
        MVSettings::setPreferencesWithBooleanValue(*m_settings, Settings::showRightLabelPrintOption, true);
        m_box->show();
        QVERIFY(m_box->isChecked());
        MVSettings::removePreferences(*m_settings, {Settings::showRightLabelPrintOption.key});
        m_box->hide();
        m_box->show();
        QVERIFY(!m_box->isChecked());
        QCOMPARE(switched.count(), 0);
        MVSettings::removePreferences(*m_settings, {});
        QVERIFY(!UserDefaults(settingsFile()).object(Settings::showRightLabelPrintOption.key.toString()).isValid());
    }

    void aNumberIsShownWithinItsRangeAndStoredWhenItIsChanged()
    {
        QSpinBox field;
        field.setMaximum(240);
        MVSettings::setPreferencesWithIntegerValue(*m_settings, Settings::forgetAfterMinutes, 1000);
        tieToSetting(field, *m_settings, Settings::forgetAfterMinutes);
        QCOMPARE(field.value(), 240);
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_settings, Settings::forgetAfterMinutes), 1000);
        field.setValue(15);
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_settings, Settings::forgetAfterMinutes), 15);
        MVSettings::setPreferencesWithIntegerValue(*m_settings, Settings::forgetAfterMinutes, 5);
        field.show();
        QCOMPARE(field.value(), 5);
    }

    void aLockedSettingIsShownAndCannotBeChanged()
    {
        m_settings->setSiteValues(
            {{}, {{u"MVStatusItemMenu"_s, false}, {u"MVForgetAfterMinutes"_s, 10}, {u"MVDebugMode"_s, true}}});
        QSpinBox field;
        tieToSetting(*m_box, *m_settings, Settings::statusItemMenu);
        tieToSetting(field, *m_settings, Settings::forgetAfterMinutes);
        QVERIFY(!m_box->isChecked());
        QCOMPARE(field.value(), 10);
        const QString reason = u"Ce réglage est fixé par l’administrateur informatique."_s;
        for (const QWidget* control : {static_cast<QWidget*>(m_box.get()), static_cast<QWidget*>(&field)}) {
            QVERIFY(!control->isEnabled());
            QCOMPARE(control->toolTip(), reason);
            QCOMPARE(control->accessibleDescription(), reason);
        }
        m_box->setChecked(true);
        m_box->show();
        QVERIFY(!m_box->isChecked());
        QCheckBox free;
        tieToSetting(free, *m_settings, Settings::forgetOnLock);
        QVERIFY(free.isEnabled() && free.toolTip().isEmpty() && free.accessibleDescription().isEmpty());
    }
};

template class RunnableTests<tst_SettingTie, QApplication>;
#include "tst_settingtie.moc"
