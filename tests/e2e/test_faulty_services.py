"""Card services with faults of all kinds, behind --save and behind one window: each run ends in time with the whole
attestation or a line that says why not, and in little memory. Usage:

  test_faulty_services.py STAGE [--count N] [--first NUMBER] [--windows N] [--patient] [--jobs N]

A service's fault follows from its number (faultyservice.py); what fails is named by it. Without more, the numbers and
services are those of the checks; a campaign is: --count 2000 --windows 50 --patient."""

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
from desktop import Application, is_running, wait

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

# More than any answer is waited for: four requests of 60 s at most, of which one hangs, and the service's end.
PATIENCE = 90  # seconds
MEMORY = 120 << 10  # KiB, of any process of the run
TITLE = "Pelmora par MORVEL"
# What people are told of a failure: the catalogue's texts, and those of documents that cannot be read. A text's second line
# is another line here.
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
    """What is wrong with how a run has ended, one text each."""
    attestations = os.path.join(folder, "attestations")
    files = os.listdir(attestations) if os.path.isdir(attestations) else []
    if status not in (0, 1):
        yield f"the exit status is {status}"
    if status == 0 and [os.path.join(attestations, name) for name in files] != output.splitlines():
        yield f"{files} are there, and {output!r} was said"
    if status != 0 and (files or output):
        yield f"{files} are there in spite of the failure, and {output!r} was said"
    if status != 0 and not any(re.fullmatch("pelmora : " + error, line) for line in errors.splitlines()
                               for error in ERRORS):
        yield f"no line says why: {errors[-300:]!r}"
    for name in files:
        with open(os.path.join(attestations, name), "rb") as file:
            content = file.read()
        if not content.startswith(b"%PDF-1.4") or not content.rstrip().endswith(b"%%EOF"):
            yield f"{name} is not whole"
    if status != 0 and faultyservice.choice(number, OPTIONS.patient)[1] in faultyservice.HARMLESS:
        yield "the right card was there"


def save(number):
    """Lets the application save with the service of that number; what was wrong, the memory in KiB, and the time."""
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
            wrong.append(f"it took {usage.ru_maxrss >> 10} MiB")
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
        # Slow ones would take a minute each.
        with Application(PELMORA, "--card-service", write_service(folder, OPTIONS.first, False)) as pelmora:
            pelmora.find("frame", TITLE)
            while len(services(folder)) < OPTIONS.windows:
                started = len(services(folder))
                number = OPTIONS.first + max(0, started - 1)
                with self.subTest(number=number, fault=fault_of(number, False)):
                    self.read_or_be_told(pelmora)
                    self.assertLess(memory_of(pelmora.process.pid), MEMORY)
                # A service that works would stay.
                for service in services(folder)[:started]:
                    if is_running(service):
                        os.kill(service, 9)
                        wait(lambda service=service: not is_running(service))
            print(f"{OPTIONS.windows} services in a window: {memory_of(pelmora.process.pid) >> 10} MiB", file=sys.stderr)
            self.assertEqual(pelmora.terminate(), 0)

    def read_or_be_told(self, pelmora):
        """Presses « Lire » and waits for a card or an alert, which is closed."""
        wait(lambda: self.close_alert(pelmora))
        before = self.summary(pelmora)
        pelmora.press("push button", "Lire")
        quiet_since = time.monotonic()

        def is_over():
            nonlocal quiet_since
            assert pelmora.process.poll() is None, "the application has ended"
            if pelmora.find_now("label", r"Lecture de la carte Vitale\.\.\.|Connexion au lecteur de cartes…"):
                quiet_since = time.monotonic()
                return False
            # Two damaged cards after each other may have the same summary.
            return (pelmora.find_now("alert", ".*") or self.summary(pelmora) != before
                    or time.monotonic() - quiet_since > 5)
        wait(is_over, PATIENCE)
        wait(lambda: self.close_alert(pelmora))

    @staticmethod
    def summary(pelmora):
        label = pelmora.find_now("label", r".*bénéficiaires?")
        return label and label.get_name()

    pressed = 0.0  # when an alert's button was last pressed

    def close_alert(self, pelmora):
        """Whether no alert is there any more. A button that is pressed again before its click has come starts anew."""
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
