"""performance.py: docs/performance.md and its plot, of what the measuring programs of bench/ found.

    performance.py table FOLDER    prints the ratios beside their goals
    performance.py write FOLDER    prints them, and makes the page and the plot

FOLDER holds the programs' JSON: floor.json, growth.json, growth_instructions.json,
profile.json (instruction_profile.py), whole.json, library.json (measured.py), pipeline.json (Google
Benchmark's own). The instructions are those of
bench/instructions.json, which a test holds against the library. What misses its goal
finds its reason in bench/reasons.toml:

    [growth."private-VLAN pair: add"]
    why = "one bucket holds all pairs of a primary"
    [floor.others]
    why = "what all the other requests that miss it have in common"

performance_page.py has the page's text, performance_plot.py the plot.
"""

import json
import math
import sys
import tomllib
from dataclasses import dataclass, field
from pathlib import Path

import page
import performance_page
import performance_plot

REASONS = page.ROOT / "bench/reasons.toml"
INSTRUCTIONS = page.ROOT / "bench/instructions.json"
PAGE = page.ROOT / "docs/performance.md"
PLOT = page.ROOT / "docs/performance.svg"

GOAL_MEAN = 1.15
GOAL_REQUEST = 1.4
GOAL_GROWTH = 1.5

# What each file's rows must have; None: the file is an object of its own.
FILES = {
    "floor": ("request", "chip", "calls", "library_ns", "floor_ns", "ratio"),
    "instructions": ("request", "chip", "library", "floor"),
    "profile": ("request", "chip", "platform", "library", "functions"),
    "growth": ("request", "chip", "subject", "count", "calls", "ns"),
    "growth_instructions": ("request", "chip", "interfaces", "few", "many"),
    "whole": (
        "name", "chip", "interfaces", "seconds", "operations", "operations_per_second",
        "peak_rss_kib", "goal_seconds",
    ),
    "library": None,
    "pipeline": None,
}


class ResultError(page.PageError):
    """What is wrong with what was measured."""


@dataclass
class Series:
    """One request's cost as something grows: by count, in nanoseconds; and its platform calls."""

    request: str
    chip: str
    subject: str
    costs: dict = field(default_factory=dict)
    calls: dict = field(default_factory=dict)

    def growth(self):
        """The cost at the largest count, over that at the smallest."""
        return self.costs[max(self.costs)] / self.costs[min(self.costs)]

    def missed(self):
        """Whether it grows more than the goal has it."""
        return self.growth() > GOAL_GROWTH


@dataclass
class Results:
    """What was measured: rows by kind of file, and the two that are objects."""

    floor: list = field(default_factory=list)
    instructions: list = field(default_factory=list)
    profile: list = field(default_factory=list)
    growth: list = field(default_factory=list)
    growth_instructions: list = field(default_factory=list)
    whole: list = field(default_factory=list)
    library: dict = field(default_factory=dict)
    pipeline: dict = field(default_factory=dict)
    measured: str = ""
    reasons: dict = field(default_factory=dict)

    def why(self, kind, name):
        """The reason for a miss, its own or that of all others; empty when none is written down."""
        reasons = self.reasons.get(kind, {})
        return reasons.get(name, reasons.get("others", {})).get("why", "").strip()


@dataclass
class Goal:
    """A goal and what came out; the reasons for what missed it stand under `kind` by name."""

    kind: str
    missed: list
    what: str
    goal: str
    found: str


def rows_of(kind, found):
    """The rows of a measuring program's file; raises ResultError when one lacks something."""
    rows = found if isinstance(found, list) else found.get("rows", found.get("requests"))
    if not rows:
        raise ResultError(f"{kind}.json has no rows")
    for row in rows:
        missing = [name for name in FILES[kind] if name not in row]
        if missing:
            raise ResultError(f"{kind}.json: {', '.join(missing)} missing in {row}")
    return rows


def series_of(rows):
    """The growth rows by request, chip and what grows, in the order in which they stand."""
    found = {}
    for row in rows:
        key = (row["request"], row["chip"], row["subject"])
        series = found.setdefault(key, Series(*key))
        series.costs[row["count"]] = row["ns"]
        series.calls[row["count"]] = row["calls"]
    return [series for series in found.values() if len(series.costs) > 1]


def _load(path):
    try:
        return json.loads(path.read_text(encoding="utf-8"))
    except json.JSONDecodeError as error:
        raise ResultError(f"{path}: {error}") from error


