#pragma once

#include <QStringView>

#include <array>
#include <string_view>

/// The notification after a bind, and its user information.
namespace BindNotification {
inline constexpr QStringView name{u"MVBindNotification"};
inline constexpr QStringView status{u"Status"};
inline constexpr QStringView error{u"Error"}; // on failure only
inline constexpr QStringView success{u"success"};
inline constexpr QStringView failure{u"failure"};
} // namespace BindNotification

/// Which reading library the card service uses. The index is the mode's number; unknown names count as 0.
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

/// A value of the reading library's information: its key, and its path in the information document's root element.
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
inline constexpr QStringView readers{u"Readers"}; // names in the service's order
inline constexpr QStringView detail{u"Detail"};   // why there are none, for users; optional
inline constexpr QStringView vitale{u"Vitale"};   // name of the reader for the health card
inline constexpr QStringView cps{u"CPS"};         // name of the reader for the professional card
} // namespace ReaderKey
