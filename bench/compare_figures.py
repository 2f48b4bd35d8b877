"""What bench/compare measures, and how. Runs in a session of scripts/with-desktop:

    compare_figures.py BUILD_FOLDER PACKAGE_FILE [--quick] [--write]

Each program is as somebody has it who has just installed it and has used it once: its files are in memory, its own
folders exist. None of the others has anything to show: no database, no account. Only the program itself and the
browser show the 200 subscriptions of the demo service.

The first frame is what an observer at the X server sees (bench/WindowWatch.cpp): the moment at which something has
been drawn from edge to edge in a window of at least 200 x 200 pixels. Memory is the proportional share (PSS) of a
program's processes, while no other one of these programs runs. Hidden, all of them run side by side.
"""

import os
import pathlib
import random
import re
import shutil
import statistics
import subprocess
import sys
import time

from desktop import Session
from documents import write_between_marks
from machine import describe_machine, describe_packages, describe_sharing
from processes import Activity, Program, fail, memory_of, output, tree_of, wait_for
from window_watch import Unseen, Watch, once_seen

SUBSCRIPTIONS = 200
SMALLEST_WINDOW = 200
# Seconds without a change in a window before its memory is looked at.
QUIET = 3
# For a window that moves by itself.
LONGEST_UNQUIET = 10


class Amounts:
    def __init__(self, quick):
        self.starts = 2 if quick else 10
        self.settling = 20 if quick else 120  # a browser looks after many things when it has been started
        self.minutes = 1 if quick else 10
        self.minute = 20 if quick else 60


class Contender:
    """A program that is measured: what of Debian's installs it, how it is started, and how its window is put away."""

    def __init__(self, name, packages, command, put_away, is_blank=False):
        self.name = name
        self.packages = packages
        self.command = (shutil.which(command[0]) or fail(f"{command[0]} is not installed"), *command[1:])
        self.put_away = put_away
        self.is_blank = is_blank
        self.starts = []
        self.minutes = []

    def of_starts(self, what):
        return [getattr(start, what) for start in self.starts]


def close(window):
    """As the button in the window's frame does; the program stays in the tray."""
    output("wmctrl", "-i", "-c", hex(window))


def press_escape(window):
    output("xdotool", "windowfocus", "--sync", str(window), "key", "Escape")


def minimize(window):
    output("xdotool", "windowminimize", str(window))


def browser_at(page):
    """A window for this page alone, of a size that fits the screen."""
    profile = os.environ["XDG_STATE_HOME"] + "/chromium"
    sandbox = ("--no-sandbox",) if os.geteuid() == 0 else ()  # root has to do without
    return ("/usr/bin/chromium", "--no-first-run", "--password-store=basic", "--window-size=800,600", *sandbox,
        f"--user-data-dir={profile}", f"--app={os.environ['ORBITLEDGE_WEB_URL'].rstrip('/')}{page}")


def contenders(build, package_file):
    return [
        Contender("Orbitledge", [package_file], (f"{build}/orbitledge",), press_escape),
        Contender("a bare Qt window", ["libqt6widgets6"], (f"{build}/bench/bench_bare_program",), close, is_blank=True),
        Contender("KeePassXC", ["keepassxc"], ("/usr/bin/keepassxc",), close),
        Contender("Nextcloud client", ["nextcloud-desktop"], ("/usr/bin/nextcloud",), close),
        Contender("Chromium, calendar page", ["chromium"], browser_at("/calendar"), minimize),
    ]


# ---- setting them up -------------------------------------------------------------------------------------


def set_up_password_manager():
    """To stay in the tray, as the others do by themselves, and not to ask whether it may look for updates."""
    folder = pathlib.Path(os.environ["XDG_CONFIG_HOME"], "keepassxc")
    folder.mkdir(parents=True)
    (folder / "keepassxc.ini").write_text("[General]\nConfigVersion=2\nUpdateCheckMessageShown=true\n"
        "[GUI]\nCheckForUpdates=false\nMinimizeOnClose=true\nMinimizeToTray=true\nShowTrayIcon=true\n")


def windows_named(words):
    return output("xdotool", "search", "--onlyvisible", "--name", words).split()


