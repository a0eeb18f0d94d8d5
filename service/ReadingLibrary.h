#pragma once

#include "card/ReadResult.h"
#include "card/wire/CardReaderState.h"

#include <QStringList>

#include <expected>
#include <functional>
#include <memory>
#include <optional>

/// Which reading library the application wants: the digit in its "init" request.
enum class LibraryMode
{
    Automatic = 0,
    System = 1,
    Embedded = 2
};

/// Which reading library is in use.
enum class LibraryKind
{
    Embedded,
    System
};

/// Receives the card reader's state, on any thread, one call at a time.
using ReaderReport = std::function<void(CardReaderState)>;

/// Follows the card reader until it is destroyed.
class ReaderWatch
{
public:
    ReaderWatch() = default;
    Q_DISABLE_COPY(ReaderWatch)
    virtual ~ReaderWatch() = default;
};

/// A library that reads cards. Calls are made one at a time on one thread. It is set up by initialise, then
/// chooseReaders; both may be called again at any time.
class ReadingLibrary
{
public:
    ReadingLibrary() = default;
    Q_DISABLE_COPY(ReadingLibrary)
    virtual ~ReadingLibrary() = default;

    /// Starts in the given mode, without chosen readers. Absent when the wanted library is not available.
    [[nodiscard]] virtual std::optional<LibraryKind> initialise(LibraryMode mode) = 0;

    /// Unique names of the connected readers, in the library's order. Allowed in any state.
    [[nodiscard]] virtual QStringList readers() = 0;

    /// Chooses the readers of the health card and of the professional's card, which may be the same. False when one of
    /// them is not in readers(); the earlier choice is kept. Allowed in any state.
    [[nodiscard]] virtual bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) = 0;

    /// The versions of the library and of its tables, as XML without a document type. Allowed in any state.
    [[nodiscard]] virtual QString informations() = 0;

    /// The card's content as well-formed XML; its declared encoding does not apply. Needs chosen readers. Blocks.
    [[nodiscard]] virtual std::expected<QString, ReadResult> readCard() = 0;

    /// Reports the reader's state, then each change until the watch is destroyed. Null when there is no change to
    /// report. A library that does not tell its reader's state reports nothing.
    [[nodiscard]] virtual std::unique_ptr<ReaderWatch> watchReader(const ReaderReport& /*report*/) { return nullptr; }

    /// An additional text in French for users about the last failure of readers() or readCard(); empty when the result
    /// says enough. Allowed in any state.
    [[nodiscard]] virtual QString hint() const { return {}; }

    /// What a running readCard() waits for other than the card, as such a text. Called on another thread.
    [[nodiscard]] virtual QString waitsFor() const { return {}; }

    /// Whether a call was abandoned: this library and its process answer no more calls.
    [[nodiscard]] virtual bool isBeyondUse() const { return false; }
};
