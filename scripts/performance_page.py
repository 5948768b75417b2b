"""performance_page.py: the text of docs/performance.md, and the ratios as a terminal's table.

performance.py reads the figures and knows the goals; nothing here was typed by
hand but words.
"""

from collections import Counter

import page
from page import code

# Rows of a table that shows the most of something.
FUNCTIONS = 12

CHIPS = {"trident": "Trident", "trident2": "Trident2"}

# What can miss its goal, as the list of reasons begins.
KINDS = {
    "mean": "library / floor", "floor": "library / floor", "growth": "growth", "whole": "seconds",
}

# The chip that takes more; where a table has room for one, it is this.
MAIN_CHIP = "trident2"

PREFACE = """\
# Performance

The limit of the library is the platform: the calls that it has to make, in their order. This page tells what it
adds to them, how that grows with the number of interfaces, and what a whole switch takes. `./dev bench` measures
it all, prints the ratios and makes this page; `./dev bench --quick` takes half a minute and writes nothing.
"""

FLOOR = """\
## What the library adds

Each request runs on a null platform, whose functions count and keep no more than the library reads back. Its calls
are recorded with their arguments and compiled as straight calls, one behind the other: the *floor*, below which
no library can be that makes these calls. Both run in turns in one process; the figures are medians, in
nanoseconds.
"""

INSTRUCTIONS = """\
## Instructions

The same requests counted by valgrind's callgrind, which gives the same figures each time. A test fails when one
grows by more than 5 %.
"""

GROWTH = """\
## How it grows

The cost of a request in nanoseconds, on the null platform, whose functions take the same time however much there
is, but for its ordered trees, which take logarithmic time: what else grows is the library's. A figure is the median
of many times in the fastest of some rounds, in which the sizes take turns. *Growth* is the last cost over the
first, *calls* the platform calls of a request, with the fewest and with the most where they differ: where those
grow, so must the cost.
"""

WHOLE = """\
## The whole

On the embedded switch, with all that the lab and the switch's model do: interfaces of all kinds mixed, operations
being requests and platform calls. Each is a process of its own, from its start to its end.
"""

PIPELINE = """\
## Frames

Frames of 64 bytes through the model of the chip's packet pipeline, one processor; allocations of memory a frame
beside them.
"""


def chip_name(chip):
    """A chip as people write it."""
    return CHIPS.get(chip, chip)


def by_chip(rows, name):
    """Rows by what they are called, then by chip; both in their order."""
    found = {}
    for row in rows:
        found.setdefault(row[name], {})[row["chip"]] = row
    return found


def chips_of(rows):
    """The chips of some rows, in order."""
    return list(dict.fromkeys(row["chip"] for row in rows))


def table(head, rows):
    """A table of Markdown: the first column to the left, the others to the right."""
    lines = ["| " + " | ".join(head) + " |", "|---" + "|---:" * (len(head) - 1) + "|"]
    lines += ["| " + " | ".join(row) + " |" for row in rows]
    return [*lines, ""]


def _nanoseconds(value):
    return f"{value:,.0f}" if value >= 100 else f"{value:.1f}"


def _calls(series):
    """The platform calls with the fewest and with the most of what grows."""
    ends = [f"{series.calls[end(series.calls)]:,.0f}" for end in (min, max)]
    return ends[0] if ends[0] == ends[1] else " to ".join(ends)


def _marked(text, missed):
    return f"**{text}**" if missed else text


def _reasons(results, goals):
    """What missed a goal, by kind, those with the same reason together."""
    together = {}
    for goal in goals:
        for name in goal.missed:
            why = results.why(goal.kind, name) or "no reason is written down."
            words = f"geometric mean on {chip_name(name)}" if goal.kind == "mean" else name
            together.setdefault((goal.kind, why), {})[words] = True
    return [page.paragraph(f"{KINDS[kind]}: {'; '.join(names)} – {why}", "* ", "  ")
            for (kind, why), names in together.items()]


def _goals(results, goals):
    rows = [
        [goal.what, goal.goal, goal.found, "**no**" if goal.missed else "yes"] for goal in goals
    ]
    lines = ["## Goals", "", *table(["what", "goal", "measured", "met"], rows)]
    reasons = _reasons(results, goals)
    return [*lines, "What misses its goal, and why:", "", *reasons, ""] if reasons else lines


def _floor(rows, goal):
    chips = chips_of(rows)
    head = ["request"]
    for chip in chips:
        head += [f"{chip_name(chip)}: calls", "library", "floor", "ratio"]
    lines = []
    for request, found in by_chip(rows, "request").items():
        cells = [request]
        for chip in chips:
            row = found.get(chip)
            cells += [
                f"{row['calls']:,}", _nanoseconds(row["library_ns"]), _nanoseconds(row["floor_ns"]),
                _marked(f"{row['ratio']:.2f}", row["ratio"] > goal),
            ] if row else ["", "", "", ""]
        lines.append(cells)
    return [FLOOR, *table(head, lines)]


