"""Draws a trace of apohost as a picture of three panels. scripts/plot installs what it needs and calls it."""
import csv
import itertools
import json
import math
import sys

import matplotlib

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402

WITHOUT, BEHIND = "#c0392b", "#1f6f43"
STYLES = ("-", "--", "-.", ":")
MOST_POINTS = 1000  # more than the picture is wide


def read(path):
    with open(path, newline="") as file:
        rows = list(csv.DictReader(file))
    if not rows:
        sys.exit(f"{path}: no rows")
    step = math.ceil(len(rows) / MOST_POINTS)
    stretches = [rows[i:i + step] for i in range(0, len(rows), step)]
    return {name: [peak(name, stretch) for stretch in stretches] for name in rows[0]}


def peak(name, rows):
    """Of a stretch of rows the largest value, and of what is no measurement the first."""
    if name in ("set", "path"):
        return rows[0][name]
    return float(rows[0][name]) if name == "seconds" else max(float(row[name]) for row in rows)


def speakers(data):
    """Label and beginning of the columns' names: of all channels together, or of each."""
    if "coil_c" in data:
        return [("", "")]
    numbers = (name.split("_")[1] for name in data if name.startswith("channel_") and name.endswith("_magnet_c"))
    return [(f" {number}", f"channel_{number}_") for number in numbers]


def panel(axes, seconds, lines, label):
    """lines: name, unprotected and protected of each; all but the first are broken lines."""
    for (name, without, behind), style in zip(lines, itertools.cycle(STYLES)):
        axes.plot(seconds, without, color=WITHOUT, linewidth=0.7, linestyle=style, label="unprotected" + name)
        axes.plot(seconds, behind, color=BEHIND, linewidth=0.7, linestyle=style, label="protected" + name)
    axes.set_ylabel(label)
    axes.grid(alpha=0.3)


def mark_sets(axes, seconds, sets):
    """A line and the key where the parameter set changes."""
    for i, key in enumerate(sets):
        if i > 0 and key != sets[i - 1]:
            axes.axvline(seconds[i], color="#555555", linewidth=0.8, linestyle="--")
            axes.text(seconds[i], axes.get_ylim()[1], f" {key}", va="top", fontsize=8)


def mark_limits(cone, coil, report):
    with open(report) as file:
        channels = json.load(file)["speakers"]["channels"]
    for axes, limit in ((cone, "displacement_mm"), (coil, "coil_c")):
        for place, value in enumerate(sorted({channel["limits"][limit] for channel in channels})):
            axes.axhline(value, color="black", linewidth=0.8, linestyle=":", label="_limit" if place else "limit")


def main(trace, picture, report=None):
    data = read(trace)
    seconds = data["seconds"]
    figure, (cone, coil, level) = pyplot.subplots(3, 1, sharex=True, figsize=(8, 6), layout="constrained")
    for axes, column, label in ((cone, "displacement%s_mm", "cone, mm"), (coil, "coil%s_c", "coil, °C")):
        panel(axes, seconds, [(name, data[begin + column % "_unprotected"], data[begin + column % ""])
                              for name, begin in speakers(data)], label)
    panel(level, seconds, [("", data["level_in_db"], data["level_out_db"])], "level, dBFS")
    level.set_ylim(max(-40, min(data["level_out_db"])), 0)
    level.set_xlim(seconds[0], seconds[-1])
    level.set_xlabel("seconds")
    mark_sets(coil, seconds, data["set"])
    if report:
        mark_limits(cone, coil, report)
    cone.legend(loc="lower right", bbox_to_anchor=(1, 1), ncols=5, fontsize=8, frameon=False)
    figure.savefig(picture, dpi=85)


main(*sys.argv[1:])
