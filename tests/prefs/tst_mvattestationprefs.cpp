#include "prefs/ElidedLabel.h"
#include "prefs/MVAttestationPrefs.h"
#include "tests/common/RunnableTests.h"
#include "tests/prefs/PaneTest.h"

#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QPushButton>

using namespace Qt::StringLiterals;

class tst_MVAttestationPrefs final : public PaneTest
{
    Q_OBJECT

private:
    std::unique_ptr<MVAttestationPrefs> m_pane;

    QFileDialog* panel() const { return m_window->findChild<QFileDialog*>(); }
    QString path(const QString& name) const { return m_folder->filePath(name); }
    bool makeFolder(const QString& name) const { return QDir(m_folder->path()).mkpath(name); }
    QString stored() const
    {
        return MVSettings::stringPreferencesForKey(*m_settings, Settings::attestationsFolder).value_or(u"none"_s);
    }
    QString shown() const { return control<ElidedLabel>(*m_pane, "folderTextField")->text(); }

    QFileDialog* openPanel()
    {
        QTest::mouseClick(control<QPushButton>(*m_pane, "changeFolderButton"), Qt::LeftButton);
        return panel();
    }
    // Chooses a folder, if the panel has it.
    void choose(const QString& folder)
    {
        QFileDialog* opened = openPanel();
        opened->selectFile(folder);
        static_cast<QDialog*>(opened)->accept();
    }

private Q_SLOTS:
    void init()
    {
        begin();
        QVERIFY(makeFolder(u"Documents"_s));
        m_pane = std::make_unique<MVAttestationPrefs>(*m_settings, m_bundle);
        m_pane->initialization();
        QVERIFY(show(*m_pane));
    }
    void cleanup()
    {
        m_pane.reset();
        end();
    }

    void aLockedFolderIsShownAndCannotBeChosen()
    {
        m_settings->setSiteValues({{}, {{u"MVAttestationsFolder"_s, u"/srv/cabinet"_s}}});
        m_pane = std::make_unique<MVAttestationPrefs>(*m_settings, m_bundle);
        m_pane->initialization();
        QVERIFY(show(*m_pane));
        QCOMPARE(shown(), u"/srv/cabinet"_s);
        const auto* button = control<QPushButton>(*m_pane, "changeFolderButton");
        QVERIFY(!button->isEnabled() && !button->accessibleDescription().isEmpty());
        m_pane->changeAttestationsFolder(nullptr);
        QVERIFY(!panel());
        QVERIFY(control<QCheckBox>(*m_pane, "showTitleButton")->isEnabled());
    }

    void theFolderOfTheSettingsIsShown()
    {
        QCOMPARE(shown(), path(u"Documents/Attestations Pelmora"_s));
        MVSettings::setPreferencesWithStringValue(*m_settings, Settings::attestationsFolder, u"/srv/cabinet"_s);
        MVAttestationPrefs other(*m_settings, m_bundle);
        other.initialization();
        QCOMPARE(control<ElidedLabel>(other, "folderTextField")->text(), u"/srv/cabinet"_s);
        QCOMPARE(control<QPushButton>(other, "changeFolderButton")->accessibleDescription(), u"/srv/cabinet"_s);
    }

    void thePanelIsASheetForOneFolder()
    {
        const QFileDialog* opened = openPanel();
        QVERIFY(opened);
        QVERIFY(opened->isVisible());
        QCOMPARE(opened->windowTitle(), u"Sélectionnez le dossier où seront enrehistrés les attestations vitale"_s);
        QCOMPARE(opened->parentWidget(), m_window.get());
        QCOMPARE(opened->windowModality(), Qt::WindowModal);
        QCOMPARE(opened->fileMode(), QFileDialog::Directory);
        QCOMPARE(opened->acceptMode(), QFileDialog::AcceptOpen);
        QVERIFY(opened->testOption(QFileDialog::ShowDirsOnly));
        QVERIFY(!opened->testOption(QFileDialog::ReadOnly));
        QVERIFY(!opened->testOption(QFileDialog::DontResolveSymlinks));
    }

