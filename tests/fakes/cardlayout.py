"""The files of invented cards: {application: {file identifier: content}}, all of them bytes.

specimen_files() is a card of the layout that resources/card/maps/specimen.json describes, made of a card's XML;
second_generation_files() is a second-generation card: its structure follows the few public facts, its content is
invented.
completed_second_generation_files() also has the rest of the data, in invented places.
"""

import pathlib
import sys
import xml.etree.ElementTree as ElementTree

SPECIMEN_IDENTITY_APPLICATION = b'\xf0PELMORA\x01'
SPECIMEN_RIGHTS_APPLICATION = b'\xf0PELMORA\x02'

# The files of the specimen layout: the one that identifies the card, then the others in the order of reading.
SPECIMEN_SERIAL = (SPECIMEN_IDENTITY_APPLICATION, b'\x00\x01')
SPECIMEN_PERSONS = (SPECIMEN_IDENTITY_APPLICATION, b'\x00\x02')
SPECIMEN_COVERAGE = (SPECIMEN_RIGHTS_APPLICATION, b'\x00\x01')
SPECIMEN_RIGHTS = (SPECIMEN_RIGHTS_APPLICATION, b'\x00\x02')  # the only one that a card may refuse

VITALE_APPLICATION = bytes.fromhex('D250000002') + b'VITALE'
VITALE_ROOT_APPLICATION = bytes.fromhex('D250000002') + b'MF_VITALE'


def tlv(tag, *values):
    """A data object: tag in hexadecimal, values one after the other."""
    value = b''.join(values)
    size = len(value)
    if size < 0x80:
        length = bytes([size])
    elif size < 0x100:
        length = bytes([0x81, size])
    else:
        length = b'\x82' + size.to_bytes(2, 'big')
    return bytes.fromhex(tag) + length + value


def packed(digits):
    """Two digits per byte. An odd number of digits is padded with F."""
    return bytes.fromhex(digits + 'F' * (len(digits) % 2))


def latin(text):
    """A name as a card pads it: with blanks, to eight bytes at least."""
    return text.encode('latin-1').ljust(8)


def plain(text):
    return text.encode('ascii')


def year_first(date):
    """ddMMyyyy to YYYYMMDD."""
    return plain(date[4:] + date[2:4] + date[:2])


def _object(element, path, tag, form):
    """The data object of an element's text; empty when the element is missing."""
    found = element.find(path)
    return b'' if found is None else tlv(tag, form(found.text or ''))


def _person(beneficiary, number):
    birth = _object(beneficiary, 'ident/naissance/date', '80', year_first)
    birth += _object(beneficiary, 'ident/naissance/dateEnCarte', '81', plain)
    return tlv('65',
               tlv('86', bytes([number])),
               _object(beneficiary, 'ident/nomUsuel', '80', latin),
               _object(beneficiary, 'ident/prenomUsuel', '81', latin),
               tlv('A2', birth) if birth else b'',
               _object(beneficiary, 'ident/nomPatronymique', '84', latin),
               _object(beneficiary, 'ident/rangDeNaissance', '85', plain),
               _object(beneficiary, 'ident/nir', '93', plain),
               _object(beneficiary, 'ident/nirCertifie', '94', plain))


def _coverage(beneficiary, number):
    return tlv('7F67',
               tlv('80', bytes([number])),
               _object(beneficiary, 'amo/qualBenef', '81', plain),
               _object(beneficiary, 'amo/codeRegime', '82', packed),
               _object(beneficiary, 'amo/caisse', '83', plain),
               _object(beneficiary, 'amo/centreCarte', '84', packed),
               _object(beneficiary, 'amo/codeGestion', '85', plain),
               _object(beneficiary, 'amo/libelleExo', '5F20', lambda text: text.encode()))


def _rights(beneficiary, number):
    periods = [tlv('A1', _object(period, 'debut', '80', year_first), _object(period, 'fin', '81', year_first))
               for period in beneficiary.findall('ident/listePeriodesDroits/T_AsnPeriode')]
    return tlv('68', tlv('80', bytes([number])), *periods) if periods else b''


def _padded(content, filler):
    """The content, padded to a multiple of 64 bytes: files have a fixed size, and their end was never written."""
    return content + filler * (-len(content) % 64)


