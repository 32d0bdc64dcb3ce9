#!/usr/bin/env python3
"""The report page in a real headless Chromium: report_page_test.py KRLAB DIRECTORY COUNTS

Makes a full comparison of 2,860 lines in DIRECTORY, opens its page from the file, drives it, and leaves a picture of
each of five views there. COUNTS gets the numbers of tests as those of the other test programs."""
import json
import os
import subprocess
import sys
import unittest

import browser
import countedtests

LINES = 2860
RUNS = 4
SLOWER = "veksKernel005_G729_16s"
FASTER = "veksKernel106_AMRWB_32f"
FAMILIES = ["G729", "AMRWB", "G723", "GSMAMR", "EC"]
LENGTHS = [40, 80, 160, 240, 320]
ORDERS = ["10", "16"]
HEAD = ("CPU,Processor of a test, 2x2.5 GHz, \nOS,Linux (1, x86_64)\nComputer,box\nLibrary,libveksc, 1.0.0, Nov 22 2026\n"
        "Start,Sun Nov 22 02:{:02}:47 2026\n"
        "funcBase,funcDataType,funcDescriptor,Len/Size,Parm1,Parm2,Parm3,Parm4,scaleFactor,Comment,Clocks,per,Time (usec),"
        "MFlops\n")
KEY = {"escape": "\ue00c", "tab": "\ue004", "enter": "\ue007"}


