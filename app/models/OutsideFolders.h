#pragma once

/// Make folders of the reading library in the user's home. Failures are ignored: the library reports them.
void checkLogDir();
void checkSedicaDir();
