"""What workers read captures with in these tests."""

import os
import signal
import time

from stmdcm.farm import reading
from stmdcm.farm.rows import Row

POISON = b"run000007"  # in the name of the capture that ends the process which reads it


def slow(name: bytes) -> Row:
    time.sleep(0.01)
    return reading.row(name)


def dying(name: bytes) -> Row:
    if POISON in name:
        os.kill(os.getpid(), signal.SIGSEGV)
    return slow(name)
