#include "prefs/MVAttestationPrefs.h"

#include "prefs/MVSettings.h"
#include "prefs/SettingTie.h"
#include "prefs/ui_AttestationConfigView.h"
#include "support/MXLog.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QStandardPaths>

#include <utility>

using namespace Qt::StringLiterals;

MVAttestationPrefs::MVAttestationPrefs(Bundle bundle)
    : PaneViewController(u"Attestation"_s, std::move(bundle))
{
}

MVAttestationPrefs::~MVAttestationPrefs() = default;

QString MVAttestationPrefs::paneIdentifier() const
{
    return u"com.morvel.prefspane.attestation"_s;
}

QString MVAttestationPrefs::paneName() const
{
    return u"Attestations"_s;
}

void MVAttestationPrefs::initialization()
{
    MXLog::logDebug("'{}' initialization", metaObject()->className());
    view();
}

void MVAttestationPrefs::paneWillAppear()
{
    MXLog::logDebug("'{}' paneWillAppear", metaObject()->className());
}

void MVAttestationPrefs::changeAttestationsFolder(const QObject* /*sender*/)
{
    if (!isViewLoaded() || view().isWindow())
        return;
    auto* panel = new QFileDialog(view().window(),
                                  u"Sélectionnez le dossier où seront enrehistrés les attestations vitale"_s);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::ShowDirsOnly);
    panel->setSupportedSchemes({u"file"_s});
    // Where documents are, whatever folder is current.
    panel->setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    connect(panel, &QDialog::accepted, this, [this, panel] { storeFolder(*panel); });
    panel->open();
}

void MVAttestationPrefs::storeFolder(const QFileDialog& panel)
{
    const QList<QUrl> chosen = panel.selectedUrls();
    if (chosen.isEmpty() || !chosen.constFirst().isLocalFile())
        return;
    const QFileInfo folder(chosen.constFirst().toLocalFile());
    // A link stands for the folder that it leads to.
    const QString path = folder.isSymLink() ? folder.symLinkTarget() : folder.filePath();
    MVSettings::setPreferencesWithStringValue(SettingsKey::attestationsFolder, path);
    showFolder();
}

void MVAttestationPrefs::showFolder()
{
    m_ui->folderTextField->setWholeText(
        MVSettings::stringPreferencesForKey(SettingsKey::attestationsFolder).value_or(QString()));
}

void MVAttestationPrefs::loadView(QScrollArea& view)
{
    m_ui = std::make_unique<Ui::AttestationConfigView>();
    m_ui->setupUi(&view);
}

void MVAttestationPrefs::viewDidLoad()
{
    tieToSetting(*m_ui->showTitleButton, SettingsKey::showRightLabelPrintOption);
    showFolder();
    connect(m_ui->changeFolderButton, &QAbstractButton::clicked, this,
            [this] { changeAttestationsFolder(m_ui->changeFolderButton); });
}
