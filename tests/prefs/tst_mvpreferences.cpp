#include "prefs/MVPreferences.h"
#include "prefs/MVPreferencesController.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/prefs/RecordingPane.h"

#include <QApplication>
#include <QMainWindow>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_MVPreferences final : public TestCase
{
    Q_OBJECT

private:
    QStringList m_notes;

private Q_SLOTS:
    void everyOperationReachesTheController()
    {
        MVPreferencesController& controller = MVPreferences::preferences();
        QVERIFY(!controller.window());
        const auto a = std::make_shared<RecordingPane>(u"a"_s, m_notes);
        const auto b = std::make_shared<RecordingPane>(u"b"_s, m_notes);
        MVPreferences::resigterPreferencesPane(a);
        MVPreferences::resigterPreferencesPane(b);
        MVPreferences::unregisterPreferencesPane(a.get());
        QCOMPARE(controller.panes(), (MVPreferencesController::Panes{a, b}));

        MVPreferences::show();
        QVERIFY(controller.window()->isVisible());
        QCOMPARE(controller.currentPane(), a.get());
        MVPreferences::hide();
        QVERIFY(!controller.window()->isVisible());
        MVPreferences::showPaneWithIdentifier(u"b");
        QVERIFY(controller.window()->isVisible());
        QTRY_COMPARE(controller.currentPane(), b.get());
        QTRY_COMPARE(m_notes.constLast(), u"b did appear"_s);
        MVPreferences::hide();
    }
};

template class RunnableTests<tst_MVPreferences, QApplication>;
#include "tst_mvpreferences.moc"
