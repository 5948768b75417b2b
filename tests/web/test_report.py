"""test_report.py: the page of `rtif report` in headless Chromium.

    python3 tests/web/test_report.py path/to/rtif [unittest option...]

Without Chromium, its driver or selenium it ends with 77, which counts as
skipped; with RTIFHAL_WEB_REQUIRED in the environment that is a failure.
"""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

SKIPPED = 77


def missing():
    """What the test needs and the machine lacks."""
    lacking = [name for name in ("chromium", "chromedriver") if shutil.which(name) is None]
    try:
        import selenium  # noqa: F401
    except ImportError:
        lacking.append("selenium")
    return lacking


if missing():
    print("skipped: the machine lacks", ", ".join(missing()))
    sys.exit(1 if os.environ.get("RTIFHAL_WEB_REQUIRED") else SKIPPED)

from selenium.webdriver.common.by import By  # noqa: E402
from selenium.webdriver.common.keys import Keys  # noqa: E402
from selenium.webdriver.support.ui import WebDriverWait  # noqa: E402

from browser import Browser  # noqa: E402

RTIF = "rtif"
EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
HOSTILE = "<img src=x onerror=window.broken=1>&amp;</script><b>"
# Texts that have to be legible in both themes, as selectors.
TEXTS = [
    "h1", ".facts dt", ".facts dd", ".tile dt", ".tile dd", ".count", ".help", "#filter", ".chip",
    ".chip-count", ".list-table thead th", ".list-table .name", ".list-table .kind", ".state",
    ".fills th", ".fills td", ".unused th", ".warning", ".notes li", ".foot", ".theme", ".error",
    ".heading h2", ".button", "h3", ".quiet", ".step b", ".args", ".who", ".note", ".result",
    ".fold", ".lane-heads span", ".words summary", ".remark", ".graph .node-title", ".graph .node-id",
    ".graph .field", ".graph .value", ".fate", ".sample summary", ".graph .author", ".graph .tie-label",
]
CONTRAST = """
const parse = (text) => {
  const canvas = document.createElement('canvas');
  canvas.width = canvas.height = 1;
  const pen = canvas.getContext('2d', {willReadFrequently: true});
  pen.fillStyle = text;
  pen.fillRect(0, 0, 1, 1);
  return [...pen.getImageData(0, 0, 1, 1).data];
};
const light = ([r, g, b]) => [r, g, b].map((v) => v / 255)
  .map((v) => v <= 0.03928 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4)
  .reduce((sum, v, i) => sum + v * [0.2126, 0.7152, 0.0722][i], 0);
const behind = (element) => {
  for (let at = element; at; at = at.parentElement) {
    const box = at.matches('g.node') && at.querySelector('.box');
    const colour = parse(box ? getComputedStyle(box).fill : getComputedStyle(at).backgroundColor);
    if (colour[3] === 255) return colour;
  }
  return parse(getComputedStyle(document.body).backgroundColor);
};
const found = {};
for (const selector of arguments[0]) {
  for (const element of document.querySelectorAll(selector)) {
    if (element.closest('.off') || element.getClientRects().length === 0) continue;
    const style = getComputedStyle(element);
    const ink = parse(element.closest('svg') ? style.fill : style.color);
    const [a, b] = [light(ink), light(behind(element))].sort((x, y) => y - x);
    const ratio = (a + 0.05) / (b + 0.05);
    if (!(selector in found) || ratio < found[selector]) found[selector] = ratio;
  }
}
return found;
"""


def run(*words, code=0):
    done = subprocess.run([RTIF, *map(str, words)], capture_output=True, text=True, check=False)
    if done.returncode != code:
        raise AssertionError(f"rtif {words}: {done.returncode}\n{done.stdout}{done.stderr}")
    return done


