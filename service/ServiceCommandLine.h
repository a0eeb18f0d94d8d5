#pragma once

#include <QByteArray>
#include <QList>

#include <expected>
#include <optional>
#include <string>

/// What the service was started for.
struct ServiceCommandLine
{
    enum class Action
    {
        Serve,
        Diagnose,
        ShowHelp,
        ShowVersion
    };
    Action action = Action::Serve;
    std::optional<QByteArray> simulatedCard; // path, in the file system's own bytes
};

/// The command line without the program's name. The error is a sentence for people.
[[nodiscard]] std::expected<ServiceCommandLine, std::string> parseCommandLine(const QList<QByteArray>& arguments);

/// What --help shows, lines ended.
[[nodiscard]] std::string helpText();
