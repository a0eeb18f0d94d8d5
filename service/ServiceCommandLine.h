#pragma once

#include <QByteArray>
#include <QList>

#include <expected>
#include <optional>
#include <string>

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
    std::optional<QByteArray> simulatedCard; // path in the file system's encoding
};

/// Parses the arguments after the program's name. The error is a sentence for users.
[[nodiscard]] std::expected<ServiceCommandLine, std::string> parseCommandLine(const QList<QByteArray>& arguments);

/// The text of --help.
[[nodiscard]] std::string helpText();