def _instructions(rows):
    chips = chips_of(rows)
    head = ["request"]
    for chip in chips:
        head += [f"{chip_name(chip)}: library", "floor", "ratio"]
    lines = []
    for request, found in by_chip(rows, "request").items():
        cells = [request]
        for chip in chips:
            row = found.get(chip)
            cells += [
                f"{row['library']:,}", f"{row['floor']:,}", f"{row['library'] / row['floor']:.2f}",
            ] if row else ["", "", ""]
        lines.append(cells)
    return [INSTRUCTIONS, *table(head, lines)]


def _profile(rows):
    """Where the library's own instructions go, over all requests and in those that have most."""
    functions = Counter()
    for row in rows:
        functions.update(row["functions"])
    own = functions.total()
    platform = sum(row["platform"] for row in rows)
    lines = ["### Where the library's instructions go", "", page.paragraph(
        f"Counted by valgrind's callgrind on a {chip_name(rows[0]['chip'])}, each of the {len(rows)} requests made"
        f" once: {own:,} instructions of the library's own, the passing of arguments among them, and"
        f" {platform:,} of the null platform and the C library. What a function is made part of counts as that"
        " function's: trace points, above all."), ""]
    most = [[code(name), f"{count:,}", f"{100 * count / own:.1f} %"]
            for name, count in functions.most_common(FUNCTIONS)]
    lines += table(["function", "instructions", "of all"], most)
    worst = sorted(rows, key=lambda row: row["platform"] / row["library"])[:FUNCTIONS]
    cells = [
        [row["request"], f"{row['library']:,}", f"{row['platform']:,}",
         ", ".join(f"{code(name)} {count:,}" for name, count in
                   Counter(row["functions"]).most_common(3))]
        for row in worst
    ]
    return [*lines, "The requests in which the library's own are most, beside the platform's:", "",
            *table(["request", "library", "platform", "most of it"], cells)]


def _subject(growth, subject):
    """The table of what grows with one thing: the main chip's costs, the other's growth."""
    of_subject = [series for series in growth if series.subject == subject]
    main = {series.request: series for series in of_subject if series.chip == MAIN_CHIP}
    other = {series.request: series for series in of_subject if series.chip != MAIN_CHIP}
    if not main:
        main, other = other, {}
    counts = sorted({count for series in main.values() for count in series.costs})
    head = ["request", "calls", *(f"{count:,}" for count in counts), "growth"]
    if other:
        largest = max(max(series.costs) for series in other.values())
        chip = chip_name(next(iter(other.values())).chip)
        head.append(f"{chip}: growth at {largest:,}")
    rows = []
    for request, series in main.items():
        costs = [_nanoseconds(series.costs[at]) if at in series.costs else "" for at in counts]
        cells = [request, _calls(series), *costs, _marked(f"{series.growth():.2f}", series.missed())]
        if other:
            beside = other.get(request)
            cells.append(_marked(f"{beside.growth():.2f}", beside.missed()) if beside else "")
        rows.append(cells)
    chip = chip_name(next(iter(main.values())).chip)
    return [f"### By number of {subject}", "", f"{chip}.", "", *table(head, rows)]


def _growth(growth, plot):
    lines = [GROWTH]
    if plot:
        lines += [f"![Cost of a request against the number of interfaces]({plot})", ""]
    for subject in dict.fromkeys(series.subject for series in growth):
        lines += _subject(growth, subject)
    return lines


def _growth_instructions(rows):
    """How many requests take as many instructions among the most interfaces, and the others."""
    others = [row for row in rows if row["few"] != row["many"]]
    lines = ["### In instructions", "", page.paragraph(
        f"Counted by valgrind's callgrind, batches of eight: {len(rows) - len(others)} of {len(rows)} requests"
        " take exactly as many instructions among as many interfaces as the chip takes as among 16. A test fails"
        " when one takes more than 1.5 times as many. These differ: an add"
        " looks for the lowest free number, and"
        " the C library's allocator, which a virtual MAC's entry comes from, doesn't always take the same road."), ""]
    cells = [
        [row["request"], f"{chip_name(row['chip'])}, {row['interfaces']:,}", f"{row['few']:,}",
         f"{row['many']:,}", f"{row['many'] / row['few']:.2f}"]
        for row in others
    ]
    return [*lines, *table(["request", "chip", "among 16", "among the most", "growth"], cells)]


