#pragma once

#include "card/ReadResult.h"

#include <QString>
#include <QStringList>

#include <expected>
#include <optional>

/// Which reading library the application wants, as the digit of its "init" request.
enum class LibraryMode
{
    Automatic = 0,
    System = 1,
    Embedded = 2
};

/// Whose reading library is in use.
enum class LibraryKind
{
    Embedded,
    System
};

/// What the service needs of a library that reads cards. Calls are made one at a time, on one thread. A library is made
/// without readers in use; it is set up by initialise, then chooseReaders, and either may be called again at any time.
class ReadingLibrary
{
public:
    ReadingLibrary() = default;
    ReadingLibrary(const ReadingLibrary&) = delete;
    ReadingLibrary& operator=(const ReadingLibrary&) = delete;
    virtual ~ReadingLibrary() = default;

    /// Starts afresh in the given mode: chosen readers are let go. The value tells whose library reads from now on;
    /// nothing when the wanted kind is not there.
    [[nodiscard]] virtual std::optional<LibraryKind> initialise(LibraryMode mode) = 0;

    /// Names of the readers that are connected now, each once, in the library's order; empty when there is none. Any
    /// state, no error.
    [[nodiscard]] virtual QStringList readers() = 0;

    /// Chooses the readers, by name, of the health card and of the professional's card, which may be the same one.
    /// False, and the earlier choice kept, when either is not among readers(). Any state.
    [[nodiscard]] virtual bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) = 0;

    /// The versions of the library and of its tables, as an XML document without a document type. Any state, no error.
    [[nodiscard]] virtual QString informations() = 0;

    /// The content of the card in the health card's reader at this moment, as well-formed XML, decoded; any encoding
    /// that it declares no longer holds. Needs chosen readers; blocks while the card is read. The error is the result
    /// code.
    [[nodiscard]] virtual std::expected<QString, ReadResult> readCard() = 0;

    /// What people are to know of the failure of the last readers() or readCard(), in French, where its result alone
    /// would mislead them; empty otherwise. Any state, no error.
    [[nodiscard]] virtual QString hint() const { return {}; }

    /// What a readCard() that has not come back waits for, if not for the card, as such a hint. Called on another
    /// thread while it runs.
    [[nodiscard]] virtual QString waitsFor() const { return {}; }

    /// Whether a call has been left behind unanswered: this library, and its process, answer no more calls.
    [[nodiscard]] virtual bool isBeyondUse() const { return false; }
};
