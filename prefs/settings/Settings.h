#pragma once

#include <QStringView>
#include <QVariantList>

#include <tuple>
#include <variant>

/// What a setting is while the user has not chosen: nothing, a boolean, or a text, whose leading "~" stands for the
/// user's home folder.
using SettingDefault = std::variant<std::monostate, bool, QStringView>;

/// A setting that is read and written as a Value.
template <typename Value>
struct Setting
{
    QStringView key;
    SettingDefault defaultValue = std::monostate{};
};

/// All settings, a row each.
namespace Settings {
// A text on purpose: read as an integer it is 0, the automatic mode.
inline constexpr Setting<qint64> lvitMode{u"MVLVitMode", u"Auto"};
inline constexpr Setting<bool> showRightLabelPrintOption{u"MVShowRightLabelPrintOption", false};
inline constexpr Setting<QString> attestationsFolder{u"MVAttestationsFolder", u"~/Documents/Attestations Pelmora"};
inline constexpr Setting<QVariantList> recentsAttestation{u"MVRecentsAttestation"};
inline constexpr Setting<bool> statusItemMenu{u"MVStatusItemMenu", true};
inline constexpr Setting<bool> debugMode{u"MVDebugMode"};

/// The rows above, for those who go through all of them.
inline constexpr std::tuple all{
    lvitMode, showRightLabelPrintOption, attestationsFolder, recentsAttestation, statusItemMenu, debugMode};
} // namespace Settings
