#pragma once

#include "service/LibraryVersions.h"
#include "service/ReaderNames.h"
#include "service/Sandbox.h"
#include "service/installed/SystemFile.h"
#include "service/pcsc/CardFault.h"
#include "service/pcsc/PcscContext.h"

#include <QStringList>

#include <expected>
#include <optional>

/// The socket of the PC/SC service.
struct SocketFacts
{
    QString path;
    QString permissions; // as text; empty when there is no socket
    bool isAccessible = false;
};

/// A reader and its state, found without connecting to it.
struct ReaderFacts
{
    ReaderName name;
    std::expected<ReaderState, CardFault> state;
};

/// The installed reading library, if it can be used.
struct InstalledFacts
{
    std::optional<SystemFileFault> refusal;
    bool isOpen = false;
    LibraryVersions versions;
    QStringList readers;
};

/// The result of a diagnosis. No card is read. Values of calls that did not end in time are absent.
struct Diagnosis
{
    using Readers = std::expected<QList<ReaderFacts>, CardFault>;

    QString version;
    SocketFacts socket;
    std::optional<Readers> readers;
    QString installedPath;
    std::optional<InstalledFacts> installed;
    QStringList cardMaps; // of the embedded library, with name and version
    QStringList warnings; // about its files
    QList<Protection> protections;

    /// Whether the automatic mode finds the accepted reader and a library for cards.
    [[nodiscard]] bool isReady() const;
};

/// The diagnosis as French text with aligned columns.
[[nodiscard]] QString diagnosisText(const Diagnosis& diagnosis);
