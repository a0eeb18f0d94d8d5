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

/// A way to card readers, as it is found: the socket at which the PC/SC service is met.
struct SocketFacts
{
    QString path;
    QString permissions; // for people; empty when there is no socket
    bool isAccessible = false;
};

/// A reader, and what it tells without being connected to.
struct ReaderFacts
{
    ReaderName name;
    std::expected<ReaderState, CardFault> state;
};

/// What an installed reading library is worth.
struct InstalledFacts
{
    std::optional<SystemFileFault> refusal;
    bool isOpen = false;
    LibraryVersions versions;
    QStringList readers;
};

/// All that a diagnosis tells. Nothing of it is read from a card. What did not end in time is absent.
struct Diagnosis
{
    using Readers = std::expected<QList<ReaderFacts>, CardFault>;

    QString version;
    SocketFacts socket;
    std::optional<Readers> readers;
    QString installedPath;
    std::optional<InstalledFacts> installed;
    QStringList cardMaps; // of the embedded library: name and version
    QStringList warnings; // what is wrong with its files
    QList<Protection> protections;

    /// Whether the automatic mode finds the accepted reader, and a library for its cards.
    [[nodiscard]] bool isReady() const;
};

/// The diagnosis as French text, its columns aligned, lines ended.
[[nodiscard]] QString diagnosisText(const Diagnosis& diagnosis);
