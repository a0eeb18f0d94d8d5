#include "card/client/LVitAccess.h"
#include "prefs/LVitAccessPrefs.h"
#include "prefs/MVAttestationPrefs.h"
#include "prefs/MVConfigPrefs.h"
#include "prefs/MVPreferencesController.h"
#include "prefs/MVUpdatePrefs.h"
#include "prefs/PaneContentView.h"
#include "prefs/PaneToolbar.h"
#include "prefs/StatusItemControl.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TextSize.h"
#include "tests/prefs/PaneTest.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QToolButton>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

class NoStatusItem final : public StatusItemControl
{
public:
    void showStatusItem() override {}
    void hideStatusItem() override {}
};

struct ExpectedPane
{
    const char* view; // of the layout file
    QStringView identifier;
    QStringView image;
    QStringView name;
    const char* preparationLine; // of the log; null if there is none
    const char* appearanceLine;
};

// The panes in the order of their buttons.
constexpr std::array expectedPanes{
    ExpectedPane{"ConfigView", u"com.morvel.prefspane.config", u"Config", u"Configuration", nullptr, "paneWillAppear"},
    ExpectedPane{"AttestationConfigView", u"com.morvel.prefspane.attestation", u"Attestation", u"Attestations",
                 "'MVAttestationPrefs' initialization", "'MVAttestationPrefs' paneWillAppear"},
    ExpectedPane{"LVitAccessView", u"com.morvel.prefspane.lvitaccess", u"Services", u"Lecture Vitale",
                 "'LVitAccessPrefs' initialization", "'LVitAccessPrefs' paneWillAppear"},
    ExpectedPane{"UpdatePrefsView", u"com.morvel.prefspane.update", u"Update", u"Mise à jour",
                 "'MVUpdatePrefs' initialization", "'MVUpdatePrefs' paneWillAppear"},
};

// Places where texts break the rules of French typography.
QStringList badTypography(const QString& text)
{
    static const std::array<std::pair<QRegularExpression, QString>, 4> faults{{
        {QRegularExpression(u"'"_s), u"straight apostrophe"_s},
        {QRegularExpression(u"[^\u00a0\u202f][:;!?»]|«[^\u00a0\u202f]"_s), u"space that breaks"_s},
        {QRegularExpression(u"\\.\\.\\."_s), u"three dots"_s},
        {QRegularExpression(u"\""_s), u"straight quotation mark"_s},
    }};
    QStringList found;
    for (const auto& [fault, name] : faults) {
        if (text.contains(fault))
            found.append(name + u": "_s + text);
    }
    return found;
}

} // namespace

/// Properties of all panes.
class tst_Panes final : public PaneTest
{
    Q_OBJECT

private:
    NoStatusItem m_statusItem;
    QPalette m_palette;
    std::vector<std::shared_ptr<PaneViewController>> m_panes;
    std::unique_ptr<MVPreferencesController> m_controller;

    /// The window, open on its first pane.
    bool open()
    {
        m_controller = std::make_unique<MVPreferencesController>();
        for (const auto& pane : m_panes)
            m_controller->resigterPreferencesPane(pane);
        m_controller->show();
        return QTest::qWaitForWindowActive(m_controller->window());
    }

    /// Shows each pane without a fade, with all its optional controls.
    template <typename Function>
    void forEachShown(Function function)
    {
        for (const auto& pane : m_panes) {
            m_controller->showPane(nullptr);
            m_controller->showPane(pane.get());
            for (const char* hidden : {"debugModeButton", "debugModeLabel", "debugModeHint"}) {
                if (auto* widget = control<QWidget>(*pane, hidden))
                    widget->show();
            }
            if (auto* lastCheck = control<QLabel>(*pane, "lastCheckTextField"))
                lastCheck->setText(u"Dernière recherche le 05/03/2024 à 09:07"_s);
            if (auto* box = control<QGroupBox>(*pane, "informationsBox"))
                box->setTitle(u"Informations sur la librarie embarqué"_s);
            QCoreApplication::processEvents();
            function(*pane);
        }
    }

private Q_SLOTS:
    void init()
    {
        begin();
        m_palette = QApplication::palette();
        const auto client = std::make_shared<LVitAccess>(ServiceCommand{m_folder->filePath(u"absent"_s), {}});
        m_panes = {std::make_shared<MVConfigPrefs>(*m_settings, m_statusItem, m_bundle),
                   std::make_shared<MVAttestationPrefs>(*m_settings, m_bundle),
                   std::make_shared<LVitAccessPrefs>(*m_settings, client, m_bundle),
                   std::make_shared<MVUpdatePrefs>(m_bundle)};
    }
    void cleanup()
    {
        m_controller.reset();
        m_panes.clear();
        QApplication::setPalette(m_palette);
        end();
    }

