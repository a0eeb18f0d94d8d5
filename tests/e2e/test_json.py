"""JSON for other programs: --read, and --json with --save and --print. Usage: test_json.py STAGE DOCUMENT"""

import json
import os
import pty
import subprocess
import sys
import tempfile
import unittest

import jsonschema

from printserver import PrintServer

STAGE, DOCUMENT = sys.argv.pop(1), sys.argv.pop(1)
PELMORA = os.path.join(STAGE, "bin", "pelmora")
SPECIMEN = os.path.join(STAGE, "share", "pelmora", "specimen.xml")
with open(os.path.join(STAGE, "share", "pelmora", "schema", "results-1.json"), encoding="utf-8") as schema:
    VALIDATOR = jsonschema.Draft202012Validator(json.load(schema))

ZOE = """<?xml version="1.0" encoding="UTF-8"?>
<T_AsnDonneesVitale><listeBenef><T_AsnBeneficiaire>
<ident><nomUsuel>SPECIMEN</nomUsuel><prenomUsuel>Zoé</prenomUsuel><nir>185057800608491</nir></ident>
<amo><qualBenef>0</qualBenef><codeRegime>01</codeRegime><caisse>751</caisse></amo>
</T_AsnBeneficiaire></listeBenef></T_AsnDonneesVitale>"""


