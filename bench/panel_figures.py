"""What bench/panel measures, and how. Runs in a session of scripts/with-desktop:

    panel_figures.py BUILD_FOLDER [--quick]

The first frame is what an observer at the X server sees (bench/WindowWatch.cpp): the moment at which something
has been drawn in the program's window from edge to edge. The programs themselves know nothing of being
measured. They take turns, so that whatever else the machine does meets both.

Times that the program is not awake are measured between two of its refreshes, of which the first one is
15 minutes after its start by default; what it does at midnight and for a reminder is not met either, unless
that falls into that minute.
"""

import os
import signal
import statistics
import sys
import time

from desktop import Session, badge_place
from machine import describe_machine, describe_packages, describe_sharing
from processes import Activity, Program, fail, memory_of, output, settle, wait_for
from window_watch import Unseen, Watch, once_seen

PANEL_SIZE = (360, 480)
SUBSCRIPTIONS = 200

START_RATIO = 1.7
MEMORY_RATIO = 1.7
WAKE_UPS_A_MINUTE = 2
GROWTH_KIB = 1024


class Amounts:
    def __init__(self, quick):
        self.starts = 3 if quick else 10
        self.hidden_seconds = 20 if quick else 60
        self.warm_up = 20
        self.openings = 60 if quick else 500


def await_panel(watch, pid):
    """When it was drawn."""
    while event := watch.next(pid, ("shown",)):
        if tuple(event[2][1:]) == PANEL_SIZE:
            break
    drawn = event and watch.next(pid, ("drawn",))
    if not drawn:
        raise Unseen
    return drawn[0]


class Start:
    """One start of a program, to a window that stays as it is."""

    def __init__(self, watch, *command):
        program = Program(*command)
        try:
            drawn_at = await_panel(watch, program.pid)
        except Unseen:
            program.end()
            raise
        self.first_frame = (drawn_at - program.started) / 1e6
        self.processor_time = Activity(program.pid).nanoseconds / 1e6
        # Small changes are a wheel that turns.
        many = PANEL_SIZE[0] * PANEL_SIZE[1] // 20
        self.whole = self.first_frame
        while event := watch.next(program.pid, ("changed",), 2):
            if event[2][1] >= many:
                self.whole = (event[0] - program.started) / 1e6
        self.memory = memory_of(program.pid, "Pss")
        program.end()


def seen_start(watch, *command):
    return once_seen(command[0], lambda: Start(watch, *command))


def measure_starts(session, amounts):
    watch = Watch(f"{session.build}/bench/bench_window_watch", "--contents")
    panel = f"{session.build}/orbitledge"
    bare = f"{session.build}/bench/bench_bare_program"
    for program in (bare, panel):
        seen_start(watch, program)  # what is not in memory yet is read from the disk
    starts = {"bare": [], "reachable": [], "silent": []}
    for _ in range(amounts.starts):
        starts["bare"].append(seen_start(watch, bare))
        starts["reachable"].append(seen_start(watch, panel))
        session.service.send_signal(signal.SIGSTOP)
        starts["silent"].append(seen_start(watch, panel))
        session.service.send_signal(signal.SIGCONT)
    watch.close()
    return starts


class Hidden:
    """What it uses while nobody sees it."""

    def __init__(self, pid, seconds):
        settle(pid, 5)
        before = Activity(pid)
        time.sleep(seconds)
        after = Activity(pid)
        self.ticks = after.ticks - before.ticks
        self.microseconds = (after.nanoseconds - before.nanoseconds) / 1e3
        wake_ups = after.wake_ups_since(before)
        self.wake_ups = sum(wake_ups.values())
        self.threads = ", ".join(f"{name} {count}" for name, count in sorted(wake_ups.items()))


def open_and_close(watch, pid, times):
    for _ in range(times):
        output("xdotool", "click", "1")
        await_panel(watch, pid)
        output("xdotool", "click", "1")
        if not watch.next(pid, ("hidden",)):
            fail("the panel did not close")


