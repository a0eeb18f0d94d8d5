#pragma once

#include "app/models/DesktopAction.h"

#include <QStringList>

#include <expected>
#include <optional>

/// The parsed command line.
struct CommandLine
{
    enum class Action
    {
        ShowWindow,
        Save,
        Print,
        Read,
        AddLauncher,
        RemoveLauncher,
        ShowHelp,
        ShowVersion
    };

    /// Among the cards.
    static constexpr QLatin1StringView standardInputName{"-"};

    Action action = Action::ShowWindow;
    /// The folder for --save.
    QString folder;
    /// Card files; "-" is the standard input, except for a window.
    QStringList cards;
    /// --json: results as JSON.
    bool isJson = false;
    /// --force: patients' data may be shown on a terminal.
    bool isForced = false;
    /// Of the window: what it does first.
    std::optional<DesktopAction> desktopAction;
    /// Whether the reader is simulated, and its card file; absent for the specimen card.
    bool simulate = false;
    std::optional<QString> simulatedCard;
    std::optional<QString> cardService;

    /// Parses the arguments with the program's name first. The error is a sentence.
    [[nodiscard]] static std::expected<CommandLine, QString> parse(const QStringList& arguments);

    [[nodiscard]] static QString helpText();
};
