#!/usr/bin/python3
"""Saving an attestation and reading a card load no part of a window system, and fontconfig only for characters that the
page's own font does not have.

Usage: test_save_libraries.py STAGE
"""

import os
import subprocess
import sys
import tempfile

import libraries


def libraries_of(command, environment):
    run = subprocess.run(command, check=True, capture_output=True, text=True, env={**environment, "LD_DEBUG": "files"})
    return libraries.loaded(run.stderr)


def main():
    stage = sys.argv[1]
    with open(os.path.join(stage, "share", "pelmora", "specimen.xml"), encoding="utf-8") as file:
        specimen = file.read()
    with tempfile.TemporaryDirectory() as folder:
        environment = {**os.environ, "XDG_CONFIG_HOME": folder}

        def libraries_for(name, command=("--save", folder)):
            card = os.path.join(folder, "card.xml")
            with open(card, "w", encoding="utf-8") as file:
                file.write(specimen.replace("SPECIMEN", name))
            return libraries_of([os.path.join(stage, "bin", "pelmora"), *command, card], environment)

        usual = libraries_for("SPECIMEN")
        assert any(name.startswith("libQt6Core.so") for name in usual), usual
        assert not libraries.of_a_window_system(usual), usual
        print("ok: no part of a window system")

        reading = libraries_for("SPECIMEN", ("--read",))
        assert reading <= usual, reading - usual
        print("ok: nothing more for reading")

        assert any(name.startswith("libfontconfig") for name in libraries_for("אברהם"))
        print("ok: fontconfig for a character that the page's font does not have")


main()