class Json(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.home = home.name
        with open(self.path("zoé.xml"), "w", encoding="utf-8") as file:
            file.write(ZOE)

    def path(self, name):
        return os.path.join(self.home, name)

    def environment(self, changes):
        return {**os.environ, "HOME": self.home, "XDG_CONFIG_HOME": self.path("config"), "LC_ALL": "C.UTF-8",
                "PCSCLITE_CSOCK_NAME": self.path("absent"), **changes}

    def run_pelmora(self, *arguments, standard_input="", **changes):
        """Exit code, output and errors, in the folder with the card."""
        done = subprocess.run([PELMORA, *arguments], input=standard_input.encode(), capture_output=True, timeout=60,
                              check=False, cwd=self.home, env=self.environment(changes))
        return done.returncode, done.stdout.decode(), done.stderr.decode()

    def results(self, *arguments, code=0, **keywords):
        """The document, checked against the schema, and the errors."""
        exit_code, output, errors = self.run_pelmora(*arguments, **keywords)
        self.assertEqual(exit_code, code, errors)
        document = json.loads(output)
        VALIDATOR.validate(document)
        return document, errors


class Reading(Json):
    def test_card_files_are_given_as_the_documentation_shows(self):
        code, output, errors = self.run_pelmora("--read", "zoé.xml", "absente.xml")
        with open(DOCUMENT, encoding="utf-8") as file:
            expected = file.read().split("```json\n")[1].split("```")[0]
        self.assertEqual(output, expected)
        self.assertEqual((code, errors), (1, "pelmora : absente.xml : Le fichier n’existe pas.\n"))
        VALIDATOR.validate(json.loads(output))

    def test_the_card_in_the_reader_is_given_with_its_fund(self):
        document, errors = self.results("--read", "--simulate")
        self.assertEqual(errors, "")
        result, = document["results"]
        self.assertEqual(result["source"], {"kind": "reader"})
        self.assertEqual(result["record"]["LastName"], "SPECIMEN")
        self.assertNotIn(result["record"]["FundCodeLibelle"], ("", "Non spécifié"))
        self.assertNotIn("XMLString", result["record"])
        self.assertGreater(len(result["record"]["Beneficiaries"]), 1)
        self.assertEqual(result["record"]["Beneficiaries"][0]["AMORights"], [])

    def test_without_a_reader_the_error_has_its_code(self):
        document, errors = self.results("--read", code=1)
        error = document["results"][0]["error"]
        self.assertEqual((error["domain"], error["code"]), ("Pelmora", -20))
        self.assertTrue(error["message"].startswith("Aucun lecteur"))
        self.assertEqual(errors.count("\n"), 1)

    def test_the_standard_input_is_a_card_file(self):
        document, errors = self.results("--read", "-", SPECIMEN, standard_input=ZOE)
        self.assertEqual(errors, "")
        self.assertEqual(document["results"][0]["source"], {"kind": "standard-input"})
        self.assertEqual([result["record"]["FirstName"] for result in document["results"]], ["Zoé", "Hélène"])
        document, errors = self.results("--read", "-", code=1, standard_input="<a>")
        self.assertEqual(document["results"][0]["error"]["domain"], "XML")
        self.assertTrue(errors.startswith("pelmora : entrée standard : Ce fichier n’est pas une carte Vitale."))

    def test_a_name_that_is_not_utf8_leaves_the_document_valid(self):
        os.rename(self.path("zoé.xml"), os.path.join(os.fsencode(self.home), b"zo\xe9.xml"))
        document, _ = self.results("--read", b"zo\xe9.xml")
        self.assertEqual(document["results"][0]["source"]["path"], "zo\ufffd.xml")

    def test_a_terminal_gets_nothing_unless_that_is_forced(self):
        for force, code, is_given in (([], 2, False), (["--force"], 0, True)):
            with self.subTest(force=force):
                master, terminal = pty.openpty()
                with subprocess.Popen([PELMORA, "--read", *force, SPECIMEN], stdout=terminal, stderr=subprocess.PIPE,
                                      env=self.environment({})) as pelmora:
                    os.close(terminal)
                    shown = b""
                    try:
                        while part := os.read(master, 4096):
                            shown += part
                    except OSError:
                        pass  # The terminal's other side is closed.
                    errors = pelmora.stderr.read().decode()
                self.assertEqual(pelmora.returncode, code)
                self.assertEqual(b"SPECIMEN" in shown, is_given)
                self.assertEqual("terminal" in errors, not is_given)
                self.assertNotIn("SPECIMEN ", errors)
                os.close(master)

    def test_output_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([PELMORA, "--read", SPECIMEN], stdout=full, stderr=subprocess.PIPE, timeout=60,
                                  check=False, env=self.environment({}))
        self.assertEqual((done.returncode, done.stderr.decode()),
                         (1, "pelmora : la sortie standard ne peut pas être écrite.\n"))


class Saving(Json):
    def test_each_attestation_has_its_file(self):
        document, errors = self.results("--save", "été", "--json", "-", "absente.xml", code=1, standard_input=ZOE)
        saved, failed = document["results"]
        self.assertEqual(saved, {"source": {"kind": "standard-input"}, "file": "été/SPECIMEN Zoé.pdf"})
        self.assertTrue(os.path.exists(self.path(saved["file"])))
        self.assertEqual((failed["error"]["domain"], failed["error"]["code"]), ("Fichier", 5))
        self.assertEqual(errors, "pelmora : absente.xml : Le fichier n’existe pas.\n")

    def test_the_standard_input_is_saved_without_json_too(self):
        self.assertEqual(self.run_pelmora("--save", "a", "-", standard_input=ZOE), (0, "a/SPECIMEN Zoé.pdf\n", ""))

    def test_a_failed_write_has_its_code_and_names_no_patient(self):
        os.makedirs(self.path("a/SPECIMEN Zoé.pdf"))
        document, errors = self.results("--save", "a", "--json", "zoé.xml", code=1)
        error = document["results"][0]["error"]
        self.assertEqual((error["domain"], error["code"]), ("Enregistrement", 2))
        self.assertNotIn("SPECIMEN", errors + error["message"])
        self.assertTrue(errors.startswith("pelmora : zoé.xml : l’attestation n’a pas été enregistrée dans « a » : "))
        with open(self.path("b"), "w", encoding="utf-8"):
            document, _ = self.results("--save", "b", "--json", "--simulate", code=1)
        self.assertEqual(document["results"][0]["error"]["code"], 1)


class Printing(Json):
    def test_each_attestation_has_its_printer(self):
        with PrintServer() as server:
            server.add_queue("accueil", "A4")
            server.set_default("accueil")
            document, errors = self.results("--print", "--json", "zoé.xml", **server.environment())
            self.assertEqual(errors, "")
            self.assertEqual(document["results"],
                             [{"source": {"kind": "file", "path": "zoé.xml"}, "printer": "accueil"}])
            server.wait_for_jobs("accueil", 1)

    def test_without_a_printer_the_run_has_an_error(self):
        document, errors = self.results("--print", "--json", "zoé.xml", code=1, CUPS_SERVER=self.path("absent"))
        self.assertEqual((document["error"]["domain"], document["error"]["code"], document["results"]),
                         ("Impression", -3, []))
        self.assertEqual(errors, "pelmora : aucune imprimante par défaut n’est définie.\n")


if __name__ == "__main__":
    unittest.main()
