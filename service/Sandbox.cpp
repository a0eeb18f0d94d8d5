#include "service/Sandbox.h"

#include "card/wire/OutsideFolderNames.h"
#include "service/CallFilter.h"
#include "service/FileRules.h"

#include <QDir>

#include <cerrno>
#include <system_error>

#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace {

QString reasonOf(std::optional<int> failure)
{
    if (!failure)
        return {};
    return QString::fromLocal8Bit(std::system_category().message(*failure).c_str());
}

std::optional<int> refusePrivileges()
{
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0)
        return std::nullopt;
    return errno;
}

template <typename Value>
std::optional<int> failureOf(const std::expected<Value, int>& result)
{
    return result ? std::nullopt : std::optional(result.error());
}

} // namespace

Sandbox::Sandbox(const SandboxPlaces& places)
{
    // First, because the broker must not be restricted.
    if (std::expected<PcscBroker, int> broker = PcscBroker::start(places.pcscSocket))
        m_broker.emplace(*std::move(broker));
    else
        m_brokerFailure = broker.error();
    const std::optional<int> privileges = refusePrivileges();
    const std::expected<FileRules, int> files = holdFiles(places.writableFolders);
    const bool areSignalsHeld = files && files->areSignalsHeld;
    const std::optional<int> calls = failureOf(refuseCalls(!areSignalsHeld));
    const std::optional<int> connections = holdConnections();

    m_protections = {
        {u"Privilèges"_s, u"aucun à gagner"_s, reasonOf(privileges)},
        {u"Réseau"_s, u"aucun"_s, reasonOf(calls)},
        {u"Sockets locales"_s, u"celles de PC/SC et du journal seulement"_s, reasonOf(connections)},
        {u"Fichiers"_s, u"aucune écriture hors des dossiers de la bibliothèque installée"_s,
         reasonOf(failureOf(files))},
        {u"Droits et dates"_s, u"aucun changement de droits, d’attributs ni de dates"_s, reasonOf(calls)},
        {u"Signaux"_s, u"aucun vers d’autres processus"_s, areSignalsHeld ? QString() : reasonOf(calls)},
    };
}

std::optional<int> Sandbox::holdConnections()
{
    if (!m_broker)
        return m_brokerFailure;
    const std::expected<FileDescriptor, int> notifications = handOverConnections();
    if (!notifications)
        return notifications.error();
    // After this: sending the descriptor to the broker needs a call that is refused then.
    if (const std::optional<int> failure = failureOf(m_broker->serve(*notifications)))
        return failure;
    return failureOf(refuseReceivers());
}

std::optional<QString> Sandbox::obstacles() const
{
    QStringList missing;
    for (const Protection& protection : m_protections) {
        if (!protection.holds())
            missing << u"%1 (%2)"_s.arg(protection.name, protection.obstacle);
    }
    if (missing.isEmpty())
        return std::nullopt;
    return u"protections indisponibles : "_s + missing.join(", "_L1);
}

QList<QByteArray> libraryFolders()
{
    const QString home = QDir::homePath() + u'/';
    return {QFile::encodeName(home + OutsideFolder::logs), QFile::encodeName(home + OutsideFolder::sedica)};
}
