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
        CheckLibrary,
        CheckMap,
        ShowHelp,
        ShowVersion
    };
    Action action = Action::Serve;
    // Paths in the file system's encoding.
    std::optional<QByteArray> simulatedCard;
    QByteArray checkedFile;
    std::optional<QByteArray> recordedCard; // for the check of a map
};

/// Parses the arguments after the program's name. The error is a sentence for users.
[[nodiscard]] std::expected<ServiceCommandLine, std::string> parseCommandLine(const QList<QByteArray>& arguments);

/// The text of --help.
[[nodiscard]] std::string helpText();