def read(folder, reasons=REASONS, instructions=INSTRUCTIONS):
    """Takes all files of a folder; those that are missing leave their part empty."""
    results = Results()
    days = []
    for kind, columns in FILES.items():
        path = folder / f"{kind}.json"
        if not path.exists():
            continue
        found = _load(path)
        rows = found if columns is None else rows_of(kind, found)
        setattr(results, kind, series_of(rows) if kind == "growth" else rows)
        days.append(found.get("measured", ""))
    if instructions.exists():
        results.instructions = rows_of("instructions", _load(instructions))
    if not days:
        raise ResultError(f"{folder} holds nothing that was measured; run ./dev bench")
    results.measured = max(days)
    if reasons.exists():
        results.reasons = tomllib.loads(reasons.read_text(encoding="utf-8"))
    return results


def geometric_mean(ratios):
    """The geometric mean of ratios, of which there is at least one."""
    return math.exp(sum(map(math.log, ratios)) / len(ratios))


def _over(ratios, goal):
    """Of ratios by request: the largest in words, and the requests over their goal."""
    over = [request for request, ratio in ratios.items() if ratio > goal]
    worst = max(ratios, key=ratios.get)
    found = f"{ratios[worst]:.2f} ({worst})"
    return (f"{found}; {len(over)} of {len(ratios)} over" if over else found), over


def _floor_goals(rows):
    for chip in dict.fromkeys(row["chip"] for row in rows):
        ratios = {row["request"]: row["ratio"] for row in rows if row["chip"] == chip}
        name = performance_page.chip_name(chip)
        mean = geometric_mean(list(ratios.values()))
        yield Goal("mean", [chip] if mean > GOAL_MEAN else [],
                   f"library / floor on {name}, geometric mean", f"at most {GOAL_MEAN}", f"{mean:.2f}")
        found, over = _over(ratios, GOAL_REQUEST)
        yield Goal("floor", over, f"library / floor on {name}, any request",
                   f"at most {GOAL_REQUEST}", found)


def _growth_goals(growth):
    for chip, subject in dict.fromkeys((series.chip, series.subject) for series in growth):
        some = [series for series in growth if (series.chip, series.subject) == (chip, subject)]
        found, over = _over({series.request: series.growth() for series in some}, GOAL_GROWTH)
        most = max(max(series.costs) for series in some)
        what = f"cost with {most:,} {subject} / with {min(some[0].costs)}"
        what += f" on {performance_page.chip_name(chip)}, any request"
        yield Goal("growth", over, what, f"at most {GOAL_GROWTH}", found)


def _whole_goals(rows):
    for row in rows:
        if row["goal_seconds"]:
            chip = performance_page.chip_name(row["chip"])
            missed = [row["name"]] if row["seconds"] > row["goal_seconds"] else []
            yield Goal("whole", missed, f"{row['name']}, {row['interfaces']:,} interfaces on {chip}",
                       f"under {row['goal_seconds']:g} s", f"{row['seconds']:.2f} s")


def goals_of(results):
    """The goals with what came out."""
    goals = list(_floor_goals(results.floor)) if results.floor else []
    goals += _growth_goals(results.growth)
    goals += _whole_goals(results.whole)
    return goals


def table_text(goals):
    """The goals for a terminal."""
    wide = max((len(goal.what) for goal in goals), default=0)
    lines = [
        f"{'MISSED' if goal.missed else 'met':<7} {goal.what:<{wide}}  {goal.goal:<12}  {goal.found}"
        for goal in goals
    ]
    return "\n".join(lines)


def main(arguments):
    """Does what the words of the command line say."""
    if len(arguments) != 2 or arguments[0] not in ("table", "write"):
        print(__doc__, file=sys.stderr)
        return 2
    try:
        results = read(Path(arguments[1]))
        goals = goals_of(results)
        print(performance_page.ratios_text(results))
        print(table_text(goals))
        if arguments[0] == "write":
            svg = performance_plot.plot(results.growth) if results.growth else None
            text = performance_page.page_text(
                results, goals, GOAL_REQUEST, PLOT.name if svg else None
            )
            if svg:
                page.write(PLOT, svg)
            print(f"{PAGE}: {'written' if page.write(PAGE, text) else 'as it was'}")
    except (page.PageError, tomllib.TOMLDecodeError) as error:
        print(error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
