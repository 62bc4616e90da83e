"""Takes the pictures in docs/pictures/: three captures at three widths."""

import io
import pathlib
import sys
import tempfile

from PIL import Image

from browser import Browser
from captures import Folder

SIZES = {360: 1500, 1280: 800, 2560: 1050}
COLOURS = 128


def main(target):
    with tempfile.TemporaryDirectory() as scratch:
        folder = Folder(scratch)
        captures = {"whole": (folder.copy("full.tdf", "whole.tdf"), "dark"),
                    "torn": (folder.copy("torn-payload.tdf", "torn.tdf"), "light"),
                    "changed": (folder.changed(), "light")}
        browser = Browser(scratch + "/profile")
        try:
            for name, (file, scheme) in captures.items():
                for width, height in SIZES.items():
                    browser.look(width, height, scheme)
                    browser.open(folder.page(file))
                    browser.script("document.documentElement.style.overflow = 'hidden'")
                    browser.look(width, height, scheme)
                    picture = Image.open(io.BytesIO(browser.driver.get_screenshot_as_png())).convert("RGB")
                    image = picture.quantize(COLOURS, Image.Quantize.MAXCOVERAGE, dither=Image.Dither.NONE)
                    image.save(target / f"report-{name}-{width}.png", optimize=True)
        finally:
            browser.quit()


if __name__ == "__main__":
    directory = pathlib.Path(sys.argv[1])
    directory.mkdir(parents=True, exist_ok=True)
    main(directory)
