#pragma once

class QString;

/// Names a program with windows as part of the application "Pelmora" and keeps it running after its last window is
/// closed. Called once the application object exists.
void nameApplication(const QString& version);
