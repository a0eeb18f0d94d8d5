#include "prefs/MVUpdatePrefs.h"
#include "tests/common/RunnableTests.h"
#include "tests/prefs/PaneTest.h"
#include "tests/update/client/FakeUpdateProgram.h"
#include "update/client/SUUpdater.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>

using namespace Qt::StringLiterals;

class tst_MVUpdatePrefs final : public PaneTest
{
    Q_OBJECT

private:
    std::unique_ptr<MVUpdatePrefs> m_pane;
    std::unique_ptr<FakeUpdateProgram> m_program;
    std::unique_ptr<SUUpdater> m_updater;

    // An updater with that date of its last check.
    void makeUpdater(const QVariant& lastCheck = {}, bool hasFeed = true)
    {
        auto defaults = std::make_unique<UserDefaults>(m_folder->filePath(u"updates.conf"_s));
        if (lastCheck.isValid())
            defaults->setObject(u"SULastCheckTime"_s, lastCheck);
        UpdateConfiguration configuration;
        if (hasFeed)
            configuration.feed = QUrl(u"https://updates.example/feed.xml"_s);
        m_updater = std::make_unique<SUUpdater>(configuration, m_program->path(), std::move(defaults));
    }

private Q_SLOTS:
    void init()
    {
        begin();
        m_pane = std::make_unique<MVUpdatePrefs>(m_bundle);
        m_program = std::make_unique<FakeUpdateProgram>();
        QVERIFY(m_program->isMade());
    }
    void cleanup()
    {
        m_pane.reset();
        m_updater.reset();
        end();
    }

    void theDateOfTheLastCheckIsShown_data()
    {
        QTest::addColumn<QVariant>("lastCheck");
        QTest::addColumn<QString>("text");
        QTest::newRow("a morning in March")
            << QVariant(QDateTime(QDate(2024, 3, 5), QTime(9, 7))) << u"Dernière recherche le 05/03/2024 à 09:07"_s;
        QTest::newRow("the last minute of a year") << QVariant(QDateTime(QDate(2025, 12, 31), QTime(23, 59, 59, 999)))
                                                   << u"Dernière recherche le 31/12/2025 à 23:59"_s;
        QTest::newRow("stored in another time zone") << QVariant(QDateTime(QDate(2024, 3, 5), QTime(9, 7)).toUTC())
                                                     << u"Dernière recherche le 05/03/2024 à 09:07"_s;
        QTest::newRow("never") << QVariant() << QString();
        QTest::newRow("garbage") << QVariant(u"hier"_s) << QString();
    }
    void theDateOfTheLastCheckIsShown()
    {
        QFETCH(const QVariant, lastCheck);
        makeUpdater(lastCheck);
        m_pane->setUpdater(m_updater.get());
        QCOMPARE(m_pane->updater(), m_updater.get());
        m_pane->initialization();
        QTEST(m_pane->lastCheckTextField()->text(), "text");
    }

    void withoutADateItsLineTakesNoRoom()
    {
        makeUpdater();
        m_pane->setUpdater(m_updater.get());
        m_pane->initialization();
        QVERIFY(show(*m_pane));
        const auto* button = control<QPushButton>(*m_pane, "checkNowButton");
        const auto* hint = control<QLabel>(*m_pane, "privacyHint");
        const int gap = hint->mapTo(hint->window(), QPoint()).y() -
                        button->mapTo(button->window(), QPoint(0, button->height())).y();
        QCOMPARE_LT(gap, hint->fontMetrics().height());
    }

    void theDateIsReadOnceAtTheStart()
    {
        makeUpdater();
        m_pane->setUpdater(m_updater.get());
        m_pane->initialization();
        UserDefaults later(m_folder->filePath(u"updates.conf"_s));
        later.setObject(u"SULastCheckTime"_s, QDateTime(QDate(2024, 3, 5), QTime(9, 7)));
        later.synchronize();
        m_pane->paneWillAppear();
        QVERIFY(show(*m_pane));
        QCOMPARE(m_pane->lastCheckTextField()->text(), QString());
    }

    void withoutAnUpdaterNoDateIsShownAndTheButtonIsDisabled()
    {
        m_pane->initialization();
        QCOMPARE(m_pane->lastCheckTextField()->text(), QString());
        QVERIFY(!control<QPushButton>(*m_pane, "checkNowButton")->isEnabled());
    }

    void aDeletedUpdaterIsTreatedAsNone()
    {
        makeUpdater(QDateTime(QDate(2024, 3, 5), QTime(9, 7)));
        m_pane->setUpdater(m_updater.get());
        m_pane->initialization();
        m_updater.reset();
        QCOMPARE(m_pane->updater(), nullptr);
        m_pane->checkForUpdateNow(nullptr);
        m_pane->updateUI();
        QCOMPARE(m_pane->lastCheckTextField()->text(), QString());
    }

    void theButtonStartsACheck()
    {
        makeUpdater();
        m_pane->setUpdater(m_updater.get());
        m_pane->initialization();
        QVERIFY(show(*m_pane));
        QTest::mouseClick(control<QPushButton>(*m_pane, "checkNowButton"), Qt::LeftButton);
        QTRY_COMPARE(m_program->notes(), QStringList{u"start"_s});
    }

    void withoutAFeedTheButtonIsDisabledWithAnExplanation()
    {
        makeUpdater({}, false);
        m_pane->setUpdater(m_updater.get());
        m_pane->initialization();
        const auto* button = control<QPushButton>(*m_pane, "checkNowButton");
        QVERIFY(!button->isEnabled());
        QCOMPARE(button->toolTip(), u"Cette version de Pelmora n’a pas d’adresse où chercher ses mises à jour."_s);
    }
};

template class RunnableTests<tst_MVUpdatePrefs, QApplication>;
#include "tst_mvupdateprefs.moc"