class Residence:
    """A stay in the tray, from its beginning without the panel through many openings."""

    def __init__(self, session, amounts):
        watch = Watch(f"{session.build}/bench/bench_window_watch")
        program = Program(f"{session.build}/orbitledge", "--background")
        place = wait_for("the icon", badge_place, 0.2)
        output("xdotool", "mousemove", str(place[0]), str(place[1]))
        self.before = Hidden(program.pid, amounts.hidden_seconds)
        self.memory = memory_of(program.pid, "Pss")
        open_and_close(watch, program.pid, 1)
        self.after = Hidden(program.pid, amounts.hidden_seconds)
        open_and_close(watch, program.pid, amounts.warm_up - 1)
        settle(program.pid, 2)
        first = memory_of(program.pid, "Rss")
        began = time.monotonic()
        open_and_close(watch, program.pid, amounts.openings)
        self.opening = (time.monotonic() - began) / amounts.openings * 1e3
        settle(program.pid, 2)
        self.growth = memory_of(program.pid, "Rss") - first
        program.end()
        watch.close()


class Table:
    def __init__(self):
        self.missed = False

    @staticmethod
    def line(label, text):
        print(f"{label:<58} {text}")

    def values(self, label, values, unit):
        self.line(label, f"{statistics.median(values):9.1f} {unit:<4} ({min(values):.1f} to {max(values):.1f})")

    def check(self, label, value, limit, digits=2, note=""):
        is_met = value <= limit
        self.missed = self.missed or not is_met
        self.line(label, f"{value:9.{digits}f}      (limit {limit:.{digits}f}) {'ok' if is_met else 'MISSED'}"
            + (f"   {note}" if note else ""))


def report(starts, residence, amounts):
    table = Table()
    names = {"bare": "bare program", "reachable": "panel", "silent": "panel, service silent"}
    for key, name in names.items():
        table.values(f"{name}: start to first frame", [start.first_frame for start in starts[key]], "ms")
    for key, name in names.items():
        table.values(f"{name}: processor time of that", [start.processor_time for start in starts[key]], "ms")
    for key in ("reachable", "silent"):
        table.values(f"{names[key]}: start to the last great change", [start.whole for start in starts[key]], "ms")
    for key, name in names.items():
        table.values(f"{name}: memory, shown", [start.memory / 1024 for start in starts[key]], "MiB")
    table.line("panel: memory, never shown", f"{residence.memory / 1024:9.1f} MiB")
    table.line("panel: one opening and closing", f"{residence.opening:9.1f} ms")
    print()

    def ratio(key, what):
        median = {name: statistics.median(getattr(start, what) for start in starts[name]) for name in (key, "bare")}
        return median[key] / median["bare"]

    table.check("first frame against the bare program's", ratio("reachable", "first_frame"), START_RATIO)
    table.check("first frame, service silent", ratio("silent", "first_frame"), START_RATIO)
    table.check("memory against the bare program's", ratio("reachable", "memory"), MEMORY_RATIO)
    for name, hidden in (("hidden", residence.before), ("hidden again", residence.after)):
        stretch = f"{name}, {amounts.hidden_seconds} s"
        table.check(f"{stretch}: clock ticks", hidden.ticks, 0, 0)
        table.check(f"{stretch}: wake-ups", hidden.wake_ups, WAKE_UPS_A_MINUTE, 0, hidden.threads)
        table.line(f"{stretch}: processor time", f"{hidden.microseconds:9.0f} us")
    table.check(f"growth over {amounts.openings} openings, KiB", residence.growth, GROWTH_KIB - 1, 0)
    return table.missed


def main():
    build = os.path.abspath(sys.argv[1])
    amounts = Amounts("--quick" in sys.argv[2:])
    session = Session(build, SUBSCRIPTIONS)
    try:
        session.sign_in()
        print(describe_machine())
        print(describe_packages("libqt6core6", "libqt6widgets6", "libc6", "xvfb", "xfce4-panel", "xfwm4"))
        if sharing := describe_sharing():
            print(sharing)
        starts = measure_starts(session, amounts)
        residence = Residence(session, amounts)
        missed = report(starts, residence, amounts)
    finally:
        session.end()
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