def sign_browser_in():
    """By the page's own form."""
    program = Program(*browser_at("/login"), is_heard=False)
    window = wait_for("the page for signing in", lambda: windows_named("Sign in"), 0.2)[0]
    output("xdotool", "windowfocus", "--sync", window)
    time.sleep(2)  # until the field has the keyboard
    output("xdotool", "type", "--delay", "50", "ada@example.com\torbit-ledger\n")
    wait_for("the browser to be signed in", lambda: not windows_named("Sign in"), 0.2)
    close(int(window))  # told to end by a signal, it would lose its cookies
    program.wait()
    program = Program(*browser_at("/calendar"), is_heard=False)
    wait_for("the calendar", lambda: windows_named("^Calendar ·"), 0.2)
    program.end()


# ---- a start ---------------------------------------------------------------------------------------------


class Shown:
    """A program with its window on the screen, as it stays."""

    def __init__(self, watch, contender):
        self.program = Program(*contender.command, is_heard=False)  # of what they miss here, nobody has to know
        self._watch = watch
        self._sizes = {}
        self.window, drawn_at = self._first_frame(contender.is_blank)
        self.first_frame = (drawn_at - self.program.started) / 1e6
        deadline = time.monotonic() + LONGEST_UNQUIET
        while time.monotonic() < deadline and self._next(("shown", "changed"), QUIET):
            pass

    def _next(self, kinds, patience=20):
        return self._watch.next_of(lambda process: process in tree_of(self.program.pid), kinds, patience)

    def _first_frame(self, is_blank):
        """The window, and when it had its contents."""
        blank = set()
        while event := self._next(("shown", "drawn", "changed", "hidden")):
            at, kind, (window, *details) = event
            if kind == "shown":
                self._sizes[window] = details
            elif kind == "hidden":
                blank.discard(window)
            elif min(self._sizes.get(window, (0,))) < SMALLEST_WINDOW:
                continue
            elif kind == "changed" and window in blank or kind == "drawn" and (details[0] > 1 or is_blank):
                return window, at
            elif kind == "drawn":
                blank.add(window)
        self.program.end()
        raise Unseen

    def put_away(self, how):
        how(self.window)
        if not self._next(("hidden",)):
            fail(f"the window of {self.program.command[0]} did not close")


class Start:
    """The figures of one start."""

    def __init__(self, watch, contender):
        shown = Shown(watch, contender)
        self.first_frame = shown.first_frame
        self.shown = memory_of(shown.program.pid, "Pss") / 1024
        shown.put_away(contender.put_away)
        time.sleep(QUIET)
        self.hidden = memory_of(shown.program.pid, "Pss") / 1024
        shown.program.end()


def seen(make, watch, contender):
    return once_seen(contender.name, lambda: make(watch, contender))


def measure_starts(watch, programs, amounts):
    """They take turns, so that whatever else the machine does meets all of them, and each comes after each other."""
    for contender in programs:
        seen(Start, watch, contender)  # what is not in memory yet is read from the disk
    chance = random.Random(1)
    for _ in range(amounts.starts):
        for contender in chance.sample(programs, len(programs)):
            contender.starts.append(seen(Start, watch, contender))


# ---- at rest ---------------------------------------------------------------------------------------------


class Minute:
    """What a program's processes use in a minute, in milliseconds of processor time and times they woke."""

    def __init__(self, before, after):
        self.processor_time = max(0, after.nanoseconds - before.nanoseconds) / 1e6
        self.wake_ups = sum(after.wake_ups_since(before).values())


def measure_rest(watch, programs, amounts):
    running = []
    for contender in programs:
        running.append(seen(Shown, watch, contender))
        running[-1].put_away(contender.put_away)
    time.sleep(amounts.settling)

    def activities():
        return [Activity(*tree_of(shown.program.pid)) for shown in running]

    before = activities()
    for _ in range(amounts.minutes):
        time.sleep(amounts.minute)
        after = activities()
        for contender, *both in zip(programs, before, after):
            contender.minutes.append(Minute(*both))
        before = after
    for shown in running:
        shown.program.end()


# ---- installed size --------------------------------------------------------------------------------------


