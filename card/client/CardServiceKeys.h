#pragma once

#include <QStringView>

#include <array>
#include <string_view>

/// The notification that reports how a bind ended, and the keys and values of its user information.
namespace BindNotification {
inline constexpr QStringView name{u"MVBindNotification"};
inline constexpr QStringView status{u"Status"};
inline constexpr QStringView error{u"Error"}; // on failure only
inline constexpr QStringView success{u"success"};
inline constexpr QStringView failure{u"failure"};
} // namespace BindNotification

/// Names of the access modes: which reading library the card service is to use. The index is the mode's number; 0 also
/// stands for every unknown one.
namespace AccessMode {
inline constexpr QStringView automatic{u"Auto"};
inline constexpr QStringView system{u"System"};
inline constexpr QStringView embedded{u"Embedded"};
inline constexpr std::array names{automatic, system, embedded};
} // namespace AccessMode

/// Keys of the reading library's information.
namespace InformationKey {
inline constexpr QStringView apiLecVersion{u"MVAPILecVersion"};
inline constexpr QStringView tableBinVersion{u"MVTableBinVersion"};
inline constexpr QStringView pdtCdcVersion{u"MVPdtCdcVersion"};
inline constexpr QStringView tableHabVersion{u"MVTableHabVersion"};
} // namespace InformationKey

/// A value of the reading library's information: its key and its path from the information document's root element.
struct InformationField
{
    QStringView key;
    std::string_view path;
};

inline constexpr std::array informationFields{
    InformationField{InformationKey::apiLecVersion, "apiLecVitale/version"},
    InformationField{InformationKey::tableBinVersion, "apiLecVitale/tableLibVitale"},
    InformationField{InformationKey::pdtCdcVersion, "apiLecVitale/tableLibOrgDest"},
    InformationField{InformationKey::tableHabVersion, "apiLecVitale/tableHab"},
};

/// Keys of the dictionaries that LVitAccess takes and gives.
namespace ReaderKey {
inline constexpr QStringView readers{u"Readers"}; // the names of the readers, in the service's order
inline constexpr QStringView detail{u"Detail"};   // why there are none, in words, where the service tells
inline constexpr QStringView vitale{u"Vitale"};   // the name of the reader for the health card
inline constexpr QStringView cps{u"CPS"};         // the name of the reader for the professional card
} // namespace ReaderKey
