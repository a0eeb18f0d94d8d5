"""Card services that behave as they are told."""

import json
import os


class CardService:
    """A program in the folder that is a card service with that behaviour, and notes what it is asked for."""

    def __init__(self, folder, program, *behaviour):
        self.path = os.path.join(folder, "service")
        self._record = os.path.join(folder, "record")
        words = " ".join(f"'{word}'" for word in (program, "--record", self._record, *behaviour))
        with open(self.path, "w", encoding="utf-8") as script:
            script.write(f"#!/bin/sh\nexec {words}\n")
        os.chmod(self.path, 0o755)

    def requests(self, command):
        """How often it was asked for that."""
        with open(self._record, encoding="utf-8") as file:
            return sum(json.loads(line).get("Command") == command for line in file if line.startswith("{"))
