#pragma once

#include "service/PcscBroker.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// Something that a process gives up for good, or the reason why it could not.
struct Protection
{
    QString name;     // French, for a list
    QString meaning;  // what holds
    QString obstacle; // empty when it does

    [[nodiscard]] bool holds() const { return obstacle.isEmpty(); }
};

/// What is left to a process in the sandbox.
struct SandboxPlaces
{
    QList<QByteArray> writableFolders;
    QByteArray pcscSocket;
};

/// The confinement of this process, its threads and its children, for good. What it is to do must live as long as the
/// object: with it go connections to the PC/SC service.
class Sandbox final
{
public:
    /// Gives up what a card service never needs: new privileges, the network, local sockets but the PC/SC service's,
    /// changes of files, signals to others. Left are descriptors that are open, and what lies in the given folders. A
    /// protection that this system does not have is told, the others hold. For the only thread of a process.
    explicit Sandbox(const SandboxPlaces& places);

    /// All of them, in a fixed order.
    [[nodiscard]] const QList<Protection>& protections() const { return m_protections; }

    /// A French sentence on those that do not hold; nothing when all do.
    [[nodiscard]] std::optional<QString> obstacles() const;

private:
    [[nodiscard]] std::optional<int> holdConnections();

    std::optional<PcscBroker> m_broker;
    int m_brokerFailure = 0; // an errno
    QList<Protection> m_protections;
};

/// The folders in which an installed reading library keeps its files.
[[nodiscard]] QList<QByteArray> libraryFolders();
