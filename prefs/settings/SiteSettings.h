#pragma once

#include "platform/UserDefaults.h"

#include <QStringList>

/// The settings file of a site, which its administrator writes for all users: INI, with defaults of settings and, in
/// the section [Verrouillé], values that users cannot change. Main thread.
struct SiteSettings
{
    SiteValues values;
    /// For the log: what is wrong in the file, with keys but without values, because these may be personal.
    QStringList problems;

    [[nodiscard]] static SiteSettings read(const QString& path);
};

/// Gives the store the values of "MORVEL/Pelmora.conf" in the system's configuration folders, of the first folder that
/// has it, and logs what is wrong in the file. Called once, at the start. Main thread.
void useSiteSettings(UserDefaults& store);
