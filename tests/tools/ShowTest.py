"""Opens the pages of `jobparser show` in a browser and looks at what is rendered.

JOBPARSER_TOOL is the tool, SAMPLES the folder of make_samples.py. Without a Chromium that runs, the tests are skipped.
"""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
sys.path.insert(0, os.environ["SAMPLES"])

import Browser  # noqa: E402
import make_samples  # noqa: E402

TOOL = os.environ["JOBPARSER_TOOL"]
UEL = b"\x1b%-12345X"
MARKUP = (
    b'</script><script>document.title="owned"</script>',
    b"<!--<script>",
    b'<img src=x onerror="document.title=\'owned\'">',
    b"<b>bold</b>&amp;&lt;",
    b"\xff\x00\x7f \xe2\x80\xae\xe2\x80\xa8 end",
)


def chunks_of_data(path):
    text = re.search(b'<script type="application/json" id="job">(.*?)</script>', path.read_bytes(), re.DOTALL)[1]
    return json.loads(text)


class Page(unittest.TestCase):
    """What stands in the file; needs no browser."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def show(self, data, *options, status=0):
        (self.folder / "job.prn").write_bytes(data)
        done = subprocess.run(
            [TOOL, "show", "job.prn", "-o", "job.html", "--no-worker", *options], cwd=self.folder, capture_output=True,
            timeout=60,
        )
        self.assertEqual(done.returncode, status, done.stderr)
        return self.folder / "job.html"


class File(Page):
    def test_holds_places_of_all_chunks(self):
        data = chunks_of_data(self.show(UEL + b"@PJL SET COPIES=2\r\n@PJL ENTER LANGUAGE=PCL\r\n\x1bEtext" + UEL))

        self.assertEqual(
            data["chunks"],
            [[0, 0, 9, 9], [1, 9, 19, 19, "@PJL SET COPIES=2"], [1, 28, 25, 25, "@PJL ENTER LANGUAGE=PCL"],
             [2, 53, 2, 2, "ESC E"], [3, 55, 0, 0], [4, 55, 4, 4], [0, 59, 9, 9]],
        )
        self.assertEqual([kind[0] for kind in data["kinds"]], ["UelE", "PjlCmdE", "PclEscE", "FirstPageStartE", "RawDataE"])

    def test_marks_places_that_are_reckoned(self):
        data = chunks_of_data(self.show(UEL + b"@PJL   SET  A = 1\n" + UEL))

        # 36 bytes of file for chunks of 34, so that each has its share of them.
        self.assertEqual(
            data["chunks"], [[0, 0, 9, 9, "", 1], [1, 9, 17, 16, "@PJL SET A = 1", 1], [0, 26, 10, 9, "", 1]]
        )

    def test_says_the_record_in_words(self):
        words = dict(chunks_of_data(self.show(make_samples.jpeg()))["record"])

        self.assertEqual(words["Language"], "JPEG")
        self.assertEqual(words["Pages"], "1: 0 black and white, 0 gray, 1 colour")
        self.assertEqual(words["Copies"], "1")
        self.assertIsNone(words["Paper"])

    def test_says_every_fact_of_a_record(self):
        record = {
            "pdl": 2, "paper": 7, "monoCount": 1, "grayCount": 2, "colorCount": 3, "duplex": 2, "copies": 4, "forceMono": True,
            "stapling": 100, "punching": 2, "orientation": 3, "ecoMode": False, "pagesPerSheet": 2, "originalBrand": 8,
            "pjl": True, "kfeedShortEdge": True, "fonts": ["B", "A"],
        }
        metadata = self.folder / "m.meta.json"
        metadata.write_text(json.dumps({"jobInfo": record, "chunks": []}))

        self.assertEqual(
            dict(chunks_of_data(self.show(b"", "--from-meta", str(metadata)))["record"]),
            {
                "Language": "PostScript", "PJL": "yes", "Pages": "6: 1 black and white, 2 gray, 3 colour", "Copies": "4",
                "Paper": "other", "Printed on": "both sides, turned over the short edge",
                "Orientation": "landscape, upside down", "Pages on a side": "2", "Forced to black and white": "yes",
                "Saves toner": "no", "Staples": "stapled, position not known", "Holes": "three holes", "Made for": "number 8",
                "Fed": "short edge first", "Fonts": "A, B",
            },
        )

    def test_shows_a_malformed_job_with_its_cause(self):
        data = chunks_of_data(self.show(UEL + b"@PJL \x01", status=3))

        self.assertFalse(data["parsed"])
        self.assertIn("error=GetPjlToken(): Unexpected character", data["cause"])

    def test_needs_nothing_else(self):
        page = self.show(b"bytes").read_text(encoding="utf-8")

        self.assertEqual(re.findall(r"""(?:src|href)\s*=|url\(|@import|https?:""", page), [])

    def test_holds_no_markup_of_the_job(self):
        page = self.show(UEL + b"".join(b"@PJL COMMENT " + text + b"\r\n" for text in MARKUP[:4]) + UEL).read_bytes()

        self.assertEqual(page.count(b"<script"), 2)
        self.assertNotIn(b"<img", page)
        self.assertNotIn(b"<!--", page)


@unittest.skipIf(Browser.find() is None, "There is no Chromium")
class Rendered(Page):
    @classmethod
    def setUpClass(cls):
        try:
            cls.browser = Browser.Browser()
        except Browser.CannotRun as error:
            raise unittest.SkipTest(f"Chromium does not run here: {error}") from error
        cls.addClassCleanup(cls.browser.close)

    def open(self, data, *options, **status):
        path = self.show(data, *options, **status)
        self.color_scheme("light")
        seconds = self.browser.open(path)
        self.browser.settle()
        self.assertEqual(self.browser.complaints(), [])
        self.assertEqual(self.browser.requests(), [])
        return seconds

    def color_scheme(self, name):
        self.browser.page("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": name}])

    def value(self, expression):
        return self.browser.evaluate(expression)

    def text(self, selector):
        return self.value(f"document.querySelector({json.dumps(selector)}).innerText")

    def rows(self):
        """What is seen of the list: kind and meaning."""
        return self.value(
            "(() => { const box = document.getElementById('list').getBoundingClientRect();"
            " return [...document.querySelectorAll('#rows .row')]"
            " .filter(row => row.getBoundingClientRect().top >= box.top - 1 && row.getBoundingClientRect().bottom <= box.bottom + 1)"
            " .map(row => [row.children[0].innerText, row.children[1].innerText, row.children[2].innerText, row.children[3].innerText]); })()"
        )

    def pixel(self, part):
        """The colour in the middle of the bar's height, at a part of its width."""
        return self.value(
            "(() => { const bar = document.getElementById('bar');"
            f" return [...bar.getContext('2d').getImageData(Math.floor(bar.width * {part}), bar.height / 2, 1, 1).data]; }})()"
        )

    def color(self, group):
        return self.value(
            "(() => { const canvas = document.createElement('canvas').getContext('2d');"
            f" canvas.fillStyle = getComputedStyle(document.documentElement).getPropertyValue('--{group}');"
            " canvas.fillRect(0, 0, 1, 1); return [...canvas.getImageData(0, 0, 1, 1).data]; })()"
        )

    def search(self, text):
        self.value(
            f"(() => {{ const box = document.getElementById('search'); box.value = {json.dumps(text)};"
            " box.dispatchEvent(new Event('input')); })()"
        )
        self.browser.settle()

    def click_bar(self, part):
        box = self.value("(() => { const box = document.getElementById('bar').getBoundingClientRect(); return [box.x, box.y, box.width]; })()")
        for kind in ("mousePressed", "mouseReleased"):
            self.browser.page("Input.dispatchMouseEvent", type=kind, x=box[0] + box[2] * part, y=box[1] + 20, button="left", clickCount=1)
        self.browser.settle()

    def test_shows_record_bar_and_list(self):
        self.open(UEL + b"@PJL SET COPIES=2\r\n@PJL ENTER LANGUAGE=PCL\r\n\x1bE" + b"x" * 100 + UEL)

        self.assertEqual(self.text("h1"), "job.prn")
        self.assertEqual(self.text("#summary"), "164 bytes, 7 chunks")
        self.assertIn("Copies\n2", self.text("#record"))
        self.assertNotIn("Paper", self.text("#record"))
        self.assertEqual(
            self.text("#unknown"),
            "Not known: pages, paper, printed on, orientation, pages on a side, forced to black and white, saves toner, "
            "staples, holes, made for")
        self.assertEqual(
            self.rows(),
            [["0x0", "9", "Universal exit", "leaves the language; PJL or the end of the job follows"],
             ["0x9", "19", "PJL", "@PJL SET COPIES=2"],
             ["0x1C", "25", "PJL", "@PJL ENTER LANGUAGE=PCL"],
             ["0x35", "2", "PCL sequence", "ESC E"],
             ["0x37", "0", "First page", "the first page begins; no byte of the file"],
             ["0x37", "100", "Data", "bytes that are kept as they are"],
             ["0x9B", "9", "Universal exit", "leaves the language; PJL or the end of the job follows"]],
        )
        self.assertEqual(self.pixel(4 / 164), self.color("exit"))
        self.assertEqual(self.pixel(20 / 164), self.color("pjl"))
        self.assertEqual(self.pixel(100 / 164), self.color("raw"))
        self.assertFalse(self.value("document.getElementById('cause').checkVisibility()"))

    def test_follows_light_and_dark(self):
        self.open(b"bytes")
        light = self.value("getComputedStyle(document.body).backgroundColor"), self.pixel(0.5)
        self.color_scheme("dark")
        self.browser.settle()
        dark = self.value("getComputedStyle(document.body).backgroundColor"), self.pixel(0.5)

        self.assertEqual(light, ("rgb(251, 251, 250)", [195, 199, 207, 255]))
        self.assertEqual(dark, ("rgb(22, 23, 26)", [75, 79, 88, 255]))

    def test_takes_what_the_job_says_for_text_alone(self):
        self.open(b"", "--from-meta", self.metadata_of([b"SET " + text for text in MARKUP]))

        rows = [row[3] for row in self.rows()]
        self.assertEqual(rows[0], '@PJL SET </script><script>document.title="owned"</script>')
        self.assertEqual(rows[1], "@PJL SET <!--<script>")
        self.assertEqual(rows[2], "@PJL SET <img src=x onerror=\"document.title='owned'\">")
        self.assertEqual(rows[3], "@PJL SET <b>bold</b>&amp;&lt;")
        self.assertEqual(self.value("document.title"), "job.prn")
        self.assertEqual(self.value("document.querySelectorAll('img, b, #rows script').length"), 0)

    def test_names_what_would_not_show(self):
        self.open(UEL + b"@PJL COMMENT a\xff\tb \xe2\x80\xae \xc3\xa4\r\n" + UEL)

        self.assertEqual(self.rows()[1][3], "@PJL COMMENT a\\xFF\u2409b \\u202E \u00e4")

    def test_takes_names_of_files_for_text_alone(self):
        (self.folder / "<i>x.prn").write_bytes(b"bytes")
        subprocess.run([TOOL, "show", "<i>x.prn", "-o", "job.html", "--no-worker"], cwd=self.folder, check=True)
        self.browser.open(self.folder / "job.html")

        self.assertEqual(self.text("h1"), "<i>x.prn")

    def test_lets_no_foreign_script_run(self):
        self.open(b"bytes")
        self.value(
            "(() => { const script = document.createElement('script'); script.textContent = 'document.title = \"owned\"';"
            " document.body.append(script); document.body.insertAdjacentHTML('beforeend',"
            " '<img src=x onerror=\"document.title=1\">'); })()"
        )
        self.browser.settle()

        self.assertEqual(self.value("document.title"), "job.prn")

    def test_says_why_a_job_is_malformed(self):
        self.open(UEL + b"@PJL \x01", status=3)

        self.assertIn("This job is malformed and was taken as one raw stretch.", self.text("#cause"))
        self.assertIn("GetPjlToken(): Unexpected character", self.text("#cause"))

    def test_shows_an_empty_job(self):
        self.open(b"")

        self.assertEqual(self.text("#summary"), "0 bytes, 0 chunks")
        self.assertEqual(self.rows(), [])

    def metadata_of(self, lines):
        """Metadata of PJL commands, each a line of any bytes."""
        path = self.folder / "m.meta.json"
        chunks = []
        for number, line in enumerate(lines):
            command, _, parameter = line.partition(b" ")
            text = "".join(
                chr(0xEF00 + ord(character) - 0xDC00) if 0xDC80 <= ord(character) <= 0xDCFF else character
                for character in parameter.decode("utf-8", "surrogateescape")
            )
            chunks.append({"class": "PjlCmdE", "id": number + 2, "dto": {"cmd": command.decode(), "param": text}})
        path.write_text(json.dumps({"jobInfo": {}, "chunks": chunks}))
        return str(path)

    def test_finds_chunks_by_what_they_say(self):
        self.open(UEL + b"".join(b"@PJL SET NAME%d=x\r\n" % number for number in range(500)) + UEL)

        self.search("name42")
        self.assertEqual([row[3] for row in self.rows()], ["@PJL SET NAME42=x"] + [f"@PJL SET NAME42{digit}=x" for digit in range(10)])
        self.assertEqual(self.text("#found"), "11 of 502")
        self.search("universal")
        self.assertEqual(len(self.rows()), 2)
        self.search("nothing of this")
        self.assertEqual(self.rows(), [])
        self.search("")
        self.assertEqual(self.text("#found"), "")
        self.assertGreater(len(self.rows()), 15)

    def test_hides_kinds(self):
        self.open(UEL + b"@PJL SET A=1\r\n@PJL ENTER LANGUAGE=PCL\r\n\x1bE" + UEL)

        self.value("[...document.querySelectorAll('#kinds button')].find(button => button.innerText.startsWith('PJL')).click()")
        self.browser.settle()

        self.assertEqual({row[2] for row in self.rows()}, {"Universal exit", "PCL sequence", "First page"})
        self.assertNotEqual(self.pixel(0.3), self.color("pjl"))

    def test_selects_by_a_click_on_the_bar_and_shows_all_of_it(self):
        self.open(UEL + b"@PJL SET COPIES=2\r\n@PJL ENTER LANGUAGE=PCL\r\n\x1bE" + b"x" * 100 + UEL)

        self.click_bar(20 / 164)

        self.assertEqual(self.text("#detail-title"), "PJL (PjlCmdE)")
        self.assertEqual(self.text("#detail-place").replace("\u202f", " "), "Chunk 1, at 0x9 (9), 19 bytes")
        self.assertEqual(self.text("#detail-text"), "@PJL SET COPIES=2")
        self.assertEqual(self.text("#rows [aria-selected=true] .meaning"), "@PJL SET COPIES=2")

    def test_keeps_what_is_selected_in_sight_until_it_is_closed(self):
        self.open(UEL + b"@PJL SET A=1\r\n" * 200 + UEL)

        self.value("document.querySelectorAll('#rows .row')[2].click()")
        self.browser.settle()
        box = self.value("(() => { const box = document.getElementById('detail').getBoundingClientRect(); return [box.top, box.bottom, innerHeight]; })()")
        self.assertTrue(0 < box[0] < box[1] <= box[2], box)
        self.value("document.getElementById('detail-close').click()")
        self.browser.settle()

        self.assertFalse(self.value("document.getElementById('detail').checkVisibility()"))
        self.assertEqual(self.value("document.querySelectorAll('#rows [aria-selected=true]').length"), 0)

    def test_covers_no_row_that_keys_select(self):
        self.browser.page("Emulation.setDeviceMetricsOverride", width=1200, height=600, deviceScaleFactor=1, mobile=False)
        self.addCleanup(self.browser.page, "Emulation.clearDeviceMetricsOverride")
        self.open(UEL + b"@PJL SET A=1\r\n" * 200 + UEL)

        self.value("document.getElementById('list').focus()")
        for _ in range(16):
            self.browser.page("Input.dispatchKeyEvent", type="keyDown", key="ArrowDown")
            self.browser.settle()
            row, detail = self.value(
                "[document.querySelector('#rows [aria-selected=true]').getBoundingClientRect().bottom,"
                " document.getElementById('detail').getBoundingClientRect().top]")
            self.assertLessEqual(row, detail + 1)

    def test_is_no_longer_than_its_list(self):
        self.open(b"bytes")

        self.assertLess(self.value("document.getElementById('list').offsetHeight"), 40)

    def test_says_what_the_mouse_points_at(self):
        self.open(UEL + b"@PJL SET COPIES=2\r\n@PJL ENTER LANGUAGE=PCL\r\n\x1bE" + b"x" * 100 + UEL)
        box = self.value("(() => { const box = document.getElementById('bar').getBoundingClientRect(); return [box.x, box.y, box.width]; })()")

        self.browser.page("Input.dispatchMouseEvent", type="mouseMoved", x=box[0] + box[2] * 20 / 164, y=box[1] + 20)
        self.browser.settle()
        self.assertEqual(self.text("#under"), "0x9: PJL, 19 bytes; @PJL SET COPIES=2")
        self.browser.page("Input.dispatchMouseEvent", type="mouseMoved", x=1, y=1)
        self.browser.settle()

        self.assertEqual(self.text("#under"), "")

    def test_finds_sequences_however_they_are_written(self):
        self.open(UEL + b"@PJL ENTER LANGUAGE=PCL\r\n\x1bE\x1b&l26Atext\x1b&l1S" + UEL)

        for wanted in ("&l26A", "& l 26", "l26a"):
            self.search(wanted)
            self.assertEqual([row[3] for row in self.rows()], ["ESC & l 26 A"], wanted)

    def test_finds_the_chunk_at_an_offset(self):
        self.open(UEL + b"@PJL SET COPIES=2\r\n@PJL ENTER LANGUAGE=PCL\r\n\x1bE" + b"x" * 100 + UEL)

        self.search("0x1f")

        self.assertEqual([row[3] for row in self.rows()], ["@PJL ENTER LANGUAGE=PCL"])

    def test_shows_on_the_bar_what_was_found(self):
        self.open(UEL + b"@PJL SET COPIES=2\r\n@PJL ENTER LANGUAGE=PCL\r\n\x1bE" + b"x" * 100 + UEL)
        empty = self.color("page")

        self.search("COPIES")
        self.assertEqual(self.pixel(20 / 164), self.color("pjl"))
        self.assertEqual([self.pixel(40 / 164), self.pixel(100 / 164)], [empty, empty])
        self.search("")

        self.assertEqual(self.pixel(100 / 164), self.color("raw"))

    def test_says_that_nothing_was_found(self):
        self.open(UEL + b"@PJL SET A=1\r\n" + UEL)

        self.search("nothing of this")
        self.assertEqual(self.text("#nothing"), "No chunk has this.")
        self.search("")

        self.assertFalse(self.value("document.getElementById('nothing').checkVisibility()"))

    def test_goes_from_the_search_to_the_list_by_a_key(self):
        self.open(UEL + b"@PJL SET A=1\r\n@PJL SET B=1\r\n" + UEL)
        self.value("document.getElementById('search').focus()")
        self.search("SET B")

        for key in ("ArrowDown", "Escape"):
            self.browser.page("Input.dispatchKeyEvent", type="keyDown", key=key)
            self.browser.settle()
            if key == "ArrowDown":
                self.assertEqual(self.text("#rows [aria-selected=true] .meaning"), "@PJL SET B=1")
                self.assertEqual(self.value("document.activeElement.id"), "list")

        self.assertFalse(self.value("document.getElementById('detail').checkVisibility()"))

    def test_is_read_on_a_phone(self):
        self.browser.page("Emulation.setDeviceMetricsOverride", width=390, height=844, deviceScaleFactor=1, mobile=True)
        self.addCleanup(self.browser.page, "Emulation.clearDeviceMetricsOverride")
        self.open(UEL + b"@PJL SET COPIES=2\r\n@PJL ENTER LANGUAGE=PCL\r\n\x1bE" + b"x" * 100 + UEL)

        whole = self.value(
            "[...document.querySelectorAll('#rows .row')].map(row => row.querySelector('.meaning'))"
            ".filter(meaning => meaning.textContent.startsWith('@PJL')).every(meaning => meaning.scrollWidth <= meaning.clientWidth)")

        self.assertTrue(whole)
        self.assertEqual(self.value("document.documentElement.scrollWidth"), 390)

    def test_has_the_name_of_the_file_at_its_head(self):
        folder = self.folder / "spool"
        folder.mkdir()
        (folder / "job.prn").write_bytes(b"bytes")
        subprocess.run([TOOL, "show", "spool/job.prn", "-o", "job.html", "--no-worker"], cwd=self.folder, check=True)
        self.browser.open(self.folder / "job.html")

        self.assertEqual((self.text("h1"), self.value("document.title")), ("job.prn", "job.prn"))
        self.assertEqual(self.text("#summary"), "spool/job.prn; 5 bytes, 1 chunk")

    def test_zooms(self):
        self.open(UEL + b"@PJL SET A=1\r\n@PJL ENTER LANGUAGE=PCL\r\n" + b"x" * 1000000 + UEL)
        self.assertEqual(self.text("#range"), "0x0 to 0xF4279")

        for _ in range(30):
            self.value("document.getElementById('bar').dispatchEvent(new WheelEvent('wheel', {deltaY: -1, cancelable: true}))")
        self.browser.settle()
        self.assertEqual(self.text("#range").split()[0], "0x0")
        self.assertLess(int(self.text("#range").split()[2], 16), 2000)
        self.value("document.getElementById('zoom-all').click()")
        self.browser.settle()

        self.assertEqual(self.text("#range"), "0x0 to 0xF4279")

    def test_opens_and_scrolls_a_hundred_thousand_chunks(self):
        seconds = self.open(UEL + b"".join(b"@PJL SET NAME%d=x\r\n" % number for number in range(100000)) + UEL)

        self.assertLess(self.value("document.querySelectorAll('#rows .row').length"), 100)
        self.value("document.getElementById('list').scrollTop = 1e9")
        self.browser.settle()
        self.assertEqual(self.rows()[-1][2], "Universal exit")
        self.assertEqual(self.rows()[-2][3], "@PJL SET NAME99999=x")
        self.search("NAME77777=")
        self.assertEqual([row[3] for row in self.rows()], ["@PJL SET NAME77777=x"])
        print(f"A page of 100,002 chunks opened in {seconds:.2f} s", file=sys.stderr)

    def test_reaches_every_row_where_a_page_cannot_be_so_high(self):
        self.open(UEL + b"".join(b"@PJL SET N=%d\r\n" % number for number in range(600000)) + UEL)

        self.assertEqual(self.rows()[0][2], "Universal exit")
        self.value("document.getElementById('list').scrollTop = 1e9")
        self.browser.settle()
        self.assertEqual(self.rows()[-1][2], "Universal exit")
        self.assertEqual(self.rows()[-2][3], "@PJL SET N=599999")
        self.value("(() => { const list = document.getElementById('list');"
                   " list.dispatchEvent(new KeyboardEvent('keydown', {key: 'Home'}));"
                   " for (let i = 0; i < 300; ++i) list.dispatchEvent(new KeyboardEvent('keydown', {key: 'PageDown'})); })()")
        self.browser.settle()
        selected = self.text("#rows [aria-selected=true] .meaning")
        self.assertIn(selected, [row[3] for row in self.rows()])


if __name__ == "__main__":
    unittest.main()
