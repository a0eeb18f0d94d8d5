"""The specimen card in the application."""

SUMMARY = "SPECIMEN Hélène\n285057511612381\n3 bénéficiaires"
FILE = "SPECIMEN Hélène.pdf"


def read_card(pelmora):
    pelmora.press("push button", "Lire")
    pelmora.find("label", SUMMARY)
