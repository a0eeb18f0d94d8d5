#include "card/client/CardServiceKeys.h"
#include "platform/NotificationCenter.h"
#include "prefs/LVitAccessPrefs.h"
#include "prefs/ModeMenu.h"
#include "tests/common/RunnableTests.h"
#include "tests/prefs/ExpectedVersions.h"
#include "tests/prefs/PaneTest.h"

#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QSignalSpy>
#include <QWheelEvent>

#include <array>
#include <atomic>
#include <utility>

#include <signal.h>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array<QStringView, 3> expectedExplanations{
    u"Si une librairie de lecture vitale est installé sur le système Pelmora l'utilisera en priorité sinon la librarie "
    u"embarqué sera utilisée.",
    u"Pelmora utilise exclusivement la librarie de lecture vitale installé sur le système.",
    u"Pelmora utilise exclusivement la librarie de lecture vitale embarqué avec l'application.",
};

const QString embeddedTitle = u"Informations sur la librarie embarqué"_s;
const QString installedTitle = u"Informations sur la librarie installé"_s;
const QString clearedTitle = u"Informations"_s;

} // namespace

class tst_LVitAccessPrefs final : public PaneTest
{
    Q_OBJECT

private:
    std::unique_ptr<FakeService> m_service;
    std::shared_ptr<LVitAccess> m_client;
    std::unique_ptr<LVitAccessPrefs> m_pane;
    QStringList m_binds; // the outcomes in the notifications

    /// Deletes the pane and the client. A bind in progress keeps the client, so the services are killed. The bind's
    /// notification is then delivered here and not in the next test.
    void endClient()
    {
        m_pane.reset();
        const std::weak_ptr<LVitAccess> client = std::exchange(m_client, nullptr);
        QVERIFY(QTest::qWaitFor([this, &client] {
            for (const pid_t process : m_service ? m_service->processes() : QList<pid_t>())
                ::kill(process, SIGKILL);
            return client.expired();
        }));
        QCoreApplication::sendPostedEvents();
        m_service.reset();
    }
    void make(const FakeScript& behaviour = reporting())
    {
        endClient();
        m_service = std::make_unique<FakeService>();
        m_client = std::make_shared<LVitAccess>(m_service->command(behaviour));
        m_pane = std::make_unique<LVitAccessPrefs>(*m_settings, m_client, m_bundle);
    }
    void prepare(const FakeScript& behaviour = reporting())
    {
        make(behaviour);
        m_pane->initialization();
    }

    /// Chooses an entry of the menu as the user does.
    void choose(int index)
    {
        QComboBox* menu = m_pane->selectModePopUpButton();
        menu->setCurrentIndex(index);
        Q_EMIT menu->activated(index);
    }

    QStringList fields() const
    {
        QStringList texts;
        for (const ExpectedField& field : expectedFields)
            texts.append((*m_pane.*field.outlet)()->text());
        return texts;
    }
    static QStringList versions()
    {
        QStringList texts;
        for (const ExpectedField& field : expectedFields)
            texts.append(QString::fromLatin1(field.version));
        return texts;
    }
    static QStringList unknown() { return QStringList(expectedFields.size(), u"Non connu"_s); }
    QString title() const { return m_pane->informationsBox()->title(); }
    qsizetype asked(const QString& command) const { return m_service->requested(u"Command"_s).count(command); }

private Q_SLOTS:
    void init()
    {
        begin();
        NotificationCenter::defaultCenter().addObserver(
            this, u"MVBindNotification"_s, [this](const Notification& told) {
                const QVariantMap information = told.userInfo.value_or(QVariantMap());
                const std::optional<Error> error = errorInValue(information.value(u"Error"_s));
                m_binds.append(information.value(u"Status"_s).toString() +
                               (error ? u" %1 %2"_s.arg(error->domain()).arg(error->code()) : QString()));
            });
    }
    void cleanup()
    {
        endClient();
        NotificationCenter::defaultCenter().removeObserver(this);
        m_binds.clear();
        end();
    }

