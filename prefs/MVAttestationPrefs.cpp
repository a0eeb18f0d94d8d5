#include "prefs/MVAttestationPrefs.h"

#include "prefs/SettingTie.h"
#include "prefs/settings/MVSettings.h"
#include "prefs/ui_AttestationConfigView.h"
#include "support/MXLog.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QStandardPaths>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Where documents are, whatever folder is current; a panel that is sent to a folder that is not there starts in that.
QString startFolder()
{
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

// A link stands for the folder that it leads to, however many others are on the way.
QString withoutLink(const QString& path)
{
    const QFileInfo folder(path);
    const QString target = folder.isSymLink() ? folder.canonicalFilePath() : QString();
    return target.isEmpty() ? path : target;
}

} // namespace

MVAttestationPrefs::MVAttestationPrefs(UserDefaults& settings, Bundle bundle)
    : PaneViewController(u"Attestation"_s, std::move(bundle))
    , m_settings(settings)
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
    m_ui->folderTextField->setWholeText(
        MVSettings::stringPreferencesForKey(m_settings, Settings::attestationsFolder).value_or(QString()));
}

void MVAttestationPrefs::loadView(QScrollArea& view)
{
    m_ui = std::make_unique<Ui::AttestationConfigView>();
    m_ui->setupUi(&view);
}

void MVAttestationPrefs::viewDidLoad()
{
    tieToSetting(*m_ui->showTitleButton, m_settings, Settings::showRightLabelPrintOption);
    showFolder();
    connect(m_ui->changeFolderButton, &QAbstractButton::clicked, this,
            [this] { changeAttestationsFolder(m_ui->changeFolderButton); });
}
