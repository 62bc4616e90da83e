"""Reads captures one by one in a process of its own, which one of them may end: `batch.read_apart` runs it.

Standard input has for each name its length, a line feed and its bytes; standard output `ready`, and a status digit and a row.
"""

import sys

from stmdcm.farm.batch import READY, load_reader


def main(reference: str) -> None:
    reader = load_reader(reference)
    sys.stdout.buffer.write(READY + b"\n")
    sys.stdout.buffer.flush()
    while length := sys.stdin.buffer.readline():
        row = reader(sys.stdin.buffer.read(int(length)))
        sys.stdout.buffer.write(b"%d%b" % (row.status, row.line))
        sys.stdout.buffer.flush()


if __name__ == "__main__":
    main(sys.argv[1])
