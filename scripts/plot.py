"""Draws a trace of apohost as a picture of three panels. scripts/plot installs what it needs and calls it."""
import csv
import json
import sys

import matplotlib

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402

WITHOUT, BEHIND = "#c0392b", "#1f6f43"


def read(path):
    with open(path, newline="") as file:
        rows = list(csv.DictReader(file))
    if not rows:
        sys.exit(f"{path}: no rows")
    texts = ("set", "path")
    return {name: [row[name] if name in texts else float(row[name]) for row in rows] for name in rows[0]}


def panel(axes, seconds, without, behind, label):
    axes.plot(seconds, without, color=WITHOUT, linewidth=0.7, label="unprotected")
    axes.plot(seconds, behind, color=BEHIND, linewidth=0.7, label="protected")
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
        limits = json.load(file)["speakers"]["limits"]
    for axes, limit in ((cone, limits["displacement_mm"]), (coil, limits["coil_c"])):
        axes.axhline(limit, color="black", linewidth=0.8, linestyle=":", label="limit")


def main(trace, picture, report=None):
    data = read(trace)
    seconds = data["seconds"]
    figure, (cone, coil, level) = pyplot.subplots(3, 1, sharex=True, figsize=(8, 6), layout="constrained")
    panel(cone, seconds, data["displacement_unprotected_mm"], data["displacement_mm"], "cone, mm")
    panel(coil, seconds, data["coil_unprotected_c"], data["coil_c"], "coil, °C")
    panel(level, seconds, data["level_in_db"], data["level_out_db"], "level, dB")
    level.set_ylim(max(-40, min(data["level_out_db"])), 0)
    level.set_xlabel("seconds")
    mark_sets(coil, seconds, data["set"])
    if report:
        mark_limits(cone, coil, report)
    cone.legend(loc="upper right", ncols=3, fontsize=8)
    figure.savefig(picture, dpi=85)


main(*sys.argv[1:])