def busy_configuration():
    """A switch with a hostile name and nearly as many virtual MACs as it has stations."""
    config = {
        "DEVICE_METADATA": {"localhost": {"hostname": HOSTILE, "mac": "02:00:00:00:0a:01"}},
        "PORT": {f"Ethernet{n}": {"lanes": str(n), "index": str(n)} for n in range(8)},
        "VLAN": {}, "VLAN_MEMBER": {}, "VLAN_INTERFACE": {}, "VRRP": {},
        "INTERFACE": {"Ethernet6": {}, HOSTILE: {}},
    }
    for vlan in range(2, 87):
        name = f"Vlan{vlan}"
        config["VLAN"][name] = {"vlanid": str(vlan)}
        config["VLAN_MEMBER"][f"{name}|Ethernet{vlan % 4}"] = {"tagging_mode": "tagged"}
        config["VLAN_INTERFACE"][name] = {}
        config["VLAN_INTERFACE"][f"{name}|10.{vlan}.0.1/24"] = {}
        for group in range(1, 6):
            config["VRRP"][f"{name}|{group}"] = {"vip": f"10.{vlan}.0.{10 + group}"}
    return config


class ReportPage(unittest.TestCase):
    """Pages of a few switches, in one browser."""

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="rtif-web-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        (cls.folder / "none.json").write_text(json.dumps({
            "DEVICE_METADATA": {"localhost": {"hostname": "x" * 3000}},
            "VLAN": {f"Vlan{n}": {"vlanid": str(n)} for n in (2, 3, 4)}}))
        for name in ("kinds", "leaf", "campus", "packets", "everything"):
            run("report", EXAMPLES / f"{name}.json", "-o", cls.folder / f"{name}.html")
        run("report", cls.folder / "none.json", "-o", cls.folder / "none.html")
        script = cls.folder / "half.rtif"
        script.write_text(f"fail rtifhal_bcm_l3_ingress_create -6\nup {EXAMPLES}/kinds.json\n")
        subprocess.run([RTIF, "run", script, "--state", cls.folder / "kept"], check=False,
                       capture_output=True)
        run("report", "--state", cls.folder / "kept", "-o", cls.folder / "half.html", code=1)
        (cls.folder / "busy.json").write_text(json.dumps(busy_configuration()))
        run("report", cls.folder / "busy.json", "-o", cls.folder / "busy.html")
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)
        # The browser's own first page isn't ours.
        cls.browser.open(cls.folder / "kinds.html")
        cls.browser.requests()

    def setUp(self):
        self.browser.prefer("light")
        self.browser.window(1280)

    def tearDown(self):
        self.assertEqual(self.browser.complaints(), [])
        self.assertEqual(self.browser.requests(), [])

    def open(self, name, fragment=""):
        self.browser.open(self.folder / f"{name}.html", fragment)

    def find(self, selector):
        return self.browser.driver.find_element(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        return self.browser.js(
            "return [...document.querySelectorAll(arguments[0])].map((one) => one.textContent)",
            selector)

    def shown(self):
        """The names in the list that the filter lets through."""
        return self.browser.js("return [...document.querySelectorAll('.row')]"
                               ".filter((row) => !row.hidden)"
                               ".map((row) => row.querySelector('.name').textContent)")

    def filter(self, words):
        box = self.find("#filter")
        box.clear()
        box.send_keys(words)

    def press(self, *keys):
        self.browser.driver.switch_to.active_element.send_keys(*keys)

    def focused(self):
        return self.browser.driver.switch_to.active_element.text

    def opened(self, name):
        """Waits until an interface is open."""
        WebDriverWait(self.browser.driver, 10).until(
            lambda _: self.texts("#interface") == ([] if name is None else [name]))

    # The switch as a whole.

    def test_the_page_opens_with_the_switch_and_its_interfaces(self):
        self.open("leaf")
        self.assertEqual(self.texts("h1"), ["leaf-a07"])
        self.assertEqual(self.browser.driver.title, "leaf-a07: routed interfaces")
        self.assertEqual(len(self.shown()), 40)
        self.assertEqual(self.texts("#count"), ["40 interfaces"])
        self.assertIn("40 / 40", self.texts(".tile dd"))

    def test_each_table_of_the_chip_has_a_bar_of_its_fill(self):
        self.open("leaf")
        self.assertEqual(len(self.texts(".fills tbody tr")), 15)
        interfaces = self.texts("tr[data-table=l3_interfaces] .number")
        self.assertEqual(interfaces[0], "40 / 4,096")
        width = self.browser.js(
            "const bar = document.querySelector('tr[data-table=field_groups] .bar');"
            "return bar.firstChild.getBoundingClientRect().width / bar.clientWidth")
        self.assertAlmostEqual(width, 2 / 16, delta=0.01)

    def test_a_nearly_full_table_says_so_in_words(self):
        self.open("busy")
        self.assertEqual(self.texts(".warning"), ["▲ nearly full"])
        row = self.texts("tr[data-table=stations]")[0]
        self.assertIn("426 / 512", row)
        self.assertIn("83 %", row)

    def test_what_is_not_up_comes_first(self):
        self.open("half")
        self.assertEqual(self.shown()[0], "Ethernet0")
        self.assertEqual(self.texts(".attention h2"), ["Not up: 1"])
        self.assertEqual(self.texts(".attention .error"),
                         ["the chip has no L3 ingress object 3"])
        self.find(".attention a").click()
        self.opened("Ethernet0")
        self.assertEqual(self.texts(".error.box"), ["the chip has no L3 ingress object 3"])
        self.assertIn("not the calls", self.texts(".card .remark")[-1])
        self.assertEqual(self.texts(".missing .node-title"), ["L3 ingress"])
        self.assertEqual(self.texts(".missing .value"), ["✕ the chip has none"])

    # The filter.

    def test_the_filter_takes_words_and_announces_how_many_fit(self):
        self.open("kinds")
        for words, names in [
                ("kind:subinterface", ["Ethernet4.10", "PortChannel0001.20"]),
                ("vlan:10", ["Ethernet4.10"]),
                ("vlan:4094 kind:port", ["Ethernet0", "Ethernet4"]),
                ("port:Ethernet8", ["PortChannel0001", "PortChannel0001.20"]),
                ("channel -kind:subinterface", ["PortChannel0001"]),
                ("iif:9", ["MuxTunnel0"]),
                ("SVI", ["Vlan100"]),
                ("failed", []),
        ]:
            with self.subTest(words):
                self.filter(words)
                self.assertEqual(self.shown(), names)
                self.assertEqual(self.texts("#count"), [f"{len(names)} of 7 interfaces"])
        self.assertTrue(self.find("#nothing").is_displayed())
        self.assertEqual(self.find("#count").get_attribute("aria-live"), "polite")
        self.filter("foo:bar")
        self.assertIn("0 of 7 interfaces; no property is named foo", self.texts("#count")[0])

    def test_a_switch_without_an_interface_says_so(self):
        self.open("none")
        self.assertEqual(self.texts("#nothing"), ["There is no routed interface."])
        self.assertEqual(self.texts(".tile dd")[0], "none")
        self.assertIn("3 requests without a call", self.texts(".request summary"))
        self.assertEqual(self.texts("h1"), ["x" * 79 + "…"])
        self.assertEqual(self.find("h1").get_attribute("title"), "x" * 3000)

    def test_a_button_puts_its_kind_into_the_filter_and_takes_it_out(self):
        self.open("kinds")
        button = self.find(".chip[data-word='kind:tunnel']")
        button.click()
        self.assertEqual(self.shown(), ["MuxTunnel0"])
        self.assertEqual(button.get_attribute("aria-pressed"), "true")
        button.click()
        self.assertEqual(len(self.shown()), 7)
        self.assertEqual(button.get_attribute("aria-pressed"), "false")

    # Opening an interface.

    def test_an_interface_opens_by_mouse(self):
        self.open("kinds")
        self.find(".row td").click()
        self.opened("Ethernet0")
        self.find("#close").click()
        self.opened(None)
        self.assertEqual(len(self.texts(".fills")), 1)

    def test_an_interface_opens_and_closes_by_keyboard(self):
        self.open("kinds")
        self.press("/")
        self.assertEqual(self.browser.driver.switch_to.active_element.get_attribute("id"), "filter")
        self.press("kind:port", Keys.ARROW_DOWN)
        self.assertEqual(self.focused(), "Ethernet0")
        self.press(Keys.ARROW_DOWN)
        self.assertEqual(self.focused(), "Ethernet4")
        self.press(Keys.ENTER)
        self.opened("Ethernet4")
        self.assertEqual(self.focused(), "Ethernet4")
        self.press(Keys.ESCAPE)
        self.opened(None)
        self.assertEqual(self.focused(), "Ethernet4")
        self.press(Keys.HOME, Keys.ARROW_UP)
        self.press(Keys.ESCAPE)
        self.assertEqual(len(self.shown()), 7)

    def test_enter_in_the_filter_opens_the_first_that_fits(self):
        self.open("kinds")
        self.filter("vlan100")
        self.press(Keys.ENTER)
        self.opened("Vlan100")
        self.press(Keys.ESCAPE)
        self.opened(None)
        self.press(Keys.ESCAPE)
        self.assertEqual(len(self.shown()), 7)

    def test_the_focus_can_be_seen(self):
        self.open("kinds")
        self.press("/")
        self.press(Keys.ARROW_DOWN)
        style = self.browser.js("const style = getComputedStyle(document.activeElement);"
                                "return [style.outlineStyle, style.outlineWidth]")
        self.assertEqual(style, ["solid", "2px"])

    def test_a_hash_opens_its_interface_and_an_unknown_one_the_switch(self):
        self.open("kinds", "#/PortChannel0001.20")
        self.opened("PortChannel0001.20")
        self.assertEqual(self.texts("[aria-current=true]"), ["PortChannel0001.20"])
        self.browser.js("location.hash = '#/Ethernet4'")
        self.opened("Ethernet4")
        self.browser.js("history.back()")
        self.opened("PortChannel0001.20")
        for fragment in ("#/nobody", "#/%E0%A4%A", "#main"):
            self.open("kinds", fragment)
            self.opened(None)
            self.assertEqual(self.texts("#unknown"), ["This switch has no interface nobody."] if "no" in fragment else [])

    def test_previous_and_next_go_along_what_the_filter_lets_through(self):
        self.open("kinds")
        self.filter("kind:subinterface")
        self.press(Keys.ENTER)
        self.opened("Ethernet4.10")
        self.find("[rel=next]").click()
        self.opened("PortChannel0001.20")
        self.assertEqual(self.texts("[rel=next]"), [])

    # What an interface shows.

    def test_graphs_fit_beside_the_list_or_say_that_they_scroll(self):
        for name, fragment in [("everything", "#/PortChannel1"), ("packets", "#/Vlan100")]:
            for width, fits in ((1265, True), (385, False)):
                with self.subTest(f"{name}{fragment} at {width}"):
                    self.browser.window(width)
                    self.open(name, fragment)
                    box, text, hidden = self.browser.js(
                        "const box = document.querySelector('.graph-box');"
                        "return [box.scrollWidth - box.clientWidth,"
                        " document.querySelector('.graph').getBoundingClientRect().width"
                        " / document.querySelector('.graph').viewBox.baseVal.width,"
                        " document.querySelector('.graph-hint').hidden]")
                    self.assertEqual(box <= 0, fits)
                    self.assertGreaterEqual(text, 0.74)
                    self.assertEqual(hidden, fits)

    def test_the_sequence_has_every_call_and_what_becomes_of_its_writes(self):
        self.open("kinds", "#/Ethernet0")
        self.opened("Ethernet0")
        self.find("#show-services").click()
        wanted = json.loads(run("up", EXAMPLES / "kinds.json", "--calls", "--json").stdout)
        calls = self.texts(".step:not(.begin):not(.end) > .what > code")
        self.assertEqual(calls, wanted["interfaces"][0]["call_list"])
        flushes = self.texts(".flush .note")
        self.assertTrue(any("write 1 to" in one or "writes 1 to" in one for one in flushes))
        # Each write that waits is taken to the chip by one flush.
        waits = [one for one in self.texts(".step .note") if one.startswith("write ")
                 and one.endswith(" waits")]
        last = self.texts(".flush")[-1]
        self.assertIn("end of the request", last)
        self.assertIn(f"to {len(waits)} reach the chip", last)
        self.assertEqual(self.texts(".step.end b"), ["returned 0"])

    def test_service_calls_fold_and_messages_come_when_asked_for(self):
        self.open("kinds", "#/Vlan100")
        self.opened("Vlan100")
        services = len(self.texts(".call-s"))
        fold = self.find(".fold")
        fold.click()
        self.assertEqual(fold.get_attribute("aria-expanded"), "true")
        self.assertGreater(len(self.texts(".call-s")), services)
        fold.click()
        self.assertEqual(len(self.texts(".call-s")), services)
        self.assertEqual(self.texts(".message"), [])
        self.find("#show-messages").click()
        self.assertGreater(len(self.texts(".message")), 10)

    def test_a_refused_call_is_marked_by_more_than_colour(self):
        self.open("kinds", "#/Ethernet4")
        self.opened("Ethernet4")
        refused = [one for one in self.texts(".step.failed .what") if "bcm_vlan_create" in one]
        self.assertEqual(len(refused), 1)
        self.assertIn("✕ refused", refused[0])

    def test_the_graph_has_the_objects_and_the_same_is_there_in_words(self):
        self.open("kinds", "#/Ethernet4.10")
        self.opened("Ethernet4.10")
        self.assertEqual(self.texts(".node-title")[:2], ["Ethernet4", "VLAN translation"])
        self.assertIn("L3 ingress", self.texts(".node-title"))
        self.find(".words summary").click()
        words = self.texts(".words li")
        self.assertEqual(len(words), len(self.texts(".node")))
        self.assertTrue(any("names it → L3 ingress 7" in one for one in words))

    def test_sample_packets_tell_their_stages_and_their_end(self):
        self.open("kinds", "#/Ethernet4")
        self.opened("Ethernet4")
        self.find(".sample summary").click()
        self.assertIn("to its own address ◆ to the CPU", self.find(".sample summary").text)
        rows = self.texts(".sample[open] tbody tr")
        self.assertTrue(any(one.startswith("HITinterface4Ethernet4") for one in rows), rows)
        self.assertTrue(self.find(".sample[open] .verdict").text.startswith("to the CPU"))

    def test_calls_of_the_vlan_and_its_virtual_macs_are_drawn_when_opened(self):
        self.open("campus", "#/Vlan101")
        self.opened("Vlan101")
        before = len(self.texts(".step"))
        self.browser.js("document.querySelector('details.request:not(.sample)').open = true")
        WebDriverWait(self.browser.driver, 10).until(lambda _: len(self.texts(".step")) > before)

    # For whom and where it is read.

    def test_names_are_shown_as_text_whatever_they_are(self):
        self.open("busy")
        self.assertEqual(self.texts("h1"), [HOSTILE])
        self.assertEqual(self.browser.js("return document.images.length"), 0)
        self.assertIsNone(self.browser.js("return window.broken === undefined ? null : 1"))
        rows = self.texts("[aria-label='Rows not taken'] td")
        self.assertIn(HOSTILE, rows)
        self.open("busy", "#/" + HOSTILE.replace("&", "%26"))
        self.opened(None)

    def test_the_theme_changes_and_is_kept(self):
        self.open("kinds")
        background = "return getComputedStyle(document.body).backgroundColor"
        light = self.browser.js(background)
        self.find("#theme").click()
        dark = self.browser.js(background)
        self.assertNotEqual(light, dark)
        self.open("kinds")
        self.assertEqual(self.browser.js(background), dark)
        self.find("#theme").click()
        self.assertEqual(self.browser.js(background), light)
        self.browser.js("localStorage.clear()")
        self.browser.prefer("dark")
        self.open("kinds")
        self.assertEqual(self.browser.js(background), dark)

    def test_the_theme_changes_where_nothing_can_be_kept(self):
        self.open("kinds")
        self.browser.js("Object.defineProperty(window, 'localStorage',"
                        "{get() { throw new Error('refused'); }})")
        self.find("#theme").click()
        self.assertEqual(self.browser.js("return document.documentElement.dataset.theme"), "dark")

    def test_a_narrow_page_never_scrolls_sideways(self):
        for width in (400, 320):
            self.browser.window(width, 800)
            for name, fragment in [("leaf", ""), ("campus", ""), ("half", ""), ("busy", ""),
                                   ("kinds", "#/PortChannel0001"), ("campus", "#/Vlan101"),
                                   ("half", "#/Ethernet0"), ("leaf", "#/Eth45.201")]:
                with self.subTest(f"{name}{fragment} at {width}"):
                    self.open(name, fragment)
                    self.assertLessEqual(
                        self.browser.js("return document.documentElement.scrollWidth"), width)

    def test_nothing_is_cut_at_the_side_of_a_phone(self):
        self.browser.window(385, 900)
        for fragment in ("#/PortChannel1", ""):
            self.open("everything", fragment)
            self.browser.js("for (const one of document.querySelectorAll('.sample')) one.open = true")
            cut = "return [...document.querySelectorAll('.sequence, .stages td, [aria-label^=Virtual]')]" \
                ".filter((one) => one.scrollWidth > one.clientWidth + 1).length"
            self.assertEqual(self.browser.js(cut), 0, fragment)

    def test_text_can_be_read_in_both_themes(self):
        seen = set()
        for theme in ("light", "dark"):
            self.browser.prefer(theme)
            for name, fragment in [("half", ""), ("busy", ""), ("kinds", "#/Ethernet4"),
                                   ("half", "#/Ethernet0"), ("campus", "#/Vlan101")]:
                self.open(name, fragment)
                for selector, ratio in self.browser.js(CONTRAST, TEXTS).items():
                    seen.add(selector)
                    with self.subTest(f"{selector} of {name}{fragment}, {theme}"):
                        self.assertGreaterEqual(ratio, 4.5)
        self.assertEqual(seen, set(TEXTS))

    def test_landmarks_labels_and_a_way_past_the_list_are_there(self):
        self.open("kinds", "#/Ethernet0")
        self.opened("Ethernet0")
        for selector in ("header", "main", "footer", "section[aria-labelledby=list-title]",
                         "nav[aria-label]", "label[for=filter]", "html[lang=en]"):
            self.assertEqual(len(self.texts(selector)), 1, selector)
        nameless = self.browser.js(
            "return [...document.querySelectorAll('button, a, input, summary, [role=region]')]"
            ".filter((one) => !(one.textContent.trim() || one.getAttribute('aria-label')"
            " || (one.labels && one.labels.length))).length")
        self.assertEqual(nameless, 0)
        self.browser.js("document.getElementById('skip').focus()")
        self.press(Keys.ENTER)
        self.assertEqual(self.browser.driver.switch_to.active_element.tag_name, "main")
        self.opened("Ethernet0")


if __name__ == "__main__":
    RTIF = str(pathlib.Path(sys.argv.pop(1)).resolve())
    unittest.main(verbosity=1)
