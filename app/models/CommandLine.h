#pragma once

#include <QString>
#include <QStringList>

#include <expected>
#include <optional>

/// What the command line asks for.
struct CommandLine
{
    enum class Action
    {
        ShowWindow,
        Save,
        Print,
        ShowHelp,
        ShowVersion
    };

    Action action = Action::ShowWindow;
    /// Folder of the attestations to save.
    QString folder;
    /// Card files, in the order given.
    QStringList cards;
    /// Whether the simulated reader is asked for, and with which card file; the specimen card when none is named.
    bool simulate = false;
    std::optional<QString> simulatedCard;
    /// Another card service program than our own.
    std::optional<QString> cardService;

    /// Reads the arguments, the program's name first. The failure is a sentence on what is wrong with them.
    [[nodiscard]] static std::expected<CommandLine, QString> parse(const QStringList& arguments);

    /// The help that --help prints.
    [[nodiscard]] static QString helpText();
};
