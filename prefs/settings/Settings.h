#pragma once

#include <QStringView>
#include <QVariantList>

#include <limits>
#include <tuple>
#include <variant>

/// The value before the user has set one: none, a boolean, or a text, where a leading "~" is the home folder.
using SettingDefault = std::variant<std::monostate, bool, QStringView>;

/// A setting of type Value.
template <typename Value>
struct Setting
{
    QStringView key;
    SettingDefault defaultValue = std::monostate{};
    /// Of an integer.
    qint64 maximum = std::numeric_limits<qint64>::max();
};

namespace Settings {
// A text on purpose: as an integer it is 0, the automatic mode.
inline constexpr Setting<qint64> lvitMode{u"MVLVitMode", u"Auto", 2};
inline constexpr Setting<bool> showRightLabelPrintOption{u"MVShowRightLabelPrintOption", false};
inline constexpr Setting<QString> attestationsFolder{u"MVAttestationsFolder", u"~/Documents/Attestations Pelmora"};
inline constexpr Setting<QVariantList> recentsAttestation{u"MVRecentsAttestation"};
inline constexpr Setting<QString> lastPrinter{u"MVLastPrinter"};
inline constexpr Setting<bool> printWithoutAsking{u"MVPrintWithoutAsking", false};
inline constexpr Setting<bool> statusItemMenu{u"MVStatusItemMenu", true};
inline constexpr Setting<bool> debugMode{u"MVDebugMode"};
inline constexpr Setting<bool> readOnInsertion{u"MVReadOnInsertion", false};
inline constexpr Setting<bool> forgetOnRemoval{u"MVForgetOnRemoval", false};
// When the session is locked and when the machine sleeps.
inline constexpr Setting<bool> forgetOnLock{u"MVForgetOnLock", false};
// 0: never.
inline constexpr Setting<qint64> forgetAfterMinutes{u"MVForgetAfterMinutes"};
inline constexpr Setting<bool> forgetRecents{u"MVForgetRecents", false};

/// All rows above.
inline constexpr std::tuple all{lvitMode,        showRightLabelPrintOption, attestationsFolder, recentsAttestation,
                                lastPrinter,     printWithoutAsking,        statusItemMenu,     debugMode,
                                readOnInsertion, forgetOnRemoval,           forgetOnLock,       forgetAfterMinutes,
                                forgetRecents};
} // namespace Settings
