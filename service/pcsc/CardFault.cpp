#include "service/pcsc/CardFault.h"

#include <algorithm>
#include <array>

#include <winscard.h>

namespace {

struct CodeRow
{
    long code = SCARD_S_SUCCESS;
    CardFault fault = CardFault::Unexpected;
};

// Codes of pcsc-lite and, for the same cases, of other implementations.
constexpr std::array codes{
    CodeRow{SCARD_E_NO_SERVICE, CardFault::ServiceLost},
    CodeRow{SCARD_E_SERVICE_STOPPED, CardFault::ServiceLost},
    CodeRow{SCARD_F_COMM_ERROR, CardFault::ServiceLost},
    CodeRow{SCARD_E_INVALID_HANDLE, CardFault::ServiceLost},
    CodeRow{SCARD_E_SYSTEM_CANCELLED, CardFault::ServiceLost},
    CodeRow{SCARD_P_SHUTDOWN, CardFault::ServiceLost},
    CodeRow{SCARD_W_SECURITY_VIOLATION, CardFault::ServiceForbidden},
    CodeRow{SCARD_E_NO_ACCESS, CardFault::ServiceForbidden},
    CodeRow{SCARD_E_UNKNOWN_READER, CardFault::ReaderUnknown},
    CodeRow{SCARD_E_NO_READERS_AVAILABLE, CardFault::ReaderUnknown},
    CodeRow{SCARD_E_READER_UNAVAILABLE, CardFault::ReaderLost},
    CodeRow{SCARD_E_NOT_READY, CardFault::ReaderLost},
    CodeRow{SCARD_E_SHARING_VIOLATION, CardFault::ReaderBusy},
    CodeRow{SCARD_E_SERVER_TOO_BUSY, CardFault::ReaderBusy},
    CodeRow{SCARD_E_NO_SMARTCARD, CardFault::CardAbsent},
    CodeRow{SCARD_E_PROTO_MISMATCH, CardFault::CardSilent},
    CodeRow{SCARD_W_UNSUPPORTED_CARD, CardFault::CardSilent},
    CodeRow{SCARD_E_CARD_UNSUPPORTED, CardFault::CardSilent},
    CodeRow{SCARD_W_UNPOWERED_CARD, CardFault::CardMute},
    CodeRow{SCARD_W_UNRESPONSIVE_CARD, CardFault::CardMute},
    CodeRow{SCARD_E_TIMEOUT, CardFault::CardMute},
    CodeRow{SCARD_W_REMOVED_CARD, CardFault::CardGone},
    CodeRow{SCARD_E_NOT_TRANSACTED, CardFault::CardGone},
    CodeRow{SCARD_E_COMM_DATA_LOST, CardFault::CardGone},
    CodeRow{SCARD_W_RESET_CARD, CardFault::CardReset},
    CodeRow{SCARD_E_INSUFFICIENT_BUFFER, CardFault::CardNonsense},
};

struct FaultRow
{
    CardFault fault = CardFault::Unexpected;
    ReadResult result = ReadResult::ReaderFault;
    QStringView text;
    QStringView hint = u"";
};

constexpr std::array faults{
    FaultRow{CardFault::ServiceDown, ReadResult::ReaderFault,
             u"le service PC/SC ne répond pas : vérifiez que le paquet « pcscd » est installé et que le service tourne "
             u"(systemctl status pcscd.socket)",
             u"Le service des lecteurs de cartes (PC/SC) ne répond pas, même si le lecteur est bien branché. Faites "
             u"vérifier que « pcscd » est installé et démarré."},
    FaultRow{CardFault::ServiceForbidden, ReadResult::ReaderFault,
             u"le service PC/SC refuse ce compte : vérifiez les règles polkit « org.debian.pcsc-lite »",
             u"Le service des lecteurs de cartes (PC/SC) refuse l’accès à ce compte. Faites vérifier ses droits."},
    FaultRow{
        CardFault::ServiceLost, ReadResult::ReaderFault,
        u"le service PC/SC s’est arrêté pendant l’échange : vérifiez qu’il ne redémarre pas sans cesse "
        u"(journalctl -u pcscd)",
        u"Le service des lecteurs de cartes (PC/SC) s’est arrêté pendant la lecture. Recommencez dans un instant."},
    FaultRow{CardFault::ReaderUnknown, ReadResult::ReaderFault,
             u"le lecteur n’est plus branché, ou son pilote ne le reconnaît pas (pcsc_scan -r)"},
    FaultRow{CardFault::ReaderLost, ReadResult::ReaderFault,
             u"le lecteur ne répond plus : débranchez-le, puis rebranchez-le"},
    FaultRow{CardFault::ReaderBusy, ReadResult::ReaderFault,
             u"un autre programme garde le lecteur pour lui seul : fermez-le",
             u"Un autre programme se sert de la carte ou garde le lecteur pour lui seul. Fermez ce programme, ou "
             u"retirez la carte et remettez-la, puis recommencez."},
    FaultRow{CardFault::CardAbsent, ReadResult::CardAbsent, u"aucune carte dans le lecteur"},
    FaultRow{CardFault::CardSilent, ReadResult::CardAbsent,
             u"ce qui est dans le lecteur n’est pas une carte à laquelle il sait parler"},
    FaultRow{CardFault::CardMute, ReadResult::CardMute, u"la carte est muette : à l’envers, encrassée ou hors d’usage"},
    FaultRow{CardFault::CardGoneUnheard, ReadResult::CardChanged, u"la carte a été retirée avant toute réponse"},
    FaultRow{CardFault::CardGone, ReadResult::CardChanged,
             u"la carte a été retirée pendant la lecture, ou le contact est mauvais"},
    FaultRow{CardFault::CardSwapped, ReadResult::CardChanged, u"une autre carte a pris la place de la première"},
    FaultRow{CardFault::CardReset, ReadResult::CardChanged,
             u"un autre programme a réinitialisé la carte pendant la lecture"},
    FaultRow{CardFault::CardOfOtherKind, ReadResult::ReadError,
             u"la carte n’est d’aucune sorte connue : ce n’est pas une carte Vitale de deuxième génération"},
    FaultRow{CardFault::CardRefusal, ReadResult::ReadError, u"la carte refuse un fichier nécessaire"},
    FaultRow{CardFault::CardFileCut, ReadResult::ReadError,
             u"un fichier de la carte n’a pas la longueur qu’elle annonce"},
    FaultRow{CardFault::CardNonsense, ReadResult::ReadError, u"la carte répond contre toutes les règles"},
    FaultRow{CardFault::CardEndless, ReadResult::ReadError,
             u"la carte demande plus de travail qu’aucune carte Vitale : lecture abandonnée"},
    FaultRow{CardFault::Unexpected, ReadResult::ReaderFault, u"le service PC/SC signale une erreur imprévue"},
};

const FaultRow& rowOf(CardFault fault)
{
    const auto* row = std::ranges::find(faults, fault, &FaultRow::fault);
    return row == faults.end() ? faults.back() : *row;
}

} // namespace

CardFault cardFault(long pcscCode)
{
    const auto* row = std::ranges::find(codes, pcscCode, &CodeRow::code);
    return row == codes.end() ? CardFault::Unexpected : row->fault;
}

ReadResult readResult(CardFault fault)
{
    return rowOf(fault).result;
}

QString describe(CardFault fault)
{
    return rowOf(fault).text.toString();
}

QString hint(CardFault fault)
{
    return rowOf(fault).hint.toString();
}