    void thePanelStartsInTheDocumentsFolder()
    {
        MVSettings::setPreferencesWithStringValue(*m_settings, Settings::attestationsFolder, path(u"ailleurs"_s));
        QVERIFY(makeFolder(u"ailleurs"_s));
        QCOMPARE(openPanel()->directory().path(), path(u"Documents"_s));
    }

    void withoutADocumentsFolderThePanelStartsInTheHome()
    {
        QVERIFY(QDir(path(u"Documents"_s)).removeRecursively());
        QCOMPARE(openPanel()->directory().path(), m_folder->path());
    }

    void theChosenFolderIsStoredAsAPlainPath_data()
    {
        QTest::addColumn<QString>("name");
        for (const QString& name : {u"attestations"_s, u"Mes attestations 2026"_s, u"Été & hiver 100 % #1"_s})
            QTest::newRow(qPrintable(name)) << name;
    }
    void theChosenFolderIsStoredAsAPlainPath()
    {
        QFETCH(const QString, name);
        QVERIFY(makeFolder(name));
        choose(path(name));
        QCOMPARE(stored(), path(name));
        QCOMPARE(shown(), path(name));
        QTRY_VERIFY(!panel());
        MVSettings::removePreferences(*m_settings, {});
        QCOMPARE(UserDefaults(settingsFile()).object(Settings::attestationsFolder.key.toString()),
                 QVariant(path(name)));
    }

    void aLinkToAFolderIsReplacedByItsTarget()
    {
        QVERIFY(makeFolder(u"cible"_s));
        QVERIFY(QFile::link(path(u"cible"_s), path(u"lien"_s)));
        QVERIFY(QFile::link(path(u"lien"_s), path(u"lien du lien"_s)));
        choose(path(u"lien du lien"_s));
        QCOMPARE(stored(), path(u"cible"_s));
    }

    void aCancelledPanelKeepsTheFolder()
    {
        const QString before = stored();
        openPanel()->reject();
        QTRY_VERIFY(!panel());
        QCOMPARE(stored(), before);
        QCOMPARE(shown(), before);
    }

    void withoutAWindowNoPanelIsOpened()
    {
        m_pane->view().setParent(nullptr);
        m_pane->changeAttestationsFolder(nullptr);
        MVAttestationPrefs unloaded(*m_settings, m_bundle);
        unloaded.changeAttestationsFolder(nullptr);
        QVERIFY(!unloaded.isViewLoaded());
        for (const QWidget* widget : QApplication::topLevelWidgets())
            QVERIFY(!qobject_cast<const QFileDialog*>(widget));
    }

    void theFolderIsNeitherMadeNorVerified() { QVERIFY(!QFileInfo::exists(shown())); }

    void aCheckBoxIsStoredAtOnce_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<Setting<bool>>("setting");
        QTest::newRow("title") << "showTitleButton"_ba << Settings::showRightLabelPrintOption;
        QTest::newRow("printing") << "printWithoutAskingButton"_ba << Settings::printWithoutAsking;
    }

    void aCheckBoxIsStoredAtOnce()
    {
        QFETCH(const QByteArray, name);
        QFETCH(const Setting<bool>, setting);
        auto* box = control<QCheckBox>(*m_pane, name.constData());
        QVERIFY(!box->isChecked());
        for (const bool on : {true, false}) {
            QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, 8));
            QCOMPARE(MVSettings::booleanPreferencesForKey(*m_settings, setting), on);
        }
        QTest::keyClick(box, Qt::Key_Space);
        QVERIFY(MVSettings::booleanPreferencesForKey(*m_settings, setting));
    }
};

template class RunnableTests<tst_MVAttestationPrefs, QApplication>;
#include "tst_mvattestationprefs.moc"
