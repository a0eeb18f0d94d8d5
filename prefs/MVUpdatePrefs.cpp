#include "prefs/MVUpdatePrefs.h"

#include "prefs/ui_UpdatePrefsView.h"
#include "update/client/SUUpdater.h"

#include <utility>

using namespace Qt::StringLiterals;

MVUpdatePrefs::MVUpdatePrefs(Bundle bundle)
    : PaneViewController({u"com.morvel.prefspane.update"_s, u"Mise à jour"_s, u"Update"_s}, std::move(bundle))
{
}

MVUpdatePrefs::~MVUpdatePrefs() = default;

SUUpdater* MVUpdatePrefs::updater() const
{
    return m_updater;
}

void MVUpdatePrefs::setUpdater(SUUpdater* updater)
{
    m_updater = updater;
}

void MVUpdatePrefs::initialization()
{
    PaneViewController::initialization();
    updateUI();
}

void MVUpdatePrefs::checkForUpdateNow(const QObject* /*sender*/)
{
    if (m_updater)
        m_updater->checkForUpdates(nullptr);
}

void MVUpdatePrefs::updateUI()
{
    view();
    const bool canCheck = m_updater && m_updater->canCheckForUpdates();
    if (m_ui) {
        m_ui->checkNowButton->setEnabled(canCheck);
        m_ui->checkNowButton->setToolTip(
            canCheck ? QString() : u"Cette version de Pelmora n’a pas d’adresse où chercher ses mises à jour."_s);
    }
    const std::optional<QDateTime> date = m_updater ? m_updater->lastUpdateCheckDate() : std::nullopt;
    lastCheckTextField()->setText(
        date ? u"Dernière recherche le "_s + date->toLocalTime().toString(u"dd/MM/yyyy 'à' HH:mm"_s) : QString());
}

QLabel* MVUpdatePrefs::lastCheckTextField() const
{
    return m_ui ? m_ui->lastCheckTextField : nullptr;
}

void MVUpdatePrefs::loadView(QScrollArea& view)
{
    m_ui = std::make_unique<Ui::UpdatePrefsView>();
    m_ui->setupUi(&view);
}

void MVUpdatePrefs::viewDidLoad()
{
    connect(m_ui->checkNowButton, &QAbstractButton::clicked, this, [this] { checkForUpdateNow(nullptr); });
}
