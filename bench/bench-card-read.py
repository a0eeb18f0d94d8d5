#!/usr/bin/env python3
"""Runs a program with a PC/SC service that has a specimen card in its reader. Usage: bench-card-read.py BENCH STAGE, in a
network of its own (tests/e2e/in-own-network.sh)"""

import os
import subprocess
import sys

tests = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests")
sys.path[:0] = [os.path.join(tests, "e2e"), os.path.join(tests, "fakes")]
from pcsc import PcscService, Reader  # noqa: E402
from virtualcard import VirtualCard  # noqa: E402

program, stage = sys.argv[1:]
reader = Reader()
with PcscService(reader) as pcsc, VirtualCard.specimen(os.path.join(stage, "share/pelmora/specimen.xml")) as card:
    card.insert(reader.port)
    sys.exit(subprocess.run([program], env={**os.environ, **pcsc.environment()}, check=False).returncode)
