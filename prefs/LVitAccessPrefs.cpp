#include "prefs/LVitAccessPrefs.h"

#include "card/client/BindOutcome.h"
#include "platform/MainQueue.h"
#include "prefs/ModeMenu.h"
#include "prefs/SettingTie.h"
#include "prefs/settings/MVSettings.h"
#include "prefs/ui_LVitAccessView.h"

#include <QPointer>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// The index of a mode is its tag.
struct Mode
{
    QStringView title;
    QStringView explanation;
};

// The texts are shown as they are.
constexpr std::array<Mode, AccessMode::names.size()> modes{{
    {u"Automatique", u"Si une librairie de lecture vitale est installé sur le système Pelmora l'utilisera en priorité "
                     "sinon la librarie embarqué sera utilisée."},
    {u"Installée sur le système",
     u"Pelmora utilise exclusivement la librarie de lecture vitale installé sur le système."},
    {u"Embarquée avec Pelmora",
     u"Pelmora utilise exclusivement la librarie de lecture vitale embarqué avec l'application."},
}};

struct VersionField
{
    QLabel* Ui::LVitAccessView::* field = nullptr;
    QStringView key;
};

constexpr std::array versionFields{
    VersionField{&Ui::LVitAccessView::apiVersionTextField, InformationKey::apiLecVersion},
    VersionField{&Ui::LVitAccessView::tablebinVersionTextField, InformationKey::tableBinVersion},
    VersionField{&Ui::LVitAccessView::pdtcdcVersionTextField, InformationKey::pdtCdcVersion},
    VersionField{&Ui::LVitAccessView::tablehabVersionTextField, InformationKey::tableHabVersion},
};

constexpr QLatin1StringView unknownVersion{"Non connu"};

constexpr bool isMode(qint64 tag)
{
    return tag >= 0 && tag < static_cast<qint64>(modes.size());
}

} // namespace

LVitAccessPrefs::LVitAccessPrefs(UserDefaults& settings, std::shared_ptr<LVitAccess> client, Bundle bundle)
    : PaneViewController({u"com.morvel.prefspane.lvitaccess"_s, u"Lecture Vitale"_s, u"Services"_s}, std::move(bundle))
    , m_settings(settings)
    , m_client(std::move(client))
{
}

LVitAccessPrefs::~LVitAccessPrefs()
{
    // The view is destroyed after this. The menu must not call the pane when it then loses the focus.
    if (m_ui)
        m_ui->selectModePopUpButton->disconnect(this);
}

void LVitAccessPrefs::initialization()
{
    PaneViewController::initialization();
    updatePopUp();
    updateModeInformations();
}

void LVitAccessPrefs::paneWillAppear()
{
    PaneViewController::paneWillAppear();
    clearLibraryInformations();
    fetchLibraryInformations();
}

void LVitAccessPrefs::changeMode(const QObject* /*sender*/)
{
    qint64 tag = selectedTag();
    updateModeInformations();
    clearLibraryInformations();
    if (!isMode(tag))
        tag = 0;
    MVSettings::setPreferencesWithIntegerValue(m_settings, Settings::lvitMode, tag);
    m_client->setAccessMode(static_cast<unsigned>(tag));

    m_client->bindWithCompletionHandler([pane = QPointer(this)](bool bound, const std::optional<Error>& error) {
        postToMainQueue([pane, outcome = bindOutcome(bound, error)] {
            postBindNotification(outcome);
            if (!pane)
                return;
            pane->fetchLibraryInformations();
            if (outcome)
                pane->updateModeInformations();
        });
    });
}

void LVitAccessPrefs::updatePopUp()
{
    QComboBox* menu = ui().selectModePopUpButton;
    menu->setCurrentIndex(menu->findData(m_client->accessMode()));
}

void LVitAccessPrefs::updateModeInformations()
{
    const qint64 tag = selectedTag();
    setModeInformations(isMode(tag) ? modes.at(static_cast<std::size_t>(tag)).explanation.toString() : u""_s);
}

