#pragma once

#include "service/PcscBroker.h"

#include <QList>
#include <QString>

#include <optional>

/// A restriction of the process, or the reason why it is not in place.
struct Protection
{
    QString name;     // in French
    QString meaning;  // what it guarantees
    QString obstacle; // why it is not in place; empty when it is

    [[nodiscard]] bool holds() const { return obstacle.isEmpty(); }
};

/// What the sandbox allows.
struct SandboxPlaces
{
    QList<QByteArray> writableFolders;
    QByteArray pcscSocket;
};

/// Permanent restrictions of this process and its children. Connections to PC/SC need the living object.
class Sandbox final
{
public:
    /// Gives up new privileges, the network, local sockets except that of the PC/SC service, changes of files, and
    /// signals to other processes. Open descriptors and the given folders stay usable. Restrictions that the system
    /// does not have are reported; the others are applied. For a process with one thread.
    explicit Sandbox(const SandboxPlaces& places);

    /// In a fixed order.
    [[nodiscard]] const QList<Protection>& protections() const { return m_protections; }

    /// A French sentence about missing protections; absent when there are none.
    [[nodiscard]] std::optional<QString> obstacles() const;

private:
    [[nodiscard]] std::optional<int> holdConnections();

    std::optional<PcscBroker> m_broker;
    int m_brokerFailure = 0;
    QList<Protection> m_protections;
};

/// The folders of an installed reading library.
[[nodiscard]] QList<QByteArray> libraryFolders();