    void everyPaneHasItsPropertiesAndOutlets()
    {
        for (std::size_t index = 0; index < expectedPanes.size(); ++index) {
            const ExpectedPane& expected = expectedPanes.at(index);
            PaneViewController& pane = *m_panes.at(index);
            QCOMPARE(pane.paneIdentifier(), expected.identifier.toString());
            QCOMPARE(pane.paneName(), expected.name.toString());
            QVERIFY(!pane.isViewLoaded());
            QCOMPARE(pane.paneView(), pane.paneView());
            QCOMPARE(pane.paneView()->objectName(), QLatin1StringView(expected.view));
        }
    }

    void everyIconIsTheImageOfItsName()
    {
        const QTemporaryDir resources;
        for (const ExpectedPane& expected : expectedPanes) {
            const QString file = u"/%1.svg"_s.arg(expected.image);
            QVERIFY2(QFile::copy(QStringLiteral(PELMORA_STAGE_SHARE) + file, resources.path() + file),
                     qPrintable(file));
        }
        // Each icon is found only with its image file.
        const Bundle images(resources.path());
        const auto icons = [&](const Bundle& bundle) {
            const auto client = std::make_shared<LVitAccess>(ServiceCommand{m_folder->filePath(u"absent"_s), {}});
            return std::array{MVConfigPrefs(*m_settings, m_statusItem, bundle).paneIcon(),
                              MVAttestationPrefs(*m_settings, bundle).paneIcon(),
                              LVitAccessPrefs(*m_settings, client, bundle).paneIcon(),
                              MVUpdatePrefs(bundle).paneIcon()};
        };
        for (const QIcon& icon : icons(images))
            QVERIFY(!icon.pixmap(32).toImage().isNull());
        for (std::size_t index = 0; index < expectedPanes.size(); ++index) {
            QVERIFY(QFile::remove(resources.path() + u"/%1.svg"_s.arg(expectedPanes.at(index).image)));
            const auto left = icons(Bundle(resources.path()));
            for (std::size_t other = 0; other < left.size(); ++other)
                QCOMPARE(left.at(other).isNull(), other <= index);
        }
    }

    void everyMessageToAPaneIsLogged()
    {
        for (std::size_t index = 0; index < expectedPanes.size(); ++index) {
            const ExpectedPane& expected = expectedPanes.at(index);
            m_log.clear();
            m_panes.at(index)->initialization();
            QCOMPARE(m_log.lines(), expected.preparationLine ? QStringList{QLatin1StringView(expected.preparationLine)}
                                                             : QStringList());
            QVERIFY(m_panes.at(index)->isViewLoaded());
            m_log.clear();
            m_panes.at(index)->paneWillAppear();
            QVERIFY(m_log.lines(MXLog::Debug).contains(QLatin1StringView(expected.appearanceLine)));
        }
    }

    void theToolbarShowsThePanesInOrder()
    {
        QVERIFY(open());
        QStringList identifiers;
        for (const ExpectedPane& expected : expectedPanes)
            identifiers.append(expected.identifier.toString());
        QCOMPARE(m_controller->toolbar().itemIdentifiers(), identifiers);
        QCOMPARE(m_controller->currentPane(), m_panes.front().get());
    }

    void noTextIsCut_data()
    {
        QTest::addColumn<double>("textSize");
        QTest::newRow("plain") << 1.0;
        QTest::newRow("150 %") << 1.5;
        QTest::newRow("175 %") << 1.75;
        QTest::newRow("200 %") << 2.0;
    }
    void noTextIsCut()
    {
        QFETCH(const double, textSize);
        const ScaledText text(textSize);
        QVERIFY(open());
        QStringList problems = cutTexts(m_controller->toolbar());
        forEachShown([&](PaneViewController& pane) {
            problems += cutTexts(pane.view());
            const QWidget* contents = pane.view().widget();
            if (contents->width() > pane.view().viewport()->width())
                problems.append(pane.paneName() + u" is too wide"_s);
            if (contents->height() > pane.view().viewport()->height())
                problems.append(pane.paneName() + u" scrolls"_s);
        });
        QCOMPARE(problems.join(u"; "_s), QString());
        if (textSize <= 1)
            QCOMPARE(m_controller->contentView()->size(), QSize(500, 280));
    }

