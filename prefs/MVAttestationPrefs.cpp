#include "prefs/MVAttestationPrefs.h"

#include "platform/UserDefaults.h"
#include "prefs/SettingTie.h"
#include "prefs/settings/MVSettings.h"
#include "prefs/ui_AttestationConfigView.h"

#include <QDir>
#include <QFileDialog>
#include <QStandardPaths>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

// The documents folder or, when it does not exist, the home folder.
QString startFolder()
{
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

// Follows the path if it is a link; links in folders above are kept.
QString withoutLink(const QString& path)
{
    const QFileInfo folder(path);
    const QString target = folder.isSymLink() ? folder.canonicalFilePath() : QString();
    return target.isEmpty() ? path : target;
}

} // namespace

MVAttestationPrefs::MVAttestationPrefs(UserDefaults& settings, Bundle bundle)
    : PaneViewController({u"com.morvel.prefspane.attestation"_s, u"Attestations"_s, u"Attestation"_s},
                         std::move(bundle))
    , m_settings(settings)
{
}

MVAttestationPrefs::~MVAttestationPrefs() = default;

void MVAttestationPrefs::changeAttestationsFolder(const QObject* /*sender*/)
{
    if (!isViewLoaded() || view().isWindow() || m_settings.isLocked(Settings::attestationsFolder.key.toString()))
        return;
    auto* panel =
        new QFileDialog(view().window(), u"Sélectionnez le dossier où seront enrehistrés les attestations vitale"_s);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::ShowDirsOnly);
    panel->setSupportedSchemes({u"file"_s});
    panel->setDirectory(startFolder());
    connect(panel, &QDialog::accepted, this, [this, panel] { storeFolder(*panel); });
    panel->open();
}

void MVAttestationPrefs::storeFolder(const QFileDialog& panel)
{
    const QList<QUrl> chosen = panel.selectedUrls();
    if (chosen.isEmpty() || !chosen.constFirst().isLocalFile())
        return;
    MVSettings::setPreferencesWithStringValue(m_settings, Settings::attestationsFolder,
                                              withoutLink(chosen.constFirst().toLocalFile()));
    showFolder();
}

void MVAttestationPrefs::showFolder()
{
    const QString folder =
        MVSettings::stringPreferencesForKey(m_settings, Settings::attestationsFolder).value_or(QString());
    m_ui->folderTextField->setWholeText(folder);
    // Screen readers say it with the button, because the keyboard does not reach the label. A disabled button says why.
    if (m_ui->changeFolderButton->isEnabled())
        m_ui->changeFolderButton->setAccessibleDescription(folder);
}

void MVAttestationPrefs::loadView(QScrollArea& view)
{
    m_ui = std::make_unique<Ui::AttestationConfigView>();
    m_ui->setupUi(&view);
}

void MVAttestationPrefs::viewDidLoad()
{
    tieToSetting(*m_ui->showTitleButton, m_settings, Settings::showRightLabelPrintOption);
    tieToSetting(*m_ui->printWithoutAskingButton, m_settings, Settings::printWithoutAsking);
    disableIfLocked(*m_ui->changeFolderButton, m_settings, Settings::attestationsFolder.key);
    showFolder();
    connect(m_ui->changeFolderButton, &QAbstractButton::clicked, this,
            [this] { changeAttestationsFolder(m_ui->changeFolderButton); });
}