void LVitAccessPrefs::clearLibraryInformations()
{
    for (const VersionField& version : versionFields)
        (ui().*version.field)->setText(unknownVersion);
    ui().informationsBox->setTitle(u"Informations"_s);
}

void LVitAccessPrefs::updateLibraryInformations()
{
    const std::optional<QVariantMap> informations = m_client->informations();
    if (!informations)
        return;
    for (const VersionField& version : versionFields)
        (ui().*version.field)->setText(informations->value(version.key.toString(), unknownVersion).toString());
    ui().informationsBox->setTitle(u"Informations sur la librarie "_s +
                                   (m_client->embedded() ? u"embarqué"_s : u"installé"_s));
}

void LVitAccessPrefs::fetchLibraryInformations()
{
    // On the main thread: the client returns at once.
    m_client->getInformationsWithCompletionHandler([pane = QPointer(this)](bool fetched, auto&&...) {
        if (!fetched)
            return;
        postToMainQueue([pane] {
            if (pane)
                pane->updateLibraryInformations();
        });
    });
}

void LVitAccessPrefs::setModeInformations(const QString& text)
{
    m_modeInformations = text;
    Q_EMIT modeInformationsChanged(text);
}

ModeMenu* LVitAccessPrefs::selectModePopUpButton() const
{
    return m_ui ? m_ui->selectModePopUpButton : nullptr;
}

QLabel* LVitAccessPrefs::infosTestField() const
{
    return m_ui ? m_ui->infosTestField : nullptr;
}

QLabel* LVitAccessPrefs::apiVersionTextField() const
{
    return m_ui ? m_ui->apiVersionTextField : nullptr;
}

QLabel* LVitAccessPrefs::tablebinVersionTextField() const
{
    return m_ui ? m_ui->tablebinVersionTextField : nullptr;
}

QLabel* LVitAccessPrefs::pdtcdcVersionTextField() const
{
    return m_ui ? m_ui->pdtcdcVersionTextField : nullptr;
}

QLabel* LVitAccessPrefs::tablehabVersionTextField() const
{
    return m_ui ? m_ui->tablehabVersionTextField : nullptr;
}

QGroupBox* LVitAccessPrefs::informationsBox() const
{
    return m_ui ? m_ui->informationsBox : nullptr;
}

qint64 LVitAccessPrefs::selectedTag()
{
    return ui().selectModePopUpButton->currentData().toLongLong();
}

Ui::LVitAccessView& LVitAccessPrefs::ui()
{
    view();
    return *m_ui;
}

void LVitAccessPrefs::loadView(QScrollArea& view)
{
    m_ui = std::make_unique<Ui::LVitAccessView>();
    m_ui->setupUi(&view);
    unsigned tag = 0;
    for (const Mode& mode : modes)
        m_ui->selectModePopUpButton->addItem(mode.title.toString(), tag++);
    connect(this, &LVitAccessPrefs::modeInformationsChanged, m_ui->infosTestField, &QLabel::setText);
    connect(m_ui->selectModePopUpButton, &ModeMenu::browsed, this, &LVitAccessPrefs::updateModeInformations);
    connect(m_ui->selectModePopUpButton, &ModeMenu::chosen, this, [this] { changeMode(m_ui->selectModePopUpButton); });
}

void LVitAccessPrefs::viewDidLoad()
{
    disableIfLocked(*m_ui->selectModePopUpButton, m_settings, Settings::lvitMode.key);
    tieToSetting(*m_ui->readOnInsertionButton, m_settings, Settings::readOnInsertion);
    connect(m_ui->diagnosisButton, &QPushButton::clicked, this,
            [this] { Q_EMIT diagnosisRequested(m_ui->diagnosisButton->window()); });
    updateModeInformations();
    clearLibraryInformations();
}
