#include "platform/files/WriteFailure.h"

#include <algorithm>
#include <array>
#include <cerrno>

using namespace Qt::StringLiterals;

namespace {

namespace fs = std::filesystem;

struct KnownError
{
    int number;
    WriteObstacle obstacle;
};

constexpr std::array knownErrors{
    KnownError{ENOSPC, WriteObstacle::DiskFull},    KnownError{EDQUOT, WriteObstacle::QuotaReached},
    KnownError{EACCES, WriteObstacle::NotAllowed},  KnownError{EPERM, WriteObstacle::NotAllowed},
    KnownError{EROFS, WriteObstacle::ReadOnly},     KnownError{ENAMETOOLONG, WriteObstacle::NameRefused},
    KnownError{EILSEQ, WriteObstacle::NameRefused},
};

WriteObstacle obstacleOf(const fs::path& path, const std::error_code& error)
{
    std::error_code ignored;
    if (fs::is_directory(path, ignored))
        return WriteObstacle::NameTaken;
    if (!fs::is_directory(path.has_parent_path() ? path.parent_path() : ".", ignored))
        return WriteObstacle::NoFolder;
    const auto* known = std::ranges::find(knownErrors, error.value(), &KnownError::number);
    return known == knownErrors.end() ? WriteObstacle::Other : known->obstacle;
}

// Other errors are shown in the system's words.
QString reasonOf(WriteObstacle obstacle, const std::error_code& error)
{
    switch (obstacle) {
    case WriteObstacle::NameTaken:
        return u"un dossier porte déjà ce nom"_s;
    case WriteObstacle::NoFolder:
        return u"le dossier n’existe pas"_s;
    case WriteObstacle::DiskFull:
        return u"il n’y a plus de place sur le disque"_s;
    case WriteObstacle::QuotaReached:
        return u"la place qui vous est accordée sur le disque est épuisée"_s;
    case WriteObstacle::NotAllowed:
        return u"l’écriture n’y est pas autorisée"_s;
    case WriteObstacle::ReadOnly:
        return u"le disque est en lecture seule"_s;
    case WriteObstacle::NameRefused:
        return u"ce disque n’accepte pas ce nom de fichier"_s;
    case WriteObstacle::Other:
        break;
    }
    return u"l’écriture a échoué (%1)"_s.arg(QString::fromStdString(error.message()));
}

} // namespace

WriteFailure writeFailureOf(const std::filesystem::path& path, const std::error_code& error)
{
    const WriteObstacle obstacle = obstacleOf(path, error);
    return {obstacle, reasonOf(obstacle, error)};
}
