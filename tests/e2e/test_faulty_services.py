"""Card services with faults of all kinds, with --save and with one window. Each run ends in time, with the whole
attestation or a line with the reason, and uses little memory. Usage:

  test_faulty_services.py STAGE [--count N] [--first NUMBER] [--windows N] [--patient] [--jobs N]

A service's fault is computed from its number (faultyservice.py); failures are reported with the number. The defaults
are for regular checks. A long run is: --count 2000 --windows 50 --patient."""

import argparse
import concurrent.futures
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

import faultyservice
from desktop import Application, wait
from door import open_over_bus
from specimencard import SUMMARY
from waiting import is_running

PARSER = argparse.ArgumentParser()
PARSER.add_argument("stage")
PARSER.add_argument("--count", type=int, default=40)
PARSER.add_argument("--first", type=int, default=1)
PARSER.add_argument("--windows", type=int, default=6)
PARSER.add_argument("--patient", action="store_true")
PARSER.add_argument("--jobs", type=int, default=2)
OPTIONS = PARSER.parse_args()
STAGE = os.path.realpath(OPTIONS.stage)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
SERVICE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "faultyservice.py")

# Longer than the application waits: four requests of at most 60 s, of which one hangs, and the service's end.
PATIENCE = 90  # seconds
MEMORY = 120 << 10  # KiB, of any process of the run
TITLE = "Pelmora par MORVEL"
OTHER_SUMMARY = SUMMARY.replace("SPECIMEN", "AUTRE")
# The errors that users see: the catalogue's texts, and those of documents that cannot be read. The second line of a
# text is a separate line here.
ERRORS = (
    r"L’opération n’a pas pu s’achever\. \(erreur Pelmora -1[01]\.\)", r"Aucun lecteur de carte n'a été trouvé\..*",
    r"Le lecteur fourni.* n'a pas été trouvé\..*", r"Erreur lecteur\..*", r"La carte vitale n'est pas dans le lecteur\.",
    r"Erreur de lecture de la carte Vitale\..*", r"La carte Vitale ne comporte aucun bénéficiaire\.",
    r"(?:Le document|Un élément du document|Un texte du document).* XML.*\.")


def write_service(folder, number, patient):
    """A program in the folder that is the service of that number, or of the next one at each start."""
    path = os.path.join(folder, "service")
    with open(path, "w", encoding="utf-8") as script:
        script.write(f"#!/bin/sh\necho $$ >>'{folder}/pids'\nnumber=$(($(wc -l <'{folder}/pids') - 1 + {number}))\n"
                     f"exec /usr/bin/python3 -I -S '{SERVICE}' $number '{SPECIMEN}'{' --patient' * patient}\n")
    os.chmod(path, 0o755)
    return path


def services(folder):
    """The process numbers of the services that were started."""
    try:
        with open(os.path.join(folder, "pids"), encoding="utf-8") as file:
            return [int(line) for line in file]
    except FileNotFoundError:
        return []


def fault_of(number, patient):
    _, fault, command = faultyservice.choice(number, patient)
    return f"{fault.__name__} at {command}"


def complaints(folder, status, output, errors, number):
    """What is wrong at the end of a run, one text for each fault."""
    attestations = os.path.join(folder, "attestations")
    files = os.listdir(attestations) if os.path.isdir(attestations) else []
    if status not in (0, 1):
        yield f"the exit status is {status}"
    if status == 0 and [os.path.join(attestations, name) for name in files] != output.splitlines():
        yield f"the files are {files}, and the output is {output!r}"
    if status != 0 and (files or output):
        yield f"the run failed, but the files are {files} and the output is {output!r}"
    if status != 0 and not any(re.fullmatch("pelmora : " + error, line) for line in errors.splitlines()
                               for error in ERRORS):
        yield f"no line gives the reason: {errors[-300:]!r}"
    for name in files:
        with open(os.path.join(attestations, name), "rb") as file:
            content = file.read()
        if not content.startswith(b"%PDF-1.4") or not content.rstrip().endswith(b"%%EOF"):
            yield f"{name} is incomplete"
    if status != 0 and faultyservice.choice(number, OPTIONS.patient)[1] in faultyservice.HARMLESS:
        yield "the run failed although the correct card was sent"


