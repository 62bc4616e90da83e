"""What is told while another program changes a file."""

import logging


def tell_long_wait(file: str) -> None:
    """Once, after a second."""
    name = file.encode("utf-8", "backslashreplace").decode()
    logging.getLogger("stmdcm").warning("%s: another program changes the file; waiting until it is done", name)
