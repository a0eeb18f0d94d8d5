#pragma once

#include <QStringView>

#include <array>

/// Why there is no update to install.
enum class UpdateFailure
{
    NoFeed,
    Packaged,
    UnsafeFeedAddress,
    NoPublicKey,
    UnknownVersion,
    NoEncryption,
    Unreachable,
    Certificate,
    ServerError,
    TooManyRedirects,
    InsecureRedirect,
    TooSlow,
    Interrupted,
    WrongType,
    FeedTooLarge,
    NotAFeed,
    EmptyFeed,
    Incomplete,
    Unsigned,
    UnsafePackageAddress,
    PackageTooLarge,
    WrongLength,
    WrongSignature,
    DiskFull,
    CannotWrite,
    CannotReadBack,
};

struct UpdateFailureText
{
    UpdateFailure failure = UpdateFailure::NoFeed;
    QStringView text;
};

/// The text for users of each failure.
inline constexpr std::array updateFailureTexts{
    UpdateFailureText{UpdateFailure::NoFeed, u"Cette version de Pelmora ne sait pas où chercher ses mises à jour. "
                                             u"Demandez à votre fournisseur s’il en existe une plus récente."},
    UpdateFailureText{UpdateFailure::Packaged, u"Pelmora a été installé par le gestionnaire de logiciels de votre "
                                               u"système, qui s’occupe aussi de ses mises à jour."},
    UpdateFailureText{UpdateFailure::UnsafeFeedAddress,
                      u"L’adresse où chercher les mises à jour n’est pas sûre. Signalez-le à votre fournisseur."},
    UpdateFailureText{UpdateFailure::NoPublicKey, u"Cette version de Pelmora n’a pas de quoi vérifier les mises à "
                                                  u"jour. Demandez-en une autre à votre fournisseur."},
    UpdateFailureText{UpdateFailure::UnknownVersion, u"Pelmora ne retrouve pas son propre numéro de version, auquel "
                                                     u"comparer les autres. Il faut le réinstaller."},
    UpdateFailureText{UpdateFailure::NoEncryption, u"Ce système ne sait pas établir de liaison chiffrée, sans "
                                                   u"laquelle aucune mise à jour n’est cherchée."},
    UpdateFailureText{UpdateFailure::Unreachable, u"Le serveur des mises à jour est injoignable. Vérifiez la "
                                                  u"connexion à Internet, puis recommencez."},
    UpdateFailureText{UpdateFailure::Certificate,
                      u"Le serveur des mises à jour n’a pas pu prouver son identité. Vérifiez la date et l’heure de "
                      u"l’ordinateur\u202F; si elles sont justes, prévenez votre fournisseur."},
    UpdateFailureText{UpdateFailure::ServerError,
                      u"Le serveur des mises à jour a répondu par une erreur. Recommencez plus tard."},
    UpdateFailureText{UpdateFailure::TooManyRedirects, u"Le serveur des mises à jour renvoie d’une adresse à l’autre "
                                                       u"sans aboutir. Signalez-le à votre fournisseur."},
    UpdateFailureText{UpdateFailure::InsecureRedirect, u"Le serveur des mises à jour renvoie vers une adresse qui "
                                                       u"n’est pas sûre. Signalez-le à votre fournisseur."},
    UpdateFailureText{UpdateFailure::TooSlow,
                      u"Le serveur des mises à jour est trop lent ou ne répond plus. Recommencez plus tard."},
    UpdateFailureText{UpdateFailure::Interrupted,
                      u"La liaison avec le serveur des mises à jour a été coupée. Recommencez plus tard."},
    UpdateFailureText{UpdateFailure::WrongType,
                      u"L’adresse des mises à jour donne autre chose qu’une liste de versions\u202F: peut-être la page "
                      u"d’accueil d’un réseau, où il faut d’abord s’identifier."},
    UpdateFailureText{UpdateFailure::FeedTooLarge, u"La liste des versions est démesurée\u202F: elle a été refusée. "
                                                   u"Signalez-le à votre fournisseur."},
    UpdateFailureText{UpdateFailure::NotAFeed,
                      u"La liste des versions est illisible. Recommencez plus tard, ou signalez-le à votre "
                      u"fournisseur."},
    UpdateFailureText{UpdateFailure::EmptyFeed,
                      u"La liste des versions est vide. Recommencez plus tard, ou signalez-le à votre fournisseur."},
    UpdateFailureText{UpdateFailure::Incomplete, u"La mise à jour annoncée l’est de façon incomplète\u202F: elle n’est "
                                                 u"pas proposée. Signalez-le à votre fournisseur."},
    UpdateFailureText{UpdateFailure::Unsigned, u"La mise à jour annoncée n’est pas signée\u202F: elle n’est pas "
                                               u"proposée. Signalez-le à votre fournisseur."},
    UpdateFailureText{UpdateFailure::UnsafePackageAddress,
                      u"La mise à jour annoncée se trouve à une adresse qui n’est pas sûre\u202F: elle n’est pas "
                      u"proposée. Signalez-le à votre fournisseur."},
    UpdateFailureText{UpdateFailure::PackageTooLarge, u"La mise à jour annoncée est démesurée\u202F: elle n’est pas "
                                                      u"proposée. Signalez-le à votre fournisseur."},
    UpdateFailureText{UpdateFailure::WrongLength, u"Le fichier téléchargé n’a pas la taille annoncée\u202F: il a été "
                                                  u"effacé. Recommencez plus tard."},
    UpdateFailureText{UpdateFailure::WrongSignature,
                      u"Le fichier téléchargé n’est pas celui que l’éditeur de Pelmora a signé\u202F: il a été effacé. "
                      u"Signalez-le à votre fournisseur."},
    UpdateFailureText{UpdateFailure::DiskFull, u"Il n’y a plus assez de place sur le disque pour la mise à jour. "
                                               u"Libérez-en, puis recommencez."},
    UpdateFailureText{UpdateFailure::CannotWrite,
                      u"La mise à jour ne peut pas être enregistrée dans votre dossier de fichiers temporaires."},
    UpdateFailureText{UpdateFailure::CannotReadBack,
                      u"Le fichier téléchargé n’a pas pu être relu pour vérification\u202F: il a été effacé."},
};

[[nodiscard]] QStringView textOf(UpdateFailure failure);
