"""Where `python3 -m stmdcm.farm` begins."""

import sys

from stmdcm.farm.command import main

if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
