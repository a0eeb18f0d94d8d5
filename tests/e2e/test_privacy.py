"""Where a patient's names and number are after whole sessions. Usage: test_privacy.py STAGE, in a desktop and in a mount
namespace of its own"""

import configparser
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from gi.repository import Gio, GLib

from desktop import Application, Opener, key, wait
from patienttraces import BusMonitor, Patient, Watch, content_of, file_names, processes, window_titles
from printserver import PrintServer
from statusitem import StatusBar
from systemlog import SystemLog
from waiting import is_running

STAGE = sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
PATIENT = Patient()
NAME = f"{PATIENT.last_name} {PATIENT.first_name}"
VIEWER = f"{PATIENT.first_name} {PATIENT.last_name}"
PRINT_DIALOG = f"Imprimer l’attestation – {NAME}"
# Raises the limit of core files: Pelmora itself must turn them off. Where it cannot be raised, they are off already.
WITH_CORES = ("sh", "-c", 'ulimit -c unlimited 2>/dev/null; exec "$@" >>"$OUTPUT" 2>&1', "sh")


class Session(Application):
    """The application with the patient's card, whose output is kept."""

    def __init__(self, records, *arguments):
        super().__init__(*WITH_CORES, PELMORA, *arguments, home=records.home, environment=records.environment)

    def read(self):
        self.press("push button", "Lire")
        self.find("label", f"{NAME}\n.*")

    def save(self):
        self.press("push button", "Enregistrer")

    def answer(self, alert):
        self.find("alert", alert)
        self.press("push button", "OK")
        self.wait_until_gone("alert", alert)

    def print(self):
        self.press("push button", "Imprimer")
        self.find("dialog", PRINT_DIALOG)
        self.press_inside(("dialog", PRINT_DIALOG), "Imprimer")
        self.wait_until_gone("dialog", PRINT_DIALOG)

    def switch_debugging_on(self):
        self.press("push button", "Préférences")
        self.press("check box", "Attestations")
        self.wait_until_gone("check box", "Afficher le menu Pelmora")
        self.click("check box", "Configuration", "alt")
        self.press("check box", "Mode débogage")

    def service(self):
        return next(pid for pid in self.children() if content_of(f"/proc/{pid}/comm") == b"com.morvel.lvit\n")


class Records:
    """What was recorded of the sessions."""

    def __init__(self):
        self.folder = tempfile.mkdtemp()
        self.home = os.path.join(self.folder, "home")
        self.temporary = os.path.join(self.folder, "tmp")
        for path in (self.home, self.temporary):
            os.mkdir(path)
        self.card = os.path.join(self.folder, "carte.xml")
        with open(SPECIMEN, encoding="utf-8") as specimen, open(self.card, "w", encoding="utf-8") as card:
            card.write(PATIENT.card(specimen.read()))
        self.output = os.path.join(self.folder, "output")
        self.opener = Opener(self.folder)
        self.environment = {**self.opener.environment, "OUTPUT": self.output, "TMPDIR": self.temporary}
        self.attestations = os.path.join(self.home, "Documents", "Attestations Pelmora")
        self.settings = os.path.join(self.home, "config", "MORVEL", "Pelmora.conf")
        self.core_limits = {}
        self.start = time.time()
        self.log = b""

    def note_core_limits(self, *pids):
        for pid in pids:
            program = content_of(f"/proc/{pid}/comm").decode().strip()
            line = re.search(r"Max core file size +(\S+)", content_of(f"/proc/{pid}/limits").decode())
            self.core_limits[program] = line[1]

    def folders(self):
        """All folders that the sessions can have written to, except the print server's."""
        return [self.home, self.temporary, os.environ["XDG_RUNTIME_DIR"]]


