#include "app/StatusItemKeeper.h"

#include "platform/Bundle.h"
#include "prefs/settings/MVSettings.h"

using namespace Qt::StringLiterals;

StatusItemKeeper::StatusItemKeeper(const UserDefaults& settings, const Bundle& bundle)
    : m_settings(settings)
    , m_bundle(bundle)
{
}

void StatusItemKeeper::show()
{
    if (m_item || !MVSettings::booleanPreferencesForKey(m_settings, Settings::statusItemMenu))
        return;
    const QString icon = m_bundle.pathForResource(u"StatusItemIcon"_s, u"svg"_s).value_or(QString());
    m_item = std::make_unique<StatusItem>(QIcon(icon));
    connect(m_item.get(), &StatusItem::executeAction, this, &StatusItemKeeper::executeAction);
    connect(m_item.get(), &StatusItem::showRequested, this, &StatusItemKeeper::showRequested);
    connect(m_item.get(), &StatusItem::hostAvailableChanged, this, [this](bool available) {
        if (!available)
            Q_EMIT lost();
    });
}

void StatusItemKeeper::hide()
{
    m_item.reset();
}
