#include "app/cards/SaveFailure.h"

#include "card/PelmoraError.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView saveErrorDomain{"Enregistrement"};

// These numbers are documented.
constexpr int folderUnusable = 1;

int codeOf(WriteObstacle obstacle)
{
    switch (obstacle) {
    case WriteObstacle::NameTaken:
        return 2;
    case WriteObstacle::NoFolder:
        return 3;
    case WriteObstacle::DiskFull:
        return 4;
    case WriteObstacle::QuotaReached:
        return 5;
    case WriteObstacle::NotAllowed:
        return 6;
    case WriteObstacle::ReadOnly:
        return 7;
    case WriteObstacle::NameRefused:
        return 8;
    case WriteObstacle::Other:
        break;
    }
    return 9;
}

// What to do, before saving anew.
QString remedyFor(WriteObstacle obstacle)
{
    switch (obstacle) {
    case WriteObstacle::NameTaken:
        return u"Renommez ou déplacez le dossier qui porte ce nom"_s;
    case WriteObstacle::NoFolder:
        return u"Rebranchez le disque, ou choisissez un autre dossier dans les préférences"_s;
    case WriteObstacle::DiskFull:
        return u"Libérez de la place, ou choisissez un dossier sur un autre disque dans les préférences"_s;
    case WriteObstacle::QuotaReached:
        return u"Effacez des fichiers devenus inutiles, ou choisissez un dossier sur un autre disque dans les préférences"_s;
    case WriteObstacle::NotAllowed:
        return u"Choisissez dans les préférences un dossier qui est à vous, ou demandez le droit d’écrire dans celui-ci"_s;
    case WriteObstacle::ReadOnly:
    case WriteObstacle::NameRefused:
        return u"Choisissez un dossier sur un autre disque dans les préférences"_s;
    case WriteObstacle::Other:
        break;
    }
    return u"Vérifiez le disque, ou choisissez un autre dossier dans les préférences"_s;
}

} // namespace

Error SaveFailure::error(const QString& prefix) const
{
    switch (kind) {
    case Kind::FolderUnusable:
        return {saveErrorDomain, folderUnusable, u"le dossier « %1 » ne peut pas être utilisé."_s.arg(path)};
    case Kind::NoDocument:
        return {PelmoraError::domain, PelmoraError::internalError().code(), cause};
    case Kind::WriteFailed:
        break;
    }
    return {saveErrorDomain, codeOf(write.obstacle),
            u"%1l’attestation n’a pas été enregistrée dans « %2 » : %3."_s.arg(prefix, path.section(u'/', 0, -2),
                                                                               write.reason)};
}

QString SaveFailure::panelText() const
{
    switch (kind) {
    case Kind::FolderUnusable:
        return u"Non enregistrée\u00A0: le dossier est inutilisable. Changez-le dans les préférences."_s;
    case Kind::NoDocument:
        return u"Non enregistrée\u00A0: "_s + cause;
    case Kind::WriteFailed:
        break;
    }
    return u"Non enregistrée\u00A0: %1 («\u202F%2\u202F»)."_s.arg(write.reason, QFileInfo(path).fileName());
}

QString SaveFailure::alertText() const
{
    return u"Malgré le message précédent, rien n’a été écrit\u00A0: «\u202F%1\u202F» n’est pas enregistré, car %2.\n\n"
           "%3, puis enregistrez de nouveau."_s.arg(QFileInfo(path).fileName(), write.reason,
                                                    remedyFor(write.obstacle));
}
