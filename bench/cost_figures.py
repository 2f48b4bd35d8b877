"""The parts of bench/cost that are not a benchmark of their own:

    cost_figures.py opening BUILD_FOLDER SUBSCRIPTIONS     in a session of scripts/with-desktop
    cost_figures.py report FIGURES_FOLDER SIZE... [--write]
"""

import json
import math
import os
import pathlib
import statistics
import sys
import time

from desktop import Session, badge_place
from documents import write_between_marks
from panel_figures import await_panel
from processes import Program, output, wait_for
from window_watch import Watch

# How much more than n log n a step of ten may take, for caches that no longer hold what they held.
ALLOWANCE = 1.5
# Below this what does not depend on the number is most of it.
FIRST_LARGE = 1000
FRAME = 16  # milliseconds
LARGEST_IN_A_FRAME = 10000

# Where a service is asked, it has the sample account's own subscriptions at least.
FEWEST_OF_SERVICE = 16

SERIES = {
    "decode/records": ("decoding the list", "#0E7490"),
    "timeline": ("building the timeline", "#059669"),
    "reminders": ("planning reminders", "#DC2626"),
    "cache/load": ("loading the cache", "#7C3AED"),
    "cache/save": ("saving the cache", "#A16207"),
    "refresh": ("a whole refresh", "#111827"),
    "stretch": ("longest stretch on the interface's thread", "#DB2777"),
    "opening": ("opening the panel", "#2563EB"),
}


def measure_opening(build, size):
    """Milliseconds from the click on the icon to the first frame, the program having run since before."""
    session = Session(os.path.abspath(build), size)
    try:
        session.sign_in()
        watch = Watch(f"{session.build}/bench/bench_window_watch")
        program = Program(f"{session.build}/orbitledge", "--background")
        place = wait_for("the icon", badge_place, 0.2)
        output("xdotool", "mousemove", str(place[0]), str(place[1]))
        times = []
        for _ in range(11):
            time.sleep(0.5)  # as a person would, after what closing leaves to do
            clicked = time.monotonic_ns()
            output("xdotool", "click", "1")
            times.append((await_panel(watch, program.pid) - clicked) / 1e6)
            output("xdotool", "click", "1")
            watch.next(program.pid, ("hidden",))
        program.end()
        watch.close()
    finally:
        session.end()
    print(f"{statistics.median(times[1:]):.3f}")  # the first one of all makes what the others find


def read_figures(folder, sizes):
    """Milliseconds by series and size."""
    figures = {name: {} for name in SERIES}
    for entry in json.loads((folder / "core.json").read_text())["benchmarks"]:
        name = entry["run_name"].removesuffix("/real_time")
        if entry["aggregate_name"] == "median":
            assert entry["time_unit"] == "ms", entry
            figures[name.rsplit("/", 1)[0]][int(name.rsplit("/", 1)[1])] = entry["real_time"]
    for size in sizes:
        stretch, whole = (folder / f"refresh-{size}.txt").read_text().split()
        figures["stretch"][size] = float(stretch)
        figures["refresh"][size] = float(whole)
        figures["opening"][size] = float((folder / f"opening-{size}.txt").read_text())
    return figures


def rounded(value):
    return f"{value:.4f}" if value < 0.01 else f"{value:.3f}" if value < 1 else f"{value:.1f}" if value < 100 else f"{value:.0f}"


def table(figures, sizes):
    lines = ["| milliseconds, with so many subscriptions | " + " | ".join(f"{size:,}" for size in sizes) + " |",
        "| --- |" + " ---: |" * len(sizes)]
    for name, (label, _) in SERIES.items():
        lines.append(f"| {label} | " + " | ".join(rounded(figures[name][size]) for size in sizes) + " |")
    if sizes[0] < FEWEST_OF_SERVICE:
        lines += ["", f"Refreshing and opening are with {FEWEST_OF_SERVICE} in the first column, which the sample account has."]
    return "\n".join(lines)


def plot(figures, sizes):
    """Both axes by powers of ten. What is flat does not depend on the number; dotted is n log n."""
    width, height, left, top, right, bottom = 820, 420, 84, 16, 290, 40
    low, high = -3, 4
    inner = (width - left - right, height - top - bottom)
    first, last = math.log10(sizes[0]), math.log10(sizes[-1])

    def place(size, value):
        x = left + inner[0] * (math.log10(size) - first) / (last - first)
        y = top + inner[1] * (high - math.log10(max(value, 10**low))) / (high - low)
        return f"{x:.1f},{y:.1f}"

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" font-family="sans-serif" '
        'font-size="12">', f'<rect width="{width}" height="{height}" fill="#FFFFFF"/>']
    for power in range(low, high + 1):
        x, y = place(sizes[0], 10**power).split(",")
        parts.append(f'<path d="M{left} {y}H{width - right}" stroke="#E5E7EB"/>'
            f'<text x="{left - 8}" y="{float(y) + 4}" text-anchor="end" fill="#374151">{10**power:g} ms</text>')
    for size in sizes:
        x = place(size, 1).split(",")[0]
        parts.append(f'<text x="{x}" y="{height - 16}" text-anchor="middle" fill="#374151">{size:,}</text>')
    guide = [place(size, 1e-3 * size * math.log2(size) / (10 * math.log2(10))) for size in sizes]
    parts.append(f'<polyline points="{" ".join(guide)}" fill="none" stroke="#9CA3AF" stroke-dasharray="2 4"/>')
    ends = sorted(SERIES, key=lambda name: -figures[name][sizes[-1]])
    label_y = -math.inf
    for name in ends:
        label, color = SERIES[name]
        points = [place(size, figures[name][size]) for size in sizes]
        parts.append(f'<polyline points="{" ".join(points)}" fill="none" stroke="{color}" stroke-width="2"/>')
        label_y = max(label_y + 15, float(points[-1].split(",")[1]) + 4)
        parts.append(f'<text x="{width - right + 8}" y="{label_y:.1f}" fill="{color}">{label}</text>')
    parts.append("</svg>")
    return "\n".join(parts) + "\n"


def report(folder, sizes, write):
    figures = read_figures(folder, sizes)
    text = table(figures, sizes)
    print(text)
    print()
    missed = False

    def check(label, value, limit):
        nonlocal missed
        missed = missed or value > limit
        print(f"{label:<78} {value:7.2f}   (limit {limit:.2f}) {'ok' if value <= limit else 'MISSED'}")

    for name, (label, _) in SERIES.items():
        for small, large in zip(sizes, sizes[1:]):
            if small >= FIRST_LARGE:
                growth = large * math.log(large) / (small * math.log(small))
                check(f"{label}, {large:,} against {small:,}", figures[name][large] / figures[name][small],
                    ALLOWANCE * growth)
    check(f"longest stretch with {LARGEST_IN_A_FRAME:,}, ms", figures["stretch"][LARGEST_IN_A_FRAME], FRAME)
    if write:
        write_between_marks(pathlib.Path("docs/performance.md"), "bench/cost", text)
        pathlib.Path("docs/images/cost.svg").write_text(plot(figures, sizes))
    sys.exit(1 if missed else 0)


def main():
    if sys.argv[1] == "opening":
        measure_opening(sys.argv[2], int(sys.argv[3]))
    else:
        sizes = [int(word) for word in sys.argv[3:] if word.isdigit()]
        report(pathlib.Path(sys.argv[2]), sizes, "--write" in sys.argv)


if __name__ == "__main__":
    main()
