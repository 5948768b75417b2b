"""performance_plot.py: docs/performance.svg: the cost of requests against how much there is.

Two plots, one above the other, by gnuplot: against the number of interfaces, and
against that of all else that grows. performance.py has the series.
"""

import subprocess
from collections import Counter

from page import PageError

INTERFACES = "interfaces"

# Lines that would lie on those of one port.
LIKE_A_PORTS = "subinterfaces of one port-channel"

# The chip that takes more.
CHIP = "trident2"

# Whose cost is plotted against the number of interfaces.
KINDS = [
    f"{kind}: {verb}" for kind in ("port", "port-channel", "SVI", "subinterface", "tunnel")
    for verb in ("add", "delete")
]

# Told apart on white, also by those who don't tell red from green.
COLOURS = ("#0072b2", "#d55e00", "#009e73", "#cc79a7", "#e69f00", "#56b4e9", "#000000", "#7f7f7f")

# As many lines as can be told apart: solid ones, then dashed ones.
LINES = 2 * len(COLOURS)

_HEAD = """\
set terminal svg size 1080,900 dynamic font 'Helvetica,Arial,sans-serif,13' background '#ffffff' linewidth 1.4
set encoding utf8
set logscale xy
set border 3 linecolor rgb '#444444'
set tics nomirror textcolor rgb '#222222'
set grid xtics ytics linecolor rgb '#dddddd' linewidth 0.7
set lmargin 10
set rmargin 56
set key at screen 0.60,0 top left Left reverse samplen 2 spacing 1.15 textcolor rgb '#222222'
set ylabel 'nanoseconds a request' textcolor rgb '#222222'
set multiplot layout 2,1
"""

# Where each plot's list of names begins, from the bottom.
_KEYS = (0.955, 0.455)

# Where an axis of nanoseconds may begin, end and have its ticks.
_STEPS = [step * 10**power for power in range(10) for step in (1, 2, 5)]


def chosen(growth):
    """The series of the two plots: each kind's adds and deletes, then what isn't a delete."""
    of_chip = [series for series in growth if series.chip == CHIP] or list(growth)
    left = [series for series in of_chip if series.subject == INTERFACES]
    left = [series for series in left if series.request in KINDS] or left
    right = [series for series in of_chip if series.subject not in (INTERFACES, LIKE_A_PORTS)]
    right = [series for series in right if ": delete" not in series.request] or right
    return left[:LINES], right[:LINES]


def _quoted(text):
    return "'" + text.replace("'", "''") + "'"


def _panel(title, series, key):
    counts = sorted({count for one in series for count in one.costs})
    costs = [cost for one in series for cost in one.costs.values()]
    lines = [
        f"set title {_quoted(title)} textcolor rgb '#222222'",
        f"set key at screen 0.60,{key}",
        f"set xtics ({_ticks(_apart(counts))})",
        f"set xrange [{min(counts) * 0.8:g}:{max(counts) * 1.25:g}]",
        f"set yrange [{max(step for step in _STEPS if step <= min(costs))}"
        f":{min(step for step in _STEPS if step >= max(costs))}]",
        f"set ytics ({_ticks(_STEPS)})",
    ]
    requests = Counter(one.request for one in series)
    plots = []
    for number, one in enumerate(series):
        name = one.request
        if requests[name] > 1 or one.subject.startswith("subinterfaces"):
            name += f" ({one.subject})"
        lines.append(f"$series{number} << end")
        lines += [f"{count} {cost}" for count, cost in sorted(one.costs.items())]
        lines.append("end")
        plots.append(
            f"$series{number} using 1:2 with linespoints pointtype {5 + number % 4 * 2} pointsize 0.6"
            f" linecolor rgb '{COLOURS[number % len(COLOURS)]}' dashtype {1 + number // len(COLOURS)}"
            f" title {_quoted(name)} noenhanced"
        )
    return [*lines, "plot " + ", ".join(plots)]


def _ticks(values):
    return ", ".join(f"'{value:,}' {value}" for value in values)


def _apart(counts):
    """Counts whose labels don't touch each other on a logarithmic axis."""
    kept = []
    for count in sorted(counts, reverse=True):
        if not kept or kept[-1] / count >= 1.8:
            kept.append(count)
    return sorted(kept)


def script(growth):
    """What gnuplot is told."""
    left, right = chosen(growth)
    lines = [_HEAD]
    if left:
        lines += _panel("Requests by number of interfaces", left, _KEYS[0])
    if right:
        lines += _panel("Requests by number of what they meet", right, _KEYS[1])
    return "\n".join([*lines, "unset multiplot", ""])


def plot(growth):
    """The plot as SVG; raises PageError when gnuplot doesn't make it."""
    try:
        done = subprocess.run(
            ["gnuplot", "-"], input=script(growth), capture_output=True, text=True, check=False
        )
    except FileNotFoundError as error:
        raise PageError("gnuplot is missing: install gnuplot-nox") from error
    if done.returncode != 0 or not done.stdout.startswith("<?xml"):
        raise PageError(f"gnuplot failed: {done.stderr.strip()[-500:]}")
    return done.stdout