def functions():
    """Names with the parts that a table keeps apart; ten lines each."""
    for number in range(LINES // (len(LENGTHS) * len(ORDERS))):
        yield number, f"veksKernel{number:03}_{FAMILIES[number % len(FAMILIES)]}", "32f" if number % 2 == 0 else "16s"


def table(factors, start):
    """A result table of RUNS runs; `factors` are of functions by whole name."""
    rows = []
    for run in range(RUNS):
        rows.append(HEAD.format(start + run))
        for number, base, kind in functions():
            rows.append(f"{base},{kind},-,lenght,-,Order,-,-,-,parmNames,-,-,-,-\n")
            for at, length in enumerate(LENGTHS):
                for order in ORDERS:
                    # The noise of a line is the same in both tables; it moves by 1.5 % from run to run.
                    noise = 1 + 0.015 * (((number + at) * 7 + run * 5) % 11 - 5) / 5
                    clocks = (1 + 40 / length + number % 17) * (1 if order == "10" else 1.6) * noise
                    clocks *= factors.get(f"{base}_{kind}", 1)
                    rows.append(f"{base},{kind},-,{length},-,{order},-,-,-,nLps=64 acc=1.0%,{clocks:.3g},e,"
                                f"{clocks * length / 2500:.3g},-\n")
    return "".join(rows)


def opens(page):
    """A test that opens another page than the full comparison; None if it does so by itself."""
    def mark(test):
        test.page = page
        return test
    return mark


class ReportPage(unittest.TestCase):
    """One browser for all tests; each opens the page anew."""

    @classmethod
    def setUpClass(cls):
        for name, factors, start in (("old", {}, 0), ("new", {SLOWER: 1.2, FASTER: 0.8}, 20)):
            with open(f"{name}.csv", "w", encoding="ascii") as out:
                out.write(table(factors, start))
        pages = [subprocess.Popen([KRLAB, "report", *words, "--quiet"], stderr=subprocess.PIPE, text=True)
                 for words in (["--old", "old.csv", "--new", "new.csv", "-o", "ab.html"], ["new.csv", "-o", "one.html"])]
        cls.browser = browser.Browser()  # while the pages are written
        for page, status in zip(pages, (1, 0)):  # of two subjects something is slower
            told = page.communicate()[1]
            if page.returncode != status:
                cls.browser.close()
                raise AssertionError(told)

    @classmethod
    def tearDownClass(cls):
        cls.browser.close()

    def setUp(self):
        page = getattr(getattr(self, self._testMethodName), "page", "ab.html")
        if page is not None:
            self.open(page)

    def tearDown(self):
        self.assertEqual([entry["message"] for entry in self.browser.log("browser")], [])
        addresses = {address.split("?")[0].split("#")[0] for address in self.browser.requests()}
        self.assertEqual({address for address in addresses if not address.startswith("data:")},
                         {"file://" + os.path.abspath(self.page)})

    def open(self, page, view=""):
        """What the new page of a browser loads for itself, and a view that stands open, is left behind first."""
        self.page = page
        self.browser.open("about:blank")
        self.browser.log("browser")
        self.browser.requests()
        self.browser.open(f"file://{os.path.abspath(page)}{view}")
        self.browser.wait("return document.documentElement.dataset.ready")

    def show(self, view):
        self.browser.run("location.hash = arguments[0]", view)
        name = view.split("?")[0]
        self.browser.wait("return document.querySelector('#view > section')?.id === arguments[0]", name)

    def text(self, selector):
        return self.browser.run("return document.querySelector(arguments[0])?.textContent", selector)

    def rows(self):
        """Texts of the first two cells of the rows that show."""
        return self.browser.run("""return [...document.querySelectorAll('#lines-table tbody tr[data-line]:not([hidden])')]
            .map((row) => [row.cells[0].textContent, row.cells[1].textContent])""")

    def charts(self):
        """Heading, kinds of axes and numbers of points of each chart, asked of the chart library itself."""
        return self.browser.run("""return [...document.querySelectorAll('canvas')].map((canvas) => {
            const chart = Chart.getChart(canvas);
            return { title: canvas.closest('figure').querySelector('h3').textContent, words: canvas.getAttribute('aria-label'),
                x: chart.scales.x.type, y: chart.scales.y.type,
                sets: chart.data.datasets.map((set) => ({ label: set.label, fill: set.fill ?? null, points: set.data.length })) };
        })""")

    def picture(self, name):
        self.browser.run("return new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)))")
        self.browser.screenshot(f"{name}.png")
        self.assertGreater(os.path.getsize(f"{name}.png"), 10000)

    def test_page_of_a_full_comparison_is_ready_in_two_seconds_and_under_five_megabytes(self):
        self.assertLess(int(self.browser.run("return document.documentElement.dataset.ready")), 2000)
        self.assertLess(os.path.getsize("ab.html"), 5e6)
        self.assertIn("2,860", self.text(".tiles"))
        self.assertIn("▲ 10", self.text(".tiles"))
        self.assertIn("▼ 10", self.text(".tiles"))
        self.assertIn(SLOWER, self.text("#summary"))
        self.picture("summary")

    def test_all_lines_stand_in_the_table_by_family(self):
        self.show("lines")
        rows = self.rows()
        self.assertEqual(len(rows), LINES)
        self.assertEqual(rows[0], ["veksKernel001_AMRWB_16s", "lenght=40 Order=10"])
        self.assertEqual(rows[1][1], "lenght=40 Order=16")
        self.assertEqual(rows[3][1], "lenght=80 Order=16")
        groups = self.browser.run("return [...document.querySelectorAll('tr.group')].map((row) => row.textContent)")
        self.assertEqual(groups, ["AMRWB, 570 lines", "EC, 570 lines", "G723, 570 lines", "G729, 580 lines",
                                  "GSMAMR, 570 lines"])
        self.picture("lines")

    def test_search_takes_lines_with_all_words(self):
        self.show("lines")
        self.browser.type("#search", "kernel10 order=16 160")
        rows = self.rows()
        self.assertEqual(len(rows), 10)
        self.assertTrue(all("Kernel10" in name and text == "lenght=160 Order=16" for name, text in rows), rows)
        self.assertEqual(self.text("#found"), "10 of 2,860 lines")
        self.browser.type("#search", " nothing")
        self.assertEqual(self.rows(), [])
        self.assertEqual(self.browser.run("return document.querySelectorAll('tr.group:not([hidden])').length"), 0)

    def test_a_heading_sorts_and_once_more_turns_the_order(self):
        self.show("lines")
        self.browser.click("th[data-key=change] button")
        self.assertEqual({name for name, _ in self.rows()[:10]}, {SLOWER})
        self.assertEqual(self.browser.run("return document.querySelector('th[data-key=change]').ariaSort"), "descending")
        self.browser.click("th[data-key=change] button")
        self.assertEqual({name for name, _ in self.rows()[:10]}, {FASTER})
        self.assertEqual(self.browser.run("return document.querySelector('th[data-key=change]').ariaSort"), "ascending")
        self.browser.click("th[data-key=old] button")
        figures = self.browser.run("""return [...document.querySelectorAll('#lines-table tr[data-line]')]
            .map((row) => Number(row.cells[2].textContent.replaceAll(',', '')))""")
        self.assertEqual(figures, sorted(figures))
        self.assertLess(figures[0], figures[-1])

    def test_lines_are_filtered_by_verdict_and_family(self):
        self.show("lines")
        for verdict in ("faster", "same", "undecided"):
            self.browser.click(f"#verdicts input[value={verdict}]")
        self.assertEqual(len(self.rows()), 10)
        self.assertEqual({name for name, _ in self.rows()}, {SLOWER})
        self.browser.click("#verdicts input[value=faster]")
        self.assertEqual({name for name, _ in self.rows()}, {SLOWER, FASTER})
        self.browser.run("""const family = document.querySelector('#family');
            family.value = 'AMRWB'; family.dispatchEvent(new Event('change'));""")
        self.assertEqual({name for name, _ in self.rows()}, {FASTER})

    def test_a_function_is_drawn_against_each_parameter_with_bands(self):
        self.show(f"function?name={SLOWER}")
        charts = self.charts()
        self.assertEqual([chart["title"] for chart in charts], ["clocks a call against lenght", "clocks a call against Order"])
        self.assertEqual((charts[0]["x"], charts[0]["y"]), ("logarithmic", "logarithmic"))
        # Two orders of two subjects, each with its readings and the two bounds of its band.
        self.assertEqual([set["label"] for set in charts[0]["sets"] if set["fill"] is None and set["label"] != ""],
                         ["old, Order=10", "new, Order=10", "old, Order=16", "new, Order=16"])
        self.assertEqual({set["points"] for set in charts[0]["sets"]}, {5})
        self.assertEqual(sum(set["fill"] == "-1" for set in charts[0]["sets"]), 4)
        wide = self.browser.run("""const chart = Chart.getChart(document.querySelector('canvas'));
            return chart.data.datasets[1].data.every((high, i) => high.y > chart.data.datasets[2].data[i].y)""")
        self.assertTrue(wide)
        self.picture("function")
        self.browser.run("""const select = [...document.querySelectorAll('label')].find((label) => label.firstChild.textContent === 'Order').querySelector('select');
            select.value = '16'; select.dispatchEvent(new Event('change'));""")
        self.assertEqual([chart["title"] for chart in self.charts()], ["clocks a call against lenght"])

    def test_two_subjects_stand_side_by_side_and_as_ratio(self):
        self.show(f"sides?name={FASTER}")
        bars, ratios = self.charts()
        self.assertEqual([set["points"] for set in bars["sets"]], [10, 10])
        self.assertEqual([set["label"] for set in bars["sets"]], ["old: old.csv", "new: new.csv"])
        self.assertEqual([set["points"] for set in ratios["sets"]], [10, 10])
        values = self.browser.run("""const [bars, ratios] = [...document.querySelectorAll('canvas')].map((canvas) => Chart.getChart(canvas).data);
            return bars.datasets[0].data.map((older, i) => [bars.datasets[1].data[i] / older, ratios.datasets[0].data[i], ...ratios.datasets[1].data[i]])""")
        for quotient, ratio, low, high in values:
            self.assertAlmostEqual(quotient, ratio, 3)
            self.assertAlmostEqual(ratio, 0.8, 2)
            self.assertTrue(low < ratio < high < 1)
        self.picture("sides")
        self.show("sides?name=")
        self.assertIn("The 40 largest changes of 286", self.text("#sides"))

    def test_scatter_holds_every_line_and_the_band_of_noise(self):
        self.show("scatter")
        charts = self.charts()
        self.assertEqual([chart["title"] for chart in charts], ["new against old, clocks a call", "ratio against clocks a call"])
        for chart in charts:
            points = {set["label"]: set["points"] for set in chart["sets"] if set["label"] != ""}
            self.assertEqual(sum(points.values()), LINES)
            self.assertEqual((points["slower"], points["faster"]), (10, 10))
            self.assertEqual(sum(set["fill"] == "-1" for set in chart["sets"]), 1)
        self.picture("scatter")

    def test_families_and_course_and_identity_are_shown(self):
        self.show("families")
        self.assertEqual([set["points"] for set in self.charts()[0]["sets"]], [5])
        self.show("course")
        course, level = self.charts()
        self.assertEqual([set["points"] for set in course["sets"]], [RUNS, RUNS])
        self.assertEqual([set["points"] for set in level["sets"]], [RUNS, RUNS])
        self.show("identity")
        self.assertIn("Processor of a test", self.text("#identity"))
        self.assertIn("libveksc, 1.0.0", self.text("#identity"))

    def open_changed(self, page, view, member, value):
        """Opens a page like that of the full comparison, with a value in place of an empty list of its data."""
        with open("ab.html", encoding="utf-8") as file:
            text = file.read()
        with open(page, "w", encoding="utf-8") as file:
            file.write(text.replace(f'"{member}":[]', f'"{member}":{json.dumps(value)}', 1))
        self.open(page, view)

    def test_kinds_of_machines_stand_side_by_side_and_what_differs_among_them_comes_first(self):
        rows = self.browser.run("return JSON.parse(document.getElementById('data').textContent).verdicts.lines")
        slower = [row[0] for row in rows if row[7] == "slower"]
        # On the second kind what was slower is the same, one line was not measured, and nothing else differs.
        other = [[*row[:3], 1.001, 0.99, 1.01, row[6], "same"] if row[0] in slower else row for row in rows][:-1]
        names = ["family 6 model 1", "family 6 model 2"]
        self.open_changed("kinds.html", "#machines", "kinds", [
            {"name": name, "features": "0", "hosts": hosts, "rounds": 8, "lines": lines}
            for name, hosts, lines in zip(names, (["a", "b"], ["c"]), (rows, other))])
        cells = "return [...document.querySelectorAll(arguments[0])].map((row) => [...row.cells].map((cell) => cell.textContent))"
        head, *kinds = self.browser.run(cells, "#machines > .scroll tr")
        self.assertEqual(head[:3], ["machine", "hosts", "rounds"])
        self.assertEqual([kind[:5] for kind in kinds], [[names[0], "2", "8", "10", "10"], [names[1], "1", "8", "0", "10"]])
        apart = self.browser.run(cells, "#machines-apart tbody tr")
        self.assertEqual(len(apart), 10)
        for line, first, second, _ in apart:
            self.assertIn(SLOWER, line)
            self.assertEqual((first[0], second[0]), ("▲", "="), line)
        self.assertEqual(len(self.browser.run(cells, "#machines-alike tbody tr")), 10)
        rest = self.browser.run(cells, "#machines-rest tbody tr")
        self.assertEqual((len(rest), self.text("#machines-rest .note")), (20, f"and {LINES - 40:,} more"))
        self.picture("machines")

    @opens(None)
    def test_steps_are_drawn_where_the_data_has_them(self):
        self.open_changed("steps.html", "#course", "steps", [[7, RUNS, 1.2]])
        course = self.charts()[0]
        self.assertEqual([set["points"] for set in course["sets"] if set["label"] == "level"], [2, 2])
        self.assertIn("Steps (1)", self.text("#course"))
        self.assertIn("+20.0", self.text("#course"))

    def test_keys_reach_the_views_and_the_search(self):
        self.browser.keys("/")
        self.browser.wait("return document.activeElement.id === 'search'")
        self.browser.type("#search", "3")  # a digit in the search is no view
        self.assertEqual(self.browser.run("return document.querySelector('#view > section').id"), "lines")
        self.browser.keys(KEY["escape"])
        self.browser.keys("5")
        self.browser.wait("return document.querySelector('#scatter') !== null")
        self.assertEqual(self.text("nav a[aria-current]"), "Scatter")
        self.browser.keys("1")
        self.browser.wait("return document.querySelector('#summary') !== null")
        # From the head of the page every view can be reached with the tabulator.
        self.browser.run("document.querySelector('#theme').focus()")
        self.browser.keys(KEY["tab"], KEY["tab"], KEY["enter"])
        self.browser.wait("return document.querySelector('#lines') !== null")

    def test_page_is_light_or_dark_and_paper_is_white(self):
        ground = "return getComputedStyle(document.body).backgroundColor"
        self.assertEqual(self.browser.run(ground), "rgb(255, 255, 255)")
        self.browser.click("#theme")
        self.assertEqual(self.browser.run(ground), "rgb(20, 23, 27)")
        self.show(f"function?name={SLOWER}")
        dark = self.browser.run("return Chart.getChart(document.querySelector('canvas')).data.datasets[0].borderColor")
        self.browser.run("""window.seen = []; addEventListener('beforeprint', () =>
            seen.push(getComputedStyle(document.body).backgroundColor, Chart.getChart(document.querySelector('canvas')).data.datasets[0].borderColor))""")
        self.browser.paper("function.pdf")
        paper, light = self.browser.run("return seen")
        self.assertEqual(paper, "rgb(255, 255, 255)")
        self.assertNotEqual(light, dark)
        self.assertEqual(self.browser.run(ground), "rgb(20, 23, 27)")
        self.picture("dark")
        self.browser.run("localStorage.clear()")

    @opens("one.html")
    def test_page_of_one_subject_has_no_views_of_two(self):
        views = self.browser.run("return [...document.querySelectorAll('nav a')].map((link) => link.dataset.view)")
        self.assertEqual(views, ["summary", "lines", "function", "families", "course", "identity"])
        for view in views:
            self.show(view)
        self.show("lines")
        self.assertEqual(len(self.rows()), LINES)
        self.show("function")
        self.assertEqual(len(self.charts()), 2)


if __name__ == "__main__":
    KRLAB = countedtests.krlab()
    sys.exit(countedtests.run(ReportPage, browser.missing()))
