"""What bench/panel measures, and how. Runs in a session of scripts/with-desktop:

    panel_figures.py BUILD_FOLDER [--quick]

The first frame is what an observer at the X server sees (bench/WindowWatch.cpp): the moment at which something
has been drawn in the program's window from edge to edge. The programs themselves know nothing of being
measured. They take turns, so that whatever else the machine does meets both.

Times that the program is not awake are measured between two of its refreshes, of which the first one is
15 minutes after its start by default; what it does at midnight and for a reminder is not met either, unless
that falls into that minute.
"""

import ctypes
import json
import os
import pathlib
import platform
import queue
import signal
import statistics
import subprocess
import sys
import threading
import time

PANEL_SIZE = (360, 480)
SUBSCRIPTIONS = 200
BADGE = bytes((0xDC, 0x26, 0x26))
SCREEN = (1024, 768)

START_RATIO = 1.7
MEMORY_RATIO = 1.7
WAKE_UPS_A_MINUTE = 2
GROWTH_KIB = 1024

# Only reached by what will never come.
PATIENCE = 60


class Amounts:
    def __init__(self, quick):
        self.starts = 3 if quick else 10
        self.hidden_seconds = 20 if quick else 60
        self.warm_up = 20
        self.openings = 60 if quick else 500


def fail(reason):
    sys.exit(f"error: {reason}")


def wait_for(what, is_so, pause=0.02):
    deadline = time.monotonic() + PATIENCE
    while not (found := is_so()):
        if time.monotonic() > deadline:
            fail(f"waited in vain for {what}")
        time.sleep(pause)
    return found


# ---- what the kernel tells of a process ------------------------------------------------------------------


def tree_of(pid):
    """The process and everything that it started."""
    found = [pid]
    for parent in found:
        for task in pathlib.Path(f"/proc/{parent}/task").iterdir():
            found += [int(child) for child in (task / "children").read_text().split()]
    return found


def memory_of(pid, kind):
    """In KiB, of the whole tree. "Pss" counts what is shared in parts, and so changes with other programs that
    use the same libraries; "Rss" counts it whole, and tells how a program grows whatever others do."""
    total = 0
    for process in tree_of(pid):
        for line in pathlib.Path(f"/proc/{process}/smaps_rollup").read_text().splitlines():
            if line.startswith(f"{kind}:"):
                total += int(line.split()[1])
    return total


class Activity:
    """What a process has used up to now."""

    def __init__(self, pid):
        self.wake_ups = {}
        self.names = {}
        for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
            try:
                status = dict(line.split(":", 1) for line in (task / "status").read_text().splitlines())
            except (FileNotFoundError, ProcessLookupError):
                continue  # it has ended since the folder was read
            self.names[task.name] = status["Name"].strip()
            self.wake_ups[task.name] = int(status["voluntary_ctxt_switches"])
        # Of all threads, also of those that have ended: in nanoseconds as the scheduler counts, and in ticks.
        processor_clock_of_process = (~pid << 3) | 2
        self.nanoseconds = time.clock_gettime_ns(processor_clock_of_process)
        fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
        self.ticks = int(fields[11]) + int(fields[12])

    def wake_ups_since(self, earlier):
        """By the thread's name. One that has ended since woke for that once, at least."""
        found = {}
        for task in earlier.names.keys() | self.names.keys():
            name = self.names.get(task) or earlier.names[task] + " (ended)"
            count = self.wake_ups[task] - earlier.wake_ups.get(task, 0) if task in self.wake_ups else 1
            if count > 0:
                found[name] = found.get(name, 0) + count
        return found


# The toolkit draws with threads that end when they were idle for half a minute.
IDLE_DRAWER = "Thread (pooled)"


def settle(pid, seconds):
    """Until it has slept for so long without waking, and has let go of what it drew with."""
    last, since, deadline = Activity(pid), time.monotonic(), time.monotonic() + 90
    while time.monotonic() < deadline:
        now = Activity(pid)
        if now.wake_ups_since(last) or IDLE_DRAWER in now.names.values():
            last, since = now, time.monotonic()
        if time.monotonic() - since >= seconds:
            return
        time.sleep(0.1)
    # Then what wakes it is a part of what is measured.


# ---- the session -----------------------------------------------------------------------------------------


def end_with_parent():
    pr_set_pdeathsig = 1
    ctypes.CDLL(None).prctl(pr_set_pdeathsig, signal.SIGKILL)