    void beforeItsPreparationThePaneHasNoExplanation()
    {
        make();
        QCOMPARE(m_pane->modeInformations(), u""_s);
        QVERIFY(!m_pane->modeInformations().isNull());
        QVERIFY(!m_pane->isViewLoaded());
    }

    void theMenuHasTheThreeModesInOrder()
    {
        prepare();
        const QComboBox* menu = m_pane->selectModePopUpButton();
        QCOMPARE(menu->count(), 3);
        for (int tag = 0; tag < 3; ++tag) {
            QCOMPARE(menu->itemData(tag).toInt(), tag);
            QVERIFY(!menu->itemText(tag).isEmpty());
        }
    }

    void theMenuShowsTheClientsModeAndNotTheStoredOne()
    {
        for (unsigned mode = 0; mode < 3; ++mode) {
            make();
            MVSettings::setPreferencesWithIntegerValue(*m_settings, Settings::lvitMode, (mode + 1) % 3);
            m_client->setAccessMode(mode);
            m_pane->initialization();
            QCOMPARE(m_pane->selectModePopUpButton()->currentData().toUInt(), mode);
            QCOMPARE(m_pane->modeInformations(), expectedExplanations.at(mode).toString());
            QCOMPARE(m_pane->infosTestField()->text(), expectedExplanations.at(mode).toString());
        }
    }

    void theExplanationFollowsTheMenuAtOnce()
    {
        prepare(FakeScript().doing("any", "silent"));
        const QSignalSpy changes(m_pane.get(), &LVitAccessPrefs::modeInformationsChanged);
        for (const int index : {2, 1, 0}) {
            choose(index);
            QCOMPARE(m_pane->modeInformations(), expectedExplanations.at(static_cast<std::size_t>(index)).toString());
            QCOMPARE(m_pane->infosTestField()->text(), m_pane->modeInformations());
            QCOMPARE(MVSettings::integerPreferencesForKey(*m_settings, Settings::lvitMode), index);
            QCOMPARE(m_client->accessMode(), static_cast<unsigned>(index));
        }
        QCOMPARE(changes.count(), 3);
        QCOMPARE(m_binds, QStringList());
    }

