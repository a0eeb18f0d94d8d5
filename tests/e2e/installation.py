"""A reading library that is installed on the system, where a test alone sees it: in a mount namespace of its own."""

import os
import shutil
import subprocess
import tempfile

FOLDER = "/usr/lib/pelmora"
LIBRARY = os.path.join(FOLDER, "reading-library.so")


def lay_over_system():
    """Lets this process change /usr/lib for itself alone."""
    layer = tempfile.mkdtemp()
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=755", "none", layer], check=True)
    for name in ("upper", "work"):
        os.mkdir(os.path.join(layer, name), 0o755)
    subprocess.run(["mount", "-t", "overlay", "-o",
                    f"lowerdir=/usr/lib,upperdir={layer}/upper,workdir={layer}/work", "overlay", "/usr/lib"], check=True)
    shutil.rmtree(FOLDER, ignore_errors=True)
    return layer