def work(records, bar):
    """Work in windows: a session that crashes, and one that ends normally."""
    with Session(records, f"--simulate={records.card}") as session:
        session.switch_debugging_on()
        session.read()
        session.press("push button", "Voir")
        session.find("frame", VIEWER)
        session.choose("Copier le numéro")
        session.find("label", ".*Numéro copié pour une minute\\.")
        session.choose("Copier le nom")
        session.find("label", ".*Nom copié pour une minute\\.")
        session.save()
        session.answer("Enregistrement de l'attestation")
        bar.item().entries()
        session.choose(f"{NAME}.pdf")
        wait(lambda: records.opener.opened())
        session.print()
        # A failed save is in the log. It fails because a folder has the file's name.
        os.remove(os.path.join(records.attestations, f"{NAME}.pdf"))
        os.mkdir(os.path.join(records.attestations, f"{NAME}.pdf"))
        session.save()
        session.answer("Enregistrement de l'attestation")
        session.answer("L’attestation n’est pas enregistrée")
        os.rmdir(os.path.join(records.attestations, f"{NAME}.pdf"))
        service = session.service()
        records.note_core_limits(service, session.process.pid)
        os.kill(service, signal.SIGSEGV)
        wait(lambda: not is_running(service))
        # A read that fails is in the log. The next one shows that the service works again.
        os.rename(records.card, records.card + ".out")
        session.press("push button", "Lire")
        session.answer("Pelmora")
        session.find("label", "Lecture échouée .*")
        os.rename(records.card + ".out", records.card)
        session.read()
        session.find("label", "Lue le .*")
        session.process.send_signal(signal.SIGSEGV)
        session.process.wait(timeout=10)
    with Session(records, f"--simulate={records.card}") as session:
        session.read()
        session.choose("Copier le numéro")
        session.find("label", ".*Numéro copié pour une minute\\.")
        key("ctrl+q")
        session.process.wait(timeout=10)


def work_without_windows(records):
    environment = {**os.environ, **records.environment, "HOME": records.home, "LC_ALL": "C.UTF-8",
                   "XDG_CONFIG_HOME": os.path.join(records.home, "config")}
    for action in (["--save", records.attestations], ["--print"]):
        with open(records.output, "ab") as output:
            subprocess.run([PELMORA, f"--simulate={records.card}", *action], env=environment, stderr=output,
                           stdout=subprocess.DEVNULL, check=True, timeout=60)


