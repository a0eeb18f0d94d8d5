#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

/// Gives up, for good and for all threads and children to come, what a card service never needs: new privileges,
/// sockets other than local ones, writing to files. Left are the descriptors that are open, devices, and what lies in
/// the given folders, in so far as they are there. Returns a French sentence for each protection that this system does
/// not have; the others hold.
[[nodiscard]] QStringList enterSandbox(const QList<QByteArray>& writableFolders);

/// The folders in which an installed reading library keeps its files.
[[nodiscard]] QList<QByteArray> libraryFolders();