class Watch:
    """The observer at the X server."""

    def __init__(self, program, *arguments):
        self._process = subprocess.Popen([program, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            text=True, bufsize=1, preexec_fn=end_with_parent)
        self._lines = queue.Queue()
        if self._process.stdout.readline() != "watching\n":
            fail("the observer of windows did not start")
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self._process.stdout:
            words = line.split()
            self._lines.put((int(words[0]), words[1], int(words[2]), [int(word) for word in words[3:]]))

    def next(self, pid, kinds, patience=20):
        """The next event of a process's windows, as (time, kind, details); None where none comes."""
        deadline = time.monotonic() + patience
        while True:
            try:
                at, kind, process, details = self._lines.get(timeout=max(0, deadline - time.monotonic()))
            except queue.Empty:
                return None
            if process == pid and kind in kinds:
                return at, kind, details

    def close(self):
        self._process.stdin.close()
        self._process.wait()


class Session:
    def __init__(self, build):
        self.build = build
        self.children = []
        self._start_display()
        self._start_desktop()
        self._start_service()

    def child(self, *command, **options):
        options.setdefault("stdout", subprocess.DEVNULL)
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            preexec_fn=end_with_parent, **options)
        self.children.append(process)
        return process

    def _start_display(self):
        size = f"{SCREEN[0]}x{SCREEN[1]}x24"
        display = self.child("Xvfb", "-displayfd", "1", "-screen", "0", size, "-nolisten", "tcp", "-noreset",
            stdout=subprocess.PIPE, text=True)
        number = display.stdout.readline().strip()
        if not number:
            fail("the X server did not start")
        os.environ["DISPLAY"] = f":{number}"

    def _start_desktop(self):
        os.environ.update(NO_AT_BRIDGE="1", GSETTINGS_BACKEND="memory", LC_ALL="C.UTF-8", TZ="UTC")
        folder = pathlib.Path(os.environ["XDG_CONFIG_HOME"], "xfce4/xfconf/xfce-perchannel-xml")
        folder.mkdir(parents=True)
        (folder / "xfce4-panel.xml").write_text(BAR)
        service = pathlib.Path("/usr/share/dbus-1/services/org.xfce.Xfconf.service").read_text()
        self.child(next(line[5:] for line in service.splitlines() if line.startswith("Exec=")))
        wait_for("the bar's settings", lambda: has_owner("org.xfce.Xfconf"))
        self.child("xfwm4", "--compositor=off")
        wait_for("the window manager",
            lambda: b"window id" in output("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"))
        self.child("xfce4-panel", "--disable-wm-check")
        wait_for("the tray", lambda: has_owner("org.kde.StatusNotifierWatcher"))
        # Away from everything that reacts to it.
        output("xdotool", "mousemove", str(SCREEN[0] // 2), str(SCREEN[1] - 1))

    def _start_service(self):
        self.service = self.child(f"{self.build}/orbitledge-demo-service", "--port", "0", "--data",
            os.environ["XDG_STATE_HOME"] + "/service", "--populate", str(SUBSCRIPTIONS),
            stdout=subprocess.PIPE, text=True)
        words = self.service.stdout.readline().split()
        if words[:2] != ["Listening", "on"]:
            fail("the demo service did not start")
        os.environ.update(ORBITLEDGE_API_URL=words[2], ORBITLEDGE_WEB_URL=words[2])

    def sign_in(self):
        done = subprocess.run([f"{self.build}/orbitledge", "sign-in", "ada@example.com"], input=b"orbit-ledger\n",
            capture_output=True, check=False)
        if done.returncode != 0:
            fail(f"signing in failed: {done.stderr.decode().strip()}")
        saved = json.loads(pathlib.Path(os.environ["XDG_DATA_HOME"],
            "app.orbitledge.Orbitledge/subscription-snapshot-v1.json").read_text())
        if len(saved["subscriptions"]) < SUBSCRIPTIONS:  # the sample account has some of its own
            fail("not all subscriptions were saved")

    def end(self):
        for process in reversed(self.children):
            process.send_signal(signal.SIGCONT)
            process.terminate()
        for process in self.children:
            process.wait()


def output(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False).stdout


def has_owner(name):
    return b"true" in output("dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
        "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner", f"string:{name}")


BAR = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=11;x=512;y=15"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="30"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
    </property>
    <property name="plugin-2" type="string" value="systray"/>
  </property>
</channel>
"""


def badge_place():
    """The middle of the icon's red badge on the bar."""
    picture = output("import", "-window", "root", "-depth", "8", "rgb:-")
    places = []
    at = picture.find(BADGE)
    while at >= 0:
        if at % 3 == 0:
            places.append((at // 3 % SCREEN[0], at // 3 // SCREEN[0]))
        at = picture.find(BADGE, at + 1)
    if not places:
        return None
    return tuple(sum(values) // len(places) for values in zip(*places))


# ---- the programs ----------------------------------------------------------------------------------------


class Program:
    def __init__(self, *command):
        self.started = time.monotonic_ns()
        self.pid = os.posix_spawn(command[0], command, os.environ)

    def end(self):
        os.kill(self.pid, signal.SIGTERM)
        os.waitpid(self.pid, 0)


class Unseen(Exception):
    """The observer was late, as can be on a busy machine."""


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
    for _ in range(3):
        try:
            return Start(watch, *command)
        except Unseen:
            print(f"{command[0]}: not seen, so once more", file=sys.stderr)
    return fail("no window was drawn")


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


# ---- the table -------------------------------------------------------------------------------------------


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


def maps_of_all():
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            yield (process / "maps").read_text()
        except OSError:
            continue  # it has ended, or is somebody else's


def describe_machine():
    cpu = next((line.split(":", 1)[1].strip() for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines()
        if line.startswith("model name")), platform.machine())
    memory = int(pathlib.Path("/proc/meminfo").read_text().split()[1]) // 1024
    print(f"{os.cpu_count()} x {cpu}, {memory} MiB, Linux {platform.release()}, load {os.getloadavg()[0]:.1f}")
    names = ("libqt6core6", "libqt6widgets6", "libc6", "xvfb", "xfce4-panel", "xfwm4")
    versions = output("dpkg-query", "-W", "-f", "${Package} ${Version}\\n", *names).decode().split("\n")
    print("; ".join(sorted({line for line in versions if line})))
    sharing = sum("libQt6Core" in maps for maps in maps_of_all())
    if sharing > 1:
        print(f"{sharing} programs use the toolkit already: memory in parts is less than on a quiet machine, and most "
            "of all for the bare program")


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
    session = Session(build)
    try:
        session.sign_in()
        describe_machine()
        starts = measure_starts(session, amounts)
        residence = Residence(session, amounts)
        missed = report(starts, residence, amounts)
    finally:
        session.end()
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