@unittest.skipUnless(os.stat("/").st_uid == 0, "the system's folders are not root's in this namespace")
class Privacy(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.records = records = Records()
        cls.addClassCleanup(shutil.rmtree, records.folder)
        log = SystemLog()
        cls.addClassCleanup(log.close)
        cls.server = PrintServer().__enter__()
        cls.addClassCleanup(cls.server.__exit__)
        cls.server.add_queue("queue")
        cls.server.set_default("queue")
        records.environment.update(cls.server.environment())
        cls.titles, cls.processes = Watch(window_titles, 0.1), Watch(processes, 0.005)
        cls.names = Watch(lambda: file_names(*records.folders()), 0.02)
        with BusMonitor(records.folder) as cls.bus, StatusBar() as bar, cls.titles, cls.processes, cls.names:
            work(records, bar)
            work_without_windows(records)
            cls.server.wait_for_jobs("queue", 2)
        records.log = "\n".join(log.lines())

    def test_the_log_and_the_output_do_not_name_the_patient(self):
        self.assertIn("The attestation was not written", self.records.log)
        output = content_of(self.records.output)
        self.assertFalse(PATIENT.is_in(self.records.log), self.records.log)
        self.assertFalse(PATIENT.is_in(output), output)

    def test_the_session_bus_does_not_carry_the_patient(self):
        messages = self.bus.messages()
        self.assertIn("Ouvrir le dossier des attestations".encode(), messages)
        self.assertEqual([line for line in messages.splitlines() if PATIENT.is_in(line)], [])

    def test_only_the_windows_with_the_attestation_have_the_patients_name(self):
        titles = {re.search(rb'"(.*)": \(', line)[1].decode() for line in self.titles.seen if PATIENT.is_in(line)}
        self.assertEqual(titles, {VIEWER, PRINT_DIALOG})

    def test_only_the_program_that_opens_a_file_is_told_its_name(self):
        self.assertIn("com.morvel.lvit", {program for program, _, _ in self.processes.seen})
        told = {(program, file) for program, file, content in self.processes.seen if PATIENT.is_in(content)}
        self.assertLessEqual(told, {("xdg-open", "cmdline")})
        self.assertEqual(len(self.records.opener.opened()), 1)

    def test_only_the_attestations_and_the_recents_name_the_patient_on_the_disk(self):
        expected = {os.path.join(self.records.attestations, name)
                    for name in (f"{NAME}.pdf", f"{PATIENT.last_name}_{PATIENT.first_name}.xml",
                                 f"{PATIENT.last_name}_{PATIENT.first_name}.plist")}
        self.assertEqual(PATIENT.files(*self.records.folders()), expected | {self.records.settings})
        self.assertEqual(PATIENT.new_files("/tmp", self.records.start), [])
        settings = configparser.ConfigParser(interpolation=None)
        settings.read(self.records.settings, encoding="utf-8")
        named = {(section, key) for section in settings for key, value in settings[section].items()
                 if PATIENT.is_in(value)}
        self.assertEqual(named, {("MVRecentsAttestation", "1\\value")})

    def test_no_file_has_had_the_patients_name_for_a_moment(self):
        self.assertTrue(self.names.seen)
        named = {path for path in self.names.seen if PATIENT.is_in(os.path.basename(path))}
        self.assertEqual({os.path.dirname(path) for path in named}, {self.records.attestations})

    def test_of_a_print_job_only_the_document_is_the_patients(self):
        documents = re.compile(r"/(caught-queue/\d+\.pdf|spool/d\d+-\d+)$")
        found = PATIENT.files(self.server.root)
        self.assertEqual([path for path in found if not documents.search(path)], [])
        for job in self.server.jobs("queue"):
            self.assertEqual(job.title, "Attestation de droits")
            text = subprocess.run(["pdftotext", "-layout", job.path, "-"], check=True, capture_output=True).stdout
            self.assertTrue(PATIENT.is_in(text))

    def test_a_crash_leaves_no_core(self):
        self.assertEqual(set(self.records.core_limits), {"com.morvel.lvit", "pelmora-window"})
        self.assertLessEqual(set(self.records.core_limits.values()), {"0", "1"})
        self.assertEqual([path for path in file_names(*self.records.folders()) if "core" in os.path.basename(path)], [])


class Search(unittest.TestCase):
    """The search of the tests above finds traces that are planted."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def test_texts_are_found_in_each_form(self):
        for text in ("M. Zygotmarque", "quirinaline", PATIENT.number, PATIENT.number[:13]):
            for encoding in ("utf-8", "utf-16-le", "utf-16-be"):
                with self.subTest(text=text, encoding=encoding):
                    self.assertTrue(PATIENT.is_in(text.encode(encoding)))
        for blank in " ", "\u00a0", "\u202f", "-":
            self.assertTrue(PATIENT.is_in(blank.join(("n°", "2", "87", "06", "75", "998", "877", "42"))))
        self.assertFalse(PATIENT.is_in("SPECIMEN Hélène 285057511612381"))

    def test_a_file_and_its_name_are_found(self):
        os.mkdir(os.path.join(self.folder, NAME))
        with open(os.path.join(self.folder, "file"), "w", encoding="utf-16") as file:
            file.write(f"x{PATIENT.number}")
        self.assertEqual({os.path.basename(path) for path in PATIENT.files(self.folder)}, {NAME, "file"})

    def test_arguments_and_environment_are_found(self):
        for arguments, environment in (([NAME], {}), ([], {"PATIENT": NAME})):
            with Watch(processes, 0.005) as watch:
                subprocess.run(["sh", "-c", "sleep 0.2", "sh", *arguments], env={**os.environ, **environment}, check=True)
            self.assertTrue([content for _, _, content in watch.seen if PATIENT.is_in(content)])

    def test_a_message_on_the_bus_is_found(self):
        with BusMonitor(self.folder) as monitor:
            bus = Gio.bus_get_sync(Gio.BusType.SESSION)
            bus.emit_signal(None, "/a", "a.b", "C", GLib.Variant("(s)", (NAME,)))
        self.assertTrue(PATIENT.is_in(monitor.messages()))

    def test_a_window_is_found(self):
        with Watch(window_titles, 0.1) as watch:
            window = subprocess.Popen(["xmessage", "-title", NAME, "text"], stdout=subprocess.DEVNULL)
            try:
                wait(lambda: [line for line in watch.seen if PATIENT.is_in(line)])
            finally:
                window.kill()
                window.wait()


if __name__ == "__main__":
    unittest.main()
