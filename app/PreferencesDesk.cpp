#include "app/PreferencesDesk.h"

#include "app/windows/MainWindow.h"
#include "platform/Bundle.h"
#include "platform/UserDefaults.h"
#include "prefs/LVitAccessPrefs.h"
#include "prefs/MVAttestationPrefs.h"
#include "prefs/MVConfigPrefs.h"
#include "prefs/MVPreferences.h"
#include "prefs/MVPreferencesController.h"
#include "prefs/MVUpdatePrefs.h"
#include "update/client/SUUpdater.h"

using namespace Qt::StringLiterals;

PreferencesDesk::PreferencesDesk(const Surroundings& with)
    : m_with(with)
{
}

PreferencesDesk::~PreferencesDesk() = default;

void PreferencesDesk::initPrefs(const std::shared_ptr<LVitAccess>& client)
{
    m_updater = std::make_unique<SUUpdater>(UpdateConfiguration::fromBundle(m_with.bundle),
                                            m_with.bundle.pathForProgram(u"pelmora-update"_s),
                                            std::make_unique<UserDefaults>(UserDefaults::standardFilePath()));
    connect(m_updater.get(), &SUUpdater::failed, this, &PreferencesDesk::failed);

    const auto configPrefs = std::make_shared<MVConfigPrefs>(m_with.settings, m_with.statusItem, m_with.bundle);
    connect(configPrefs.get(), &MVConfigPrefs::forgettingChanged, this, &PreferencesDesk::forgettingChanged);
    MVPreferences::resigterPreferencesPane(configPrefs);
    MVPreferences::resigterPreferencesPane(std::make_shared<MVAttestationPrefs>(m_with.settings, m_with.bundle));
    const auto lvitAccessPrefs = std::make_shared<LVitAccessPrefs>(m_with.settings, client, m_with.bundle);
    connect(lvitAccessPrefs.get(), &LVitAccessPrefs::diagnosisRequested, this, &PreferencesDesk::diagnosisRequested);
    MVPreferences::resigterPreferencesPane(lvitAccessPrefs);
    const auto updatePrefs = std::make_shared<MVUpdatePrefs>(m_with.bundle);
    updatePrefs->setUpdater(m_updater.get());
    MVPreferences::resigterPreferencesPane(updatePrefs);
}

void PreferencesDesk::show() const
{
    MVPreferences::show();
    m_with.window.addShortcutsTo(*MVPreferences::preferences().window());
}

void PreferencesDesk::checkForUpdates()
{
    m_updater->checkForUpdates(&m_with.window);
}

bool PreferencesDesk::canCheckForUpdates() const
{
    return m_updater && m_updater->canCheckForUpdates();
}