def _whole(rows):
    head = ["what", "chip", "interfaces", "seconds", "of CPU", "goal", "operations", "a second", "peak memory"]
    lines = []
    for row in rows:
        goal = row["goal_seconds"]
        lines.append([
            row["name"], chip_name(row["chip"]), f"{row['interfaces']:,}",
            _marked(f"{row['seconds']:.3f}", goal and row["seconds"] > goal),
            f"{row['cpu_seconds']:.3f}" if "cpu_seconds" in row else "",
            f"{goal:g}" if goal else "", f"{row['operations']:,}",
            f"{row['operations_per_second']:,.0f}", f"{row['peak_rss_kib'] / 1024:.1f} MiB",
        ])
    return [WHOLE, *table(head, lines)]


def _pipeline(found):
    rows = []
    for bench in found.get("benchmarks", []):
        if bench.get("run_type", "iteration") != "iteration" or "frames/s" not in bench:
            continue
        words = bench["name"].replace("/", ": ").replace("_", " ")
        rows.append([words, f"{bench['frames/s']:,.0f}", f"{bench.get('allocs/frame', 0):g}"])
    return [PIPELINE, *table(["frames", "a second", "allocations"], rows)] if rows else []


def _library(found):
    size, load = found["size"], found["load"]
    rows = [
        ["file, as built", f"{size['file']:,} bytes"],
        ["file, stripped", f"{size['stripped']:,} bytes"],
        *([name, f"{size[name]:,} bytes"] for name in ("text", "data", "bss")),
        *([f"relocations {code(kind)}", f"{count:,}"]
          for kind, count in found["relocations"].items()),
        ["relocations in all", f"{sum(found['relocations'].values()):,}"],
        *([f"load, {entry['what']}", f"{entry['microseconds']:,.0f} µs"]
          for entry in load["rows"]),
    ]
    lines = ["## The library as a file", "", page.paragraph(
        "`librtifhal_trident.so` as it is installed. Loading is the time of `dlopen` in a process of its own, the"
        f" median of {load['runs']:,}. The library is linked to be bound at once, so that lazy binding changes"
        " nothing where it is hardened.")]
    return [*lines, "", *table(["what", "how much"], rows)]


def machine_text(results):
    """On what the figures came about, as lines; none where that isn't known."""
    found = results.library.get("machine")
    if not found:
        return []
    options = " ".join(found["options"])
    text = (
        f"Measured on {results.measured[:10]}: {found['processor']}, {found['processors']} processors,"
        f" {found['memory_kib'] / 1024 / 1024:.1f} GiB; {found['system']}, Linux {found['kernel']};"
        f" {found['compiler']}, `{options}`."
    )
    if found.get("load_average", 0) > found["processors"]:
        text += (f" The machine had other work at that time, a load of {found['load_average']:g}: times are longer"
                 " than they would be, those of the whole above all.")
    return [page.paragraph(text), ""]


def page_text(results, goals, goal_request, plot=None):
    """The whole page; `plot` is the plot's file name, None for no plot.

    A request with a ratio to its floor over `goal_request` is marked.
    """
    lines = [PREFACE, *machine_text(results), *_goals(results, goals)]
    if results.floor:
        lines += _floor(results.floor, goal_request)
    if results.instructions:
        lines += _instructions(results.instructions)
    if results.profile:
        lines += _profile(results.profile)
    if results.growth:
        lines += _growth(results.growth, plot)
    if results.growth_instructions:
        lines += _growth_instructions(results.growth_instructions)
    if results.whole:
        lines += _whole(results.whole)
    if results.library:
        lines += _library(results.library)
    lines += _pipeline(results.pipeline)
    return "\n".join(lines).rstrip("\n") + "\n"


def ratios_text(results):
    """Each request's ratio to the floor and its growth, for a terminal."""
    floor = by_chip(results.floor, "request")
    growth = {(series.request, series.chip): series.growth() for series in results.growth}
    requests = list(dict.fromkeys([*floor, *(request for request, _ in growth)]))
    chips = [chip for chip in CHIPS if any(chip in found for found in floor.values())
             or any(chip == of for _, of in growth)]
    if not requests:
        return ""
    wide = max(map(len, requests))
    lines = [" " * wide + "".join(f"{chip_name(chip) + ':':>12}{'to floor':>10}{'growth':>8}"
                                  for chip in chips)]
    for request in requests:
        line = f"{request:<{wide}}"
        for chip in chips:
            row = floor.get(request, {}).get(chip)
            grown = growth.get((request, chip))
            line += " " * 12 + (f"{row['ratio']:>10.2f}" if row else " " * 10)
            line += f"{grown:>8.2f}" if grown else " " * 8
        lines.append(line.rstrip())
    return "\n".join([*lines, ""])
