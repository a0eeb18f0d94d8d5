#pragma once

#include <QStringView>

#include <algorithm>
#include <array>
#include <optional>

/// What desktops can ask the application for, in the menu of its launcher.
enum class DesktopAction
{
    Read,
    Print,
    OpenFolder
};

struct DesktopActionName
{
    DesktopAction action = DesktopAction::Read;
    QStringView name;
};

/// The names in the launcher, on the command line and on the session bus.
inline constexpr std::array desktopActions{
    DesktopActionName{DesktopAction::Read, u"lire"},
    DesktopActionName{DesktopAction::Print, u"imprimer"},
    DesktopActionName{DesktopAction::OpenFolder, u"dossier"},
};

[[nodiscard]] inline std::optional<DesktopAction> desktopActionOf(QStringView name)
{
    const auto* found = std::ranges::find(desktopActions, name, &DesktopActionName::name);
    return found == desktopActions.end() ? std::nullopt : std::optional(found->action);
}

[[nodiscard]] constexpr QStringView nameOf(DesktopAction action)
{
    return std::ranges::find(desktopActions, action, &DesktopActionName::action)->name;
}
