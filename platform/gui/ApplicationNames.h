#pragma once

class QString;

/// What each program with windows is for the desktop: a part of the one application "Pelmora". It outlives its windows.
/// Call it once the application object exists.
void nameApplication(const QString& version);