def save(number):
    """Runs --save with the service of that number. Returns what was wrong, the memory in KiB, and the time."""
    folder = tempfile.mkdtemp()
    try:
        # Files, not pipes: a child that the service leaves behind would keep them open.
        with open(os.path.join(folder, "out"), "wb+") as output, open(os.path.join(folder, "err"), "wb+") as errors:
            start = time.monotonic()
            process = subprocess.Popen(
                ["/usr/bin/timeout", "--signal=KILL", str(PATIENCE), PELMORA, "--save", os.path.join(folder, "attestations"),
                 "--card-service", write_service(folder, number, OPTIONS.patient)], stdin=subprocess.DEVNULL, stdout=output, stderr=errors,
                env={**os.environ, "HOME": folder, "XDG_CONFIG_HOME": folder, "LC_ALL": "C.UTF-8"})
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            duration = time.monotonic() - start
            texts = []
            for file in (output, errors):
                file.seek(0)
                texts.append(file.read().decode("utf-8", "replace"))
        wrong = list(complaints(folder, process.returncode, *texts, number))
        if usage.ru_maxrss > MEMORY:
            wrong.append(f"it used {usage.ru_maxrss >> 10} MiB")
        try:
            wait(lambda: not any(is_running(service) for service in services(folder)), 5)
        except AssertionError:
            wrong.append("the service still runs")
        return wrong, usage.ru_maxrss, duration
    finally:
        shutil.rmtree(folder)


def memory_of(pid):
    """The most memory that the process has had, in KiB."""
    with open(f"/proc/{pid}/status", encoding="utf-8") as file:
        return int(re.search(r"VmHWM:\s+(\d+)", file.read())[1])


class FaultyServices(unittest.TestCase):
    def test_each_save_ends_with_the_whole_file_or_says_why_not(self):
        numbers = range(OPTIONS.first, OPTIONS.first + OPTIONS.count)
        memory, duration, failed = 0, 0.0, []
        with concurrent.futures.ThreadPoolExecutor(OPTIONS.jobs) as pool:
            for number, (wrong, most, lasted) in zip(numbers, pool.map(save, numbers)):
                memory, duration = max(memory, most), max(duration, lasted)
                if wrong:
                    failed.append(f"{number} ({fault_of(number, OPTIONS.patient)}): {'; '.join(wrong)}")
        print(f"{len(numbers)} services behind --save: at most {memory >> 10} MiB and {duration:.1f} s", file=sys.stderr)
        self.assertEqual(failed, [], "\n" + "\n".join(failed))

    def test_one_window_outlives_one_service_after_another(self):
        folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, folder)
        other = os.path.join(folder, "other.xml")
        with open(SPECIMEN, encoding="utf-8") as specimen, open(other, "w", encoding="utf-8") as file:
            file.write(specimen.read().replace("SPECIMEN", "AUTRE"))
        # Without --patient: services that do not answer would take a minute each.
        with Application(PELMORA, "--card-service", write_service(folder, OPTIONS.first, False)) as pelmora:
            pelmora.find("frame", TITLE)
            while len(services(folder)) < OPTIONS.windows:
                started = len(services(folder))
                number = OPTIONS.first + max(0, started - 1)
                with self.subTest(number=number, fault=fault_of(number, False)):
                    self.read_or_be_told(pelmora, other)
                    self.assertLess(memory_of(pelmora.process.pid), MEMORY)
                # Ended, because a service that still works would be used again.
                for service in services(folder)[:started]:
                    if is_running(service):
                        os.kill(service, 9)
                        wait(lambda service=service: not is_running(service))
            print(f"{OPTIONS.windows} services in a window: {memory_of(pelmora.process.pid) >> 10} MiB", file=sys.stderr)
            self.assertEqual(pelmora.terminate(), 0)

    def read_or_be_told(self, pelmora, other):
        """Presses « Lire » and waits for a card or an alert, which is closed. The other card is shown before."""
        wait(lambda: self.close_alert(pelmora))
        # Two damaged cards in a row may have the same summary.
        if self.summary(pelmora) != OTHER_SUMMARY:
            open_over_bus(other)
            wait(lambda: self.summary(pelmora) == OTHER_SUMMARY)
        pelmora.press("push button", "Lire")

        def is_over():
            assert pelmora.process.poll() is None, "the application has ended"
            return pelmora.find_now("alert", ".*") or self.summary(pelmora) != OTHER_SUMMARY
        wait(is_over, PATIENCE)
        wait(lambda: self.close_alert(pelmora))

    @staticmethod
    def summary(pelmora):
        label = pelmora.find_now("label", r".*bénéficiaires?")
        return label and label.get_name()

    pressed = 0.0  # when an alert's button was last pressed

    def close_alert(self, pelmora):
        """Closes an alert; whether there is none. A second press before the click is complete restarts it."""
        if pelmora.find_now("alert", ".*") is None:
            return True
        if time.monotonic() - self.pressed < 1:
            return False
        button = pelmora.find_now("push button", "OK")
        action = button and button.get_action_iface()
        if action and action.get_n_actions():
            action.do_action(0)
            self.pressed = time.monotonic()
        return False


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
