#pragma once

#include <QString>

/// The program's standard output and standard error, for a person at a terminal or a script.
class Console
{
public:
    Console() = delete;

    /// Writes a text to the standard output; false when it could not be.
    [[nodiscard]] static bool print(const QString& text);

    /// Writes one line to the standard error, after the program's name; control characters in it become blanks.
    static void complain(const QString& reason);

    /// Writes one line to the standard error, as it stands.
    static void advise(const QString& advice);
};
