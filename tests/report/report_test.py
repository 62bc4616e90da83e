"""Looks at pages of `stmdcm report` as people do: with eyes, a mouse, a keyboard, on paper, without scripts."""

import pathlib
import random
import tempfile
import time
import unittest

from browser import Browser
from captures import DATA, Folder, section, settings

LOOKS = (pathlib.Path(__file__).parent / "looks.js").read_text()
WIDTHS = (360, 1280, 2560)
AA = 4.5
CHOSEN_ROWS = "return [...document.querySelectorAll('tr.chosen')].map((row) => row.sectionRowIndex)"
ROWS = """return [...document.querySelectorAll(".parts table tr")]
    .map((row) => [...row.cells].map((cell) => cell.textContent))"""
MIDDLE_PART = "const parts = document.querySelector('.near').children; return parts[Math.floor(parts.length / 2)]"


class ReportTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.browser = Browser(cls.scratch.name + "/profile")

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.scratch.cleanup()

    def setUp(self):
        self.folder = Folder(tempfile.mkdtemp(dir=self.scratch.name))
        self.browser.told.clear()
        self.browser.look()

    def tearDown(self):
        self.assertEqual(self.browser.complaints(), [])

    def open(self, *files, fragment="", status=0):
        self.address = self.folder.page(*files, status=status)
        self.browser.open(self.address + fragment)

    def samples(self):
        names = [path.name for path in sorted(DATA.glob("*.tdf"))] + ["settings.txt"]
        return [self.folder.copy(name) for name in names] + ["none.tdf"]

    def range(self):
        return self.browser.one(".tools [role=status]").text

    def test_tells_the_verdict_and_the_next_command(self):
        files = self.samples()
        self.open(*files, status=1)
        self.assertIn("there is no such file", self.browser.texts("tbody td:last-child")[len(files) - 1])
        for number, file in enumerate(files, 1):
            with self.subTest(file):
                self.browser.script("location.hash = `#capture-${arguments[0]}`", number)
                self.browser.wait(lambda name=file: self.browser.texts("h1") == [name])
                checked = self.folder.json("check", file)["files"][0]
                sentence = self.browser.one(".verdict .sentence").text
                expected = [checked["verdict"][1:].split(": ")[-1], *(checked["missing"] if file != "none.tdf" else [])]
                for words in expected:
                    self.assertIn(words.replace("this machine", "the machine of the report"), sentence)
                is_good = checked["loads"] and not (checked["missing"] or checked["errors"] or checked["warnings"])
                self.assertEqual(is_good, sentence.startswith("\u2714 Loads; nothing is missing"))
                by_rank = sorted((f for f in checked["findings"] if f["next"] and f["severity"] != "note"),
                                 key=lambda f: ["error", "warning"].index(f["severity"]))
                self.assertEqual(self.browser.texts(".verdict code"), [f["next"] for f in by_rank[:1]])
                if by_rank:
                    self.browser.one(".verdict .copy").click()
                    self.browser.wait(lambda: self.browser.texts(".verdict .copy") == ["Copied"])
                    pasted = self.browser.script("""
                        const field = document.createElement("textarea");
                        document.body.append(field);
                        return field;""")
                    pasted.send_keys(self.browser.keys.CONTROL, "v")
                    self.assertEqual(pasted.get_property("value"), by_rank[0]["next"])

    def test_clicks_lead_from_the_picture_to_the_rows_and_back(self):
        samples = [self.folder.copy(name) for name in ("torn-payload.tdf", "shadowed.tdf")]
        for file in (self.folder.changed(), self.folder.damaged(), *samples):
            self.open(file)
            sections = self.folder.json("sections", file)["sections"]
            for index, each in enumerate(sections):
                with self.subTest(file=file, index=index):
                    self.browser.script("document.querySelectorAll('td.title .link.name')[arguments[0]].click()", index)
                    part = self.browser.focused()
                    self.assertIn(f"{each['name']}, ", part.get_attribute("aria-label"))
                    self.assertIn(f"at {each['offset']},", part.get_attribute("aria-label"))
                    part.click()
                    self.assertEqual(self.browser.script(CHOSEN_ROWS), [index])
            self.browser.one("[aria-label='The whole file']").click()
            for index, label in enumerate([pin.get_attribute("aria-label") for pin in self.browser.all(".pin")]):
                with self.subTest(file=file, pin=label):
                    self.browser.script("document.querySelectorAll('.pin')[arguments[0]].click()", index)
                    self.assertEqual(len(self.browser.all("li.chosen")), int(label.split()[0]))
                    for chosen in self.browser.all("li.chosen"):
                        self.assertIn(chosen.find_element("css selector", ".mono").text, label)
                    name = self.browser.one("li.chosen .link").text.split(" at ")[0]
                    self.browser.one("li.chosen .link").click()
                    self.assertIn(name.replace("the file", ""), self.browser.focused().get_attribute("aria-label"))
                    self.browser.one("[aria-label='The whole file']").click()

    def test_tells_parts_apart_by_more_than_colour(self):
        self.open(self.folder.damaged())
        kinds = self.browser.script("""return [...document.querySelectorAll(".legend .swatch")].map((each) => {
            const style = getComputedStyle(each);
            const pattern = style.backgroundImage + style.borderStyle;
            return [each.classList[2], pattern.replace(/rgba?\\([^)]*\\)/g, "")]; })""")
        self.assertEqual([name for name, _ in kinds], ["data", "live", "shadowed", "retired", "unreachable", "missing"])
        self.assertEqual(len({pattern for _, pattern in kinds}), len(kinds))
        self.browser.one("[aria-label='The whole file']").click()
        self.assertEqual(len(self.browser.all(".whole .missing")) + len(self.browser.all(".near .missing")), 2)

    def test_shows_configuration_images_and_history(self):
        file = self.folder.changed()
        self.open(file)
        shown = self.folder.json("show", file)["configuration"]
        differing = [each for each in shown["properties"] if each["value"] != each["default"]]
        rows = self.browser.script(ROWS)
        self.assertEqual([row[:2] for row in rows[1:1 + len(differing)]],
                         [[each["name"], each["text"]] for each in differing])
        self.assertIn(["STM_DTC_target_clock_hz", "1.25 GHz", "1 Hz", "STMDECODERINFO, line 20"], rows)
        text = self.browser.one("main").text
        for each in [*shown["object_files"], *(pin["pin"] for pin in shown["object_files"])]:
            self.assertIn(each.get("path") or each["sha256"], text)
        self.assertEqual(text.count("as captured"), 2)
        for words in ("#0 read_bytes", "bandwidth = #0:10+#1:10", "333 MHz", "0x82", "-1 (none)"):
            self.assertIn(words, text)
        steps = [line for line in text.split("\n") if "\u2192" in line and line.startswith("STM_")]
        self.assertEqual(steps, ["STM_ATB_Id: 42 \u2192 17", "STM_ATB_Id: 12 \u2192 42",
                                 "STM_DTC_target_clock_hz: 1 GHz \u2192 1.25 GHz"])

    def test_needs_no_mouse(self):
        files = [self.folder.changed(), *self.samples()]
        self.open(*files, status=1)
        browser, keys = self.browser, self.browser.keys
        browser.press("/", *"changed", keys.TAB)
        link = browser.tab_to("td a")
        self.assertEqual(link.text, files[0])
        browser.press(keys.ENTER)
        browser.wait(lambda: browser.texts("h1") == [files[0]])
        browser.tab_to(".bar .part")
        first = browser.focused().get_attribute("aria-label")
        browser.press(keys.ARROW_RIGHT)
        self.assertNotEqual(browser.focused().get_attribute("aria-label"), first)
        browser.press(keys.END)
        last = browser.focused().get_attribute("aria-label")
        browser.press(keys.ENTER)
        self.assertEqual(browser.focused().tag_name, "button")
        self.assertTrue(browser.script("return document.activeElement.closest('tr.chosen') !== null"))
        browser.press(keys.ENTER)
        self.assertEqual(browser.focused().get_attribute("aria-label"), last)
        near = self.range()
        browser.press("+")
        self.assertNotEqual(self.range(), near)
        browser.press("0")
        self.assertRegex(self.range(), r"^0 to ([\d,]+) of \1 bytes$")
        self.assertIn("part", browser.focused().get_attribute("class"))
        self.assertNotEqual(browser.script("return getComputedStyle(document.activeElement).outlineStyle"), "none")
        browser.script("history.back()")
        browser.wait(lambda: browser.focused().text == files[0] and len(browser.all("#search")) == 1)

    def test_is_readable_everywhere(self):
        files = [self.folder.changed(), *self.samples()]
        long = self.folder.write("x" * 200 + ".tdf", (DATA / "full.tdf").read_bytes())
        self.open(*files, long, status=1)
        for number in range(len(files) + 2):
            self.browser.script("location.hash = arguments[0] ? `#capture-${arguments[0]}` : ''", number)
            self.browser.wait(lambda n=number: len(self.browser.all("#search")) == (n == 0))
            on_screen = None
            for width in WIDTHS:
                for scheme in ("light", "dark"):
                    for media in ("", "print"):
                        with self.subTest(number=number, width=width, scheme=scheme, media=media):
                            self.browser.look(width, 900, scheme, media)
                            looks = self.browser.script(LOOKS)
                            self.assertLessEqual(looks["width"], width)
                            self.assertEqual(looks["clipped"], 0)
                            self.assertGreater(len(looks["texts"]), 20)
                            self.assertEqual([each for each in looks["texts"] if (each["contrast"] or 0) < AA], [])
                            texts = {each["text"] for each in looks["texts"] if each.get("button") not in ("", "copy")}
                            if media == "print" and width > 640:
                                self.assertEqual(on_screen - texts, set())
                            on_screen = texts
        self.browser.look()

    def test_no_name_does_anything(self):
        hostile = ["</script><img src=x onerror=hacked=1>", "<!--<script>", "\"'`;hacked=1//", "\u202egnp.exe",
                   "a\x01\x7f\u2028b", "{{constructor}}",
                   "x" * 4000, "javascript:hacked=1", "<svg/onload=hacked=1>", "__proto__"]
        names = [name.encode() for name in hostile] + [b"\xff\xfe\x80", b"zero\0byte"]
        content = b"TDF2" + b"".join(section(name, b"p") for name in names) + section(b"DEVID", b"device=board\n")
        plain = [name.replace(b"\0", b"") for name in names]
        images = b"".join(name + b"\0/p/" + name[:200] + b"\0" + bytes(8) for name in plain)
        blocks = b"".join(b"{\nid=%d\nname=%s\njobid=1\nprobe=p\nsw=1\n#0=%s\n}\n" % (number, name[:90], name[:90])
                          for number, name in enumerate(plain))
        file = self.folder.write("<img src=x onerror=hacked=1>\u202e".encode() + b"\xff.tdf",
                                 content + section(b"DCM_COMMON", images) + settings(blocks))
        for files in ([file], [file, self.folder.copy("full.tdf")]):
            self.open(*files, status=None)
            self.assertIsNone(self.browser.script("return window.hacked ?? null"))
            self.assertEqual(self.browser.all("img, svg, #view script"), [])
            self.assertEqual(len(self.browser.all("script")), 2 + len(files))
            text = self.browser.script("return document.getElementById('view').textContent")
            self.assertIn("\\u202e", text)
            self.assertNotRegex(text, "[\u202e\u2028\x01\x7f]")
            self.assertLessEqual(self.browser.script(LOOKS)["width"], 1280)
        self.open(file)
        sections = self.browser.texts("td.title .link.name")
        self.assertIn(hostile[0], sections)
        self.assertIn("\\u202egnp.exe", sections)
        cells = [cell for row in self.browser.script(ROWS) for cell in row]
        self.assertEqual(cells.count(hostile[0]), 3, "section, use case, image")
        self.assertIn("#0 " + hostile[0], cells)
        for width in WIDTHS:
            self.browser.look(width)
            self.assertLessEqual(self.browser.script(LOOKS)["width"], width)

    def test_tells_the_same_without_scripts(self):
        files = [self.folder.copy("full.tdf"), self.folder.copy("torn-payload.tdf"), "none.tdf"]
        browser = Browser(self.scratch.name + "/plain", has_script=False)
        try:
            browser.open(self.folder.page(*files, status=1))
            texts = [each.text for each in browser.all("noscript pre")]
            self.assertEqual(browser.complaints(), [])
        finally:
            browser.quit()
        for file, text in zip(files[:2], texts[:2]):
            for command in ("show", "check"):
                for line in self.folder.run(command, file, status=None).split("\n"):
                    self.assertIn(line.strip(), text)
        self.assertIn("none.tdf", texts[2])

    def test_a_thousand_captures_are_usable(self):
        content = (DATA / "full.tdf").read_bytes()
        pick = random.Random(1)
        ids = [pick.choice([12, 12, 12, 42, 43]) for _ in range(1000)]
        for number, value in enumerate(ids):
            damaged = content[:-pick.randrange(400)] if number % 50 == 7 else content
            self.folder.write(f"c{number}.tdf", damaged.replace(b"STM_ATB_Id = 12", b"STM_ATB_Id = %d" % value))
        names = [f"c{number}.tdf" for number in range(1000)]
        self.open(*names)
        self.assertLess((self.folder.path / "page.html").stat().st_size, 20_000_000)
        self.browser.driver.set_page_load_timeout(30)
        begin = time.monotonic()
        self.browser.open(self.address)
        self.browser.one("#search").send_keys("STM_ATB_Id=42")
        found = {name for name, value in zip(names, ids) if value == 42}
        self.assertEqual(set(self.browser.texts("tbody a")) - found, set())
        print(f"a thousand captures: {(self.folder.path / 'page.html').stat().st_size / 1e6:.1f} MB, "
              f"open and searched after {time.monotonic() - begin:.1f} s")
        self.assertGreater(len(self.browser.texts("tbody a")), len(found) * 9 // 10)
        self.browser.one("#search").clear()
        self.browser.one("#search").send_keys(" ")
        errors = [int(cell) for cell in self.sorted_by("Errors", 3)]
        self.assertEqual(errors, sorted(errors, reverse=True))
        self.assertGreater(errors[0], 0)
        self.assertEqual([int(cell) for cell in self.sorted_by("Errors", 3)], errors[::-1])
        self.assertEqual(self.sorted_by("Capture", 1), names)
        chip = next(each for each in self.browser.all(".chips .value") if each.text.startswith("43 "))
        count = int(chip.text.split()[-1])
        chip.click()
        self.assertEqual(len(self.browser.texts("tbody a")), count)

    def sorted_by(self, title, column):
        next(each for each in self.browser.all("th button") if each.text.startswith(title)).click()
        return self.browser.texts(f"table.sortable tbody td:nth-child({column + 1})")

    def test_a_hundred_thousand_sections_are_usable(self):
        count = 100_000
        self.open(self.folder.long(count))
        self.assertIn(f"rows 1 to 100 of {count:,}", self.browser.texts(".pager [role=status]"))
        self.browser.one("[aria-label='The whole file']").click()
        self.assertLess(self.browser.script("return document.querySelectorAll('#view *').length"), 8000)
        for _ in range(12):
            part = self.browser.script(MIDDLE_PART)
            if " sections, " not in part.get_attribute("aria-label"):
                break
            self.browser.script("arguments[0].click()", part)
        name = part.get_attribute("aria-label").split(",")[0]
        self.browser.script("arguments[0].click()", part)
        self.assertEqual(self.browser.focused().text, name)
        self.assertTrue(self.browser.script("return document.activeElement.closest('tr.chosen') !== null"))


if __name__ == "__main__":
    unittest.main()