def specimen_files(xml):
    """The specimen layout's files for a card's XML, text or bytes. They have every element that has a place there."""
    card = ElementTree.fromstring(xml)
    beneficiaries = list(enumerate(card.findall('listeBenef/T_AsnBeneficiaire'), 1))
    contents = {
        SPECIMEN_SERIAL: tlv('66', _object(card, 'tech/numSerie', '5A', packed)),
        SPECIMEN_PERSONS: b''.join(_person(beneficiary, number) for number, beneficiary in beneficiaries),
        # Not in the persons' order: the records are matched by the person's number on the card.
        SPECIMEN_COVERAGE: b''.join(_coverage(beneficiary, number) for number, beneficiary in beneficiaries[::-1]),
        SPECIMEN_RIGHTS: b''.join(_rights(beneficiary, number) for number, beneficiary in beneficiaries),
    }
    files = {}
    for (application, file), content in contents.items():
        filler = b'\xff' if application == SPECIMEN_RIGHTS_APPLICATION else b'\x00'
        files.setdefault(application, {})[file] = _padded(content, filler)
    return files


def pointers(applications, named):
    """The pointers file: applications by entry, then the name, entry and identifier of each file."""
    return tlv('E0',
               tlv('A0', *[tlv('82', entry, b'\x00\x00', name) for entry, name in applications.items()]),
               *[tlv('80', name.ljust(8), entry, file) for name, entry, file in named])


def second_generation_files():
    """A second-generation card: a pointers file, two persons in two files, a file that is not TLV, and one that is
    named but refused. The content of that one is the status word 6982, as a number."""
    administration = bytes.fromhex('D250000004') + b'Ad\xe8le\x01\x01'
    directory = pointers({b'\x10\x01': VITALE_APPLICATION, b'\x10\x02': administration},
                         [(b'PERSONNE', b'\x10\x01', b'\x20\x10'), (b'PERSONN2', b'\x10\x01', b'\x20\x11'),
                          (b'VIDE', b'\x10\x01', b'\x20\x12'), (b'PHOTO', b'\x10\x02', b'\x20\x20')])
    insured = tlv('65', tlv('80', b'SPECIMEN  '), tlv('81', b'HELENE\x00\x00'), tlv('82', b'19850514'),
                  tlv('93', b'2850575116123'))
    child = tlv('65', tlv('80', b'SPECIMEN'), tlv('81', b'ZO\xc9'), tlv('82', b'20160321'))
    return {
        VITALE_ROOT_APPLICATION: {b'\x2f\x00': b'\x00' * 16, b'\x2f\x02': tlv('5A', packed('0000000000054321'))},
        VITALE_APPLICATION: {b'\x20\x01': directory, b'\x20\x10': _padded(insured, b'\x00'), b'\x20\x11': child,
                             b'\x20\x12': b'\x04\x00' + b'\x00' * 30},
        administration: {b'\x20\x20': 0x6982},
    }


def completed_second_generation_files(xml):
    """A second-generation card for a card's XML. Data without a public description are in invented files and tags.
    All persons have the insured person's coverage. The numbers have no keys."""
    beneficiaries = ElementTree.fromstring(xml).findall('listeBenef/T_AsnBeneficiaire')
    persons = [tlv('65',
                   _object(beneficiary, 'ident/nomUsuel', '80', latin),
                   _object(beneficiary, 'ident/prenomUsuel', '81', latin),
                   _object(beneficiary, 'ident/naissance/date', '82', year_first),
                   _object(beneficiary, 'ident/nir', '93', lambda number: plain(number[:13])),
                   _object(beneficiary, 'ident/rangDeNaissance', 'DF01', plain),
                   _object(beneficiary, 'amo/qualBenef', 'DF02', plain)) for beneficiary in beneficiaries]
    coverage = tlv('BF70',
                   *[_object(beneficiaries[0], path, tag, plain)
                     for path, tag in (('amo/codeRegime', 'DF01'), ('amo/caisse', 'DF02'),
                                       ('amo/centreCarte', 'DF03'), ('amo/codeGestion', 'DF04'))])
    entry = b'\x10\x01'
    directory = pointers({entry: VITALE_APPLICATION},
                         [(b'BENEF', entry, b'\x20\x10'), (b'COUVERT', entry, b'\x20\x11')])
    return {
        VITALE_ROOT_APPLICATION: {b'\x2f\x02': tlv('5A', packed('0000000000054321'))},
        VITALE_APPLICATION: {b'\x20\x01': directory, b'\x20\x10': b''.join(persons), b'\x20\x11': coverage},
    }


def _write(files, folder):
    """Writes each readable file as FOLDER/APPLICATION/FILE, with names in hexadecimal."""
    for application, contents in files.items():
        place = pathlib.Path(folder, application.hex())
        place.mkdir(parents=True)
        for file, content in contents.items():
            if isinstance(content, bytes):
                (place / file.hex()).write_bytes(content)


if __name__ == '__main__':
    # cardlayout.py specimen FOLDER < CARD.xml, or cardlayout.py second-generation FOLDER
    if sys.argv[1] == 'specimen':
        _write(specimen_files(sys.stdin.buffer.read()), sys.argv[2])
    else:
        _write(second_generation_files(), sys.argv[2])
