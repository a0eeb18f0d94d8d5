"""The fake card service, controlled by the words of tests/fakes/FakeScript.h."""

import json
import os


class FakeService:
    """A program in the folder that starts the fake card service, and a record of the requests to the service. By
    default every request succeeds."""

    def __init__(self, folder, program):
        self.path = os.path.join(folder, "service")
        self.record = os.path.join(folder, "record")
        self.forget()
        self._words = [program, "--record", self.record]
        self._told()

    def forget(self):
        """Empties the record. The service only writes to a file that exists."""
        with open(self.record, "w", encoding="utf-8"):
            pass

    def doing(self, command, behaviour):
        return self._told("--do", command, behaviour)

    def readers(self, *names):
        return self._told("--list", "readers_list", "Readers", "|".join(names))

    def failing(self, command):
        return self.text(command, "Status", "error")

    def text(self, command, key, value):
        return self._told("--set", command, key, value)

    def ignoring_the_end(self):
        return self._told("--ignore-end")

    def only_at_start(self, start):
        return self._told("--starts", str(start))

    def _told(self, *words):
        self._words += words
        with open(self.path, "w", encoding="utf-8") as script:
            script.write("#!/bin/sh\nexec " + " ".join(f"'{word}'" for word in self._words) + "\n")
        os.chmod(self.path, 0o755)
        return self

    def requested(self, field):
        """The values of this field, from the requests that have it."""
        with open(self.record, encoding="utf-8") as file:
            found = [json.loads(line) for line in file if line.startswith("{")]
        return [request[field] for request in found if field in request]

    def requests(self, command):
        """The number of requests with this command."""
        return self.requested("Command").count(command)
