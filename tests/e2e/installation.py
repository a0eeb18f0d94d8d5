"""Installs a reading library where only the test sees it: in its own mount namespace."""

import os
import shutil
import tempfile

from disks import mount

FOLDER = "/usr/lib/pelmora"
LIBRARY = os.path.join(FOLDER, "reading-library.so")


def lay_over_system():
    """Lets this process change its own view of /usr/lib."""
    layer = tempfile.mkdtemp()
    mount("-t", "tmpfs", "-o", "mode=755", "none", layer)
    for name in ("upper", "work"):
        os.mkdir(os.path.join(layer, name), 0o755)
    mount("-t", "overlay", "-o", f"lowerdir=/usr/lib,upperdir={layer}/upper,workdir={layer}/work", "overlay",
          "/usr/lib")
    shutil.rmtree(FOLDER, ignore_errors=True)
    return layer