def installed_size(packages):
    """In MiB, what Debian would unpack for it where nothing is installed, not even the C library."""
    plan = subprocess.run(["apt-get", "--simulate", "--no-install-recommends", "-o", "Dir::State::status=/dev/null",
        "install", *packages], stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False, text=True)
    if plan.returncode != 0:
        fail(f"apt-get does not know how to install {', '.join(packages)}: {plan.stderr.strip()}")
    names = re.findall(r"^Inst (\S+)", plan.stdout, flags=re.MULTILINE)
    files = [name for name in packages if "/" in name]
    own = [output("dpkg-deb", "--field", file, "Package").decode().strip() for file in files]
    fields = output("apt-cache", "show", "--no-all-versions", *(name for name in names if name not in own)).decode()
    fields += "".join(output("dpkg-deb", "--field", file).decode() for file in files)
    return sum(int(size) for size in re.findall(r"^Installed-Size: (\d+)", fields, flags=re.MULTILINE)) / 1024


# ---- the table -------------------------------------------------------------------------------------------


def median_and_spread(values, digits):
    low, middle, high = (f"{value:.{digits}f}" for value in (min(values), statistics.median(values), max(values)))
    return f"{middle} ({low} to {high})"


def table(programs):
    rows = [
        ("start to first frame, ms", lambda one: median_and_spread(one.of_starts("first_frame"), 0)),
        ("memory, shown, MiB", lambda one: median_and_spread(one.of_starts("shown"), 1)),
        ("memory, hidden, MiB", lambda one: median_and_spread(one.of_starts("hidden"), 1)),
        ("hidden for a minute: processor, ms",
            lambda one: median_and_spread([minute.processor_time for minute in one.minutes], 1)),
        ("hidden for a minute: wake-ups", lambda one: median_and_spread([minute.wake_ups for minute in one.minutes], 0)),
        ("installed with all it needs, MiB", lambda one: f"{installed_size(one.packages):.0f}"),
    ]
    lines = ["| | " + " | ".join(one.name for one in programs) + " |", "| --- |" + " ---: |" * len(programs)]
    return "\n".join(lines + [f"| {label} | " + " | ".join(figure(one) for one in programs) + " |" for label, figure in rows])


def is_goal_met(programs):
    """Says for each goal whether it is met."""
    by_name = {one.name: one for one in programs}
    own = by_name["Orbitledge"]
    met = True

    def check(label, value, limit):
        nonlocal met
        met = met and value <= limit
        print(f"{label:<56} {value:6.2f}   (goal {limit:.2f}) {'ok' if value <= limit else 'MISSED'}")

    for rival, start, memory in (("KeePassXC", 1 / 2, 2 / 3), ("Chromium, calendar page", 1 / 4, 1 / 6)):
        for what, label, limit in (("first_frame", "first frame", start), ("shown", "memory, shown", memory),
                ("hidden", "memory, hidden", memory)):
            value = statistics.median(own.of_starts(what)) / statistics.median(by_name[rival].of_starts(what))
            check(f"{label}, against {rival}", value, limit)
    check("hidden for a minute: processor, ms", statistics.median(minute.processor_time for minute in own.minutes), 0)
    check("hidden for a minute: wake-ups", statistics.median(minute.wake_ups for minute in own.minutes), 0)
    return met


def main():
    build, package_file = (os.path.abspath(argument) for argument in sys.argv[1:3])
    amounts = Amounts("--quick" in sys.argv)
    session = Session(build, SUBSCRIPTIONS)
    try:
        session.sign_in()
        set_up_password_manager()
        programs = contenders(build, package_file)
        sign_browser_in()
        machine = [describe_machine(), describe_packages("libqt6core6", "libqt5core5a", "xvfb", "xfwm4", "xfce4-panel",
            *(name for one in programs for name in one.packages if "/" not in name)), describe_sharing()]
        watch = Watch(f"{build}/bench/bench_window_watch", "--contents")
        measure_starts(watch, programs, amounts)
        measure_rest(watch, programs, amounts)
        watch.close()
    finally:
        session.end()
    text = "\n".join(["```", *filter(None, machine), "```", "", table(programs)])
    print(text + "\n")
    met = is_goal_met(programs)
    if "--write" in sys.argv:
        write_between_marks(pathlib.Path("docs/performance.md"), "bench/compare", text)
    sys.exit(0 if met else 1)


if __name__ == "__main__":
    main()
