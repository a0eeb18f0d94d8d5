"""Card services with a given behaviour."""

import json
import os


class CardService:
    """Makes a card service program with that behaviour in the folder. It records its requests."""

    def __init__(self, folder, program, *behaviour):
        self.path = os.path.join(folder, "service")
        self._record = os.path.join(folder, "record")
        words = " ".join(f"'{word}'" for word in (program, "--record", self._record, *behaviour))
        with open(self.path, "w", encoding="utf-8") as script:
            script.write(f"#!/bin/sh\nexec {words}\n")
        os.chmod(self.path, 0o755)

    def requests(self, command):
        """The number of requests with that command."""
        with open(self._record, encoding="utf-8") as file:
            return sum(json.loads(line).get("Command") == command for line in file if line.startswith("{"))