    void onlyTextsThatTheScreenHasNoRoomForAreScrolled()
    {
        const ScaledText text(4);
        QVERIFY(open());
        const QSize screen = QGuiApplication::primaryScreen()->availableSize();
        const QSize content = m_controller->contentView()->size();
        QVERIFY(content.width() <= screen.width());
        QVERIFY(content.height() + m_controller->toolbar().height() <= screen.height());
    }

    void atFourTimesTheTextSizeTheKeyboardReachesAll()
    {
        const ScaledText text(4);
        QVERIFY(open());
        QStringList problems;
        forEachShown([&](PaneViewController& pane) {
            const QScrollBar& bar = *pane.view().verticalScrollBar();
            if ((pane.view().focusPolicy() == Qt::TabFocus) != (bar.maximum() > 0))
                problems.append(pane.paneName());
        });
        QCOMPARE(problems.join(u"; "_s), QString());
    }

    void allPanesAreAlignedToTheSameGrid()
    {
        QVERIFY(open());
        QList<int> edges;
        forEachShown([&](PaneViewController& pane) {
            const auto* grid = pane.view().findChild<QGridLayout*>(u"grid"_s);
            edges.append(grid->itemAtPosition(0, 1)->geometry().left());
        });
        QCOMPARE(edges, QList<int>(4, edges.constFirst()));
    }

    void everyControlHasANameAndTheKeyboardReachesIt()
    {
        QVERIFY(open());
        QStringList problems;
        forEachShown([&](PaneViewController& pane) {
            int controls = 0;
            for (const QWidget* widget : pane.view().findChildren<QWidget*>()) {
                const auto* button = qobject_cast<const QAbstractButton*>(widget);
                if (!widget->isVisible() || (!button && !qobject_cast<const QComboBox*>(widget)))
                    continue;
                ++controls;
                if (widget->accessibleName().isEmpty() && (!button || button->text().isEmpty()))
                    problems.append(widget->objectName() + u" has no name"_s);
                if (!(widget->focusPolicy() & Qt::TabFocus))
                    problems.append(widget->objectName() + u" cannot be reached with Tab"_s);
            }
            if (controls == 0)
                problems.append(pane.paneName() + u" has no controls"_s);
        });
        QCOMPARE(problems.join(u"; "_s), QString());
    }

    void textsFollowFrenchTypography()
    {
        QVERIFY(open());
        QStringList problems;
        forEachShown([&](PaneViewController& pane) {
            for (const QWidget* widget : pane.view().findChildren<QWidget*>()) {
                const auto* label = qobject_cast<const QLabel*>(widget);
                // The explanations of the modes are fixed texts. Paths come from the user.
                const QStringList fixed{u"infosTestField"_s, u"folderTextField"_s, u"lastCheckTextField"_s};
                if (label && !fixed.contains(label->objectName()))
                    problems += badTypography(label->text());
                if (const auto* button = qobject_cast<const QAbstractButton*>(widget))
                    problems += badTypography(button->text());
                if (const auto* box = qobject_cast<const QGroupBox*>(widget))
                    problems += badTypography(box->title());
                problems += badTypography(widget->accessibleName());
                problems += badTypography(widget->accessibleDescription());
            }
        });
        QCOMPARE(problems.join(u"; "_s), QString());
    }

    void everyTextFromOutsideTheProgramIsPlain()
    {
        QVERIFY(open());
        for (const char* name : {"apiVersionTextField", "tablebinVersionTextField", "pdtcdcVersionTextField",
                                 "tablehabVersionTextField", "infosTestField"})
            QCOMPARE(control<QLabel>(*m_panes.at(2), name)->textFormat(), Qt::PlainText);
        QCOMPARE(control<QLabel>(*m_panes.at(1), "folderTextField")->textFormat(), Qt::PlainText);
    }

    void theContentsHaveTheWindowsColours()
    {
        for (const QColor& colour : {QColor(239, 239, 239), QColor(45, 45, 48)}) {
            QApplication::setPalette(QPalette(colour));
            QVERIFY(open());
            forEachShown(
                [&](PaneViewController& pane) { QCOMPARE(pane.view().grab().toImage().pixelColor(499, 279), colour); });
        }
    }
};

template class RunnableTests<tst_Panes, QApplication>;
#include "tst_panes.moc"