    void anUnknownModeHasNoExplanationAndIsStoredAsAutomatic_data()
    {
        QTest::addColumn<QVariant>("tag");
        QTest::newRow("3") << QVariant(3);
        QTest::newRow("7") << QVariant(7);
        QTest::newRow("huge") << QVariant(std::numeric_limits<qint64>::max());
        QTest::newRow("negative") << QVariant(-1);
    }
    void anUnknownModeHasNoExplanationAndIsStoredAsAutomatic()
    {
        QFETCH(const QVariant, tag);
        prepare(FakeScript().doing("any", "silent"));
        m_client->setAccessMode(2);
        m_pane->selectModePopUpButton()->addItem(u"Autre"_s, tag);
        choose(3);
        QCOMPARE(m_pane->modeInformations(), u""_s);
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_settings, Settings::lvitMode), 0);
        QVERIFY(MVSettings::stringPreferencesForKey(*m_settings, {Settings::lvitMode.key}) == u"0"_s);
        QCOMPARE(m_client->accessMode(), 0U);
    }

    void versionsAreShownAsUnknownUntilTheyArrive()
    {
        prepare();
        QCOMPARE(fields(), unknown());
        QCOMPARE(title(), clearedTitle);
        for (int time = 0; time < 2; ++time) {
            m_pane->paneWillAppear();
            QCOMPARE(fields(), unknown());
            QCOMPARE(title(), clearedTitle);
            QTRY_COMPARE(fields(), versions());
            QCOMPARE(title(), m_client->embedded() ? embeddedTitle : installedTitle);
        }
    }

    void theBoxNamesTheLibraryThatTheServiceReports_data()
    {
        QTest::addColumn<QString>("embedded");
        QTest::addColumn<QString>("title");
        QTest::newRow("embedded") << u"true"_s << embeddedTitle;
        QTest::newRow("installed") << u"false"_s << installedTitle;
    }
    void theBoxNamesTheLibraryThatTheServiceReports()
    {
        QFETCH(const QString, embedded);
        prepare(reporting().text("init", "Embedded", embedded));
        choose(2);
        QCOMPARE(title(), clearedTitle);
        QTRY_COMPARE(fields(), versions());
        QTEST(title(), "title");
        QCOMPARE(m_binds, QStringList{u"success"_s});
        QCOMPARE(m_service->requested(u"Mode"_s).constLast(), u"2"_s);
        QCOMPARE(m_pane->modeInformations(), expectedExplanations.at(2).toString());
    }

    void onlyTheMissingVersionIsShownAsUnknown()
    {
        for (const ExpectedField& missing : expectedFields) {
            prepare(reporting(missing.name));
            m_pane->paneWillAppear();
            QTRY_VERIFY(title() != clearedTitle);
            for (const ExpectedField& field : expectedFields) {
                const QString expected =
                    field.name == missing.name ? u"Non connu"_s : QString::fromLatin1(field.version);
                QCOMPARE((*m_pane.*field.outlet)()->text(), expected);
            }
        }
    }

    void withoutInformationsTheFieldsAreNotChanged()
    {
        prepare(FakeScript().doing("init", "silent"));
        choose(1);
        QTRY_VERIFY(!m_client->informations());
        m_pane->apiVersionTextField()->setText(u"8.0"_s);
        m_pane->informationsBox()->setTitle(installedTitle);
        m_pane->updateLibraryInformations();
        QCOMPARE(fields(), (QStringList{u"8.0"_s} + unknown().sliced(1)));
        QCOMPARE(title(), installedTitle);
    }

    void aServiceThatFailsLeavesTheVersionsUnknown_data()
    {
        QTest::addColumn<FakeScript>("behaviour");
        QTest::newRow("error") << FakeScript().failing("informations");
        QTest::newRow("null") << FakeScript().doing("informations", "null");
        QTest::newRow("garbage") << FakeScript().doing("informations", "garbage");
        QTest::newRow("crash") << FakeScript().doing("informations", "crash");
    }
    void aServiceThatFailsLeavesTheVersionsUnknown()
    {
        QFETCH(const FakeScript, behaviour);
        prepare(behaviour);
        const auto isAnswered = std::make_shared<std::atomic<bool>>(false);
        m_pane->paneWillAppear();
        // This request is answered after the pane's own.
        m_client->getReadersWithCompletionHandler([isAnswered](bool, auto&&...) { *isAnswered = true; });
        QTRY_VERIFY(*isAnswered);
        QCoreApplication::processEvents();
        QCOMPARE(fields(), unknown());
        QCOMPARE(title(), clearedTitle);
    }

    void aFailedBindShowsAnErrorAndKeepsTheMode_data()
    {
        QTest::addColumn<FakeScript>("behaviour");
        QTest::addColumn<QString>("told");
        QTest::newRow("no reader") << FakeScript().readers({}) << u"failure Pelmora -20"_s;
        QTest::newRow("another reader") << FakeScript().readers({u"Autre"_s}) << u"failure Pelmora -21"_s;
        QTest::newRow("crash") << FakeScript().doing("init", "crash") << u"failure Pelmora -10"_s;
    }
    void aFailedBindShowsAnErrorAndKeepsTheMode()
    {
        QFETCH(const FakeScript, behaviour);
        QFETCH(const QString, told);
        prepare(behaviour);
        choose(2);
        QTRY_COMPARE(m_binds, QStringList{told});
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_settings, Settings::lvitMode), 2);
        QCOMPARE(m_client->accessMode(), 2U);
        QCOMPARE(m_pane->selectModePopUpButton()->currentIndex(), 2);
    }

    void aFailureWithoutAnErrorShowsTheGeneralError()
    {
        m_service = std::make_unique<FakeService>();
        m_client = std::make_shared<LVitAccess>(ServiceCommand{m_service->filePath(u"absent"_s), {}});
        m_pane = std::make_unique<LVitAccessPrefs>(*m_settings, m_client, m_bundle);
        m_pane->initialization();
        choose(1);
        QTRY_COMPARE(m_binds, QStringList{u"failure Pelmora -10"_s});
        QCOMPARE(fields(), unknown());
    }

    void severalKeysInTheMenuBindOnce()
    {
        prepare();
        QVERIFY(show(*m_pane));
        QComboBox* menu = m_pane->selectModePopUpButton();
        menu->setFocus();
        for (const std::size_t index : {1U, 2U}) {
            QTest::keyClick(menu, Qt::Key_Down);
            QCOMPARE(m_pane->infosTestField()->text(), expectedExplanations.at(index).toString());
            QCOMPARE(MVSettings::integerPreferencesForKey(*m_settings, Settings::lvitMode), 0);
            QCOMPARE(m_client->accessMode(), 0U);
        }
        QTRY_COMPARE(m_binds, QStringList{u"success"_s});
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_settings, Settings::lvitMode), 2);
        QTRY_COMPARE(fields(), versions());
        QCOMPARE(m_service->requested(u"Mode"_s), QStringList{u"2"_s});
        QCOMPARE(m_binds.size(), 1);
    }

    void aChoiceByTheKeyboardIsAppliedAtOnceWhenTheFocusLeaves()
    {
        prepare();
        QVERIFY(show(*m_pane));
        QComboBox* menu = m_pane->selectModePopUpButton();
        menu->setFocus();
        QTest::keyClick(menu, Qt::Key_Down);
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_settings, Settings::lvitMode), 0);
        menu->clearFocus();
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_settings, Settings::lvitMode), 1);
        QCOMPARE(m_client->accessMode(), 1U);
        QTRY_COMPARE(m_binds, QStringList{u"success"_s});
    }

    void theWheelOverTheMenuChangesNothing()
    {
        prepare();
        QVERIFY(show(*m_pane));
        QComboBox* menu = m_pane->selectModePopUpButton();
        menu->setFocus();
        QWheelEvent event(QPointF(5, 5), menu->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(menu, &event);
        QCOMPARE(menu->currentIndex(), 0);
        QCOMPARE(m_pane->infosTestField()->text(), expectedExplanations.at(0).toString());
    }

    void aPaneDeletedBeforeTheKeyDelayEndsBindsNothing()
    {
        prepare();
        QVERIFY(show(*m_pane));
        m_pane->selectModePopUpButton()->setFocus();
        QTest::keyClick(m_pane->selectModePopUpButton(), Qt::Key_Down);
        m_pane.reset();
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_settings, Settings::lvitMode), 0);
        QVERIFY(m_service->notes().isEmpty());
    }

    void ofTwoQuickChoicesOnlyTheSecondIsNotified()
    {
        prepare(FakeScript().doing("init", "silent").onlyAtStart(1));
        QVERIFY(show(*m_pane));
        QTest::keyClick(m_pane->selectModePopUpButton(), Qt::Key_Down);
        QTRY_COMPARE(m_service->requested(u"Mode"_s), QStringList{u"1"_s});
        QTest::keyClick(m_pane->selectModePopUpButton(), Qt::Key_Down);
        QTRY_COMPARE(m_service->requested(u"Mode"_s), (QStringList{u"1"_s, u"2"_s}));
        QTRY_COMPARE(m_binds, QStringList{u"success"_s});
        QTRY_COMPARE(m_pane->apiVersionTextField()->text(), u"1.2.3"_s);
        QCOMPARE(m_binds, QStringList{u"success"_s});
    }

    void aDeletedPaneIsNotNotified()
    {
        prepare();
        choose(1);
        m_pane.reset();
        QTRY_COMPARE(m_binds, QStringList{u"success"_s});
        QCOMPARE(asked(u"informations"_s), 0);
    }
};

template class RunnableTests<tst_LVitAccessPrefs, QApplication>;
#include "tst_lvitaccessprefs.moc"
