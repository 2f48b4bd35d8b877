"""Starting programs, and what the kernel tells of them."""

import ctypes
import os
import pathlib
import signal
import subprocess
import sys
import time

# Only reached by what will never come.
PATIENCE = 60


def fail(reason):
    sys.exit(f"error: {reason}")


def wait_for(what, is_so, pause=0.02):
    deadline = time.monotonic() + PATIENCE
    while not (found := is_so()):
        if time.monotonic() > deadline:
            fail(f"waited in vain for {what}")
        time.sleep(pause)
    return found


def end_with_parent():
    pr_set_pdeathsig = 1
    ctypes.CDLL(None).prctl(pr_set_pdeathsig, signal.SIGKILL)


def output(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False).stdout


class Program:
    """One that was just started."""

    def __init__(self, *command, is_heard=True):
        self.command = command
        silence = [] if is_heard else [(os.POSIX_SPAWN_OPEN, 2, os.devnull, os.O_WRONLY, 0)]
        self.started = time.monotonic_ns()
        self.pid = os.posix_spawn(command[0], command, os.environ, file_actions=silence)

    def end(self):
        os.kill(self.pid, signal.SIGTERM)
        self.wait()

    def wait(self):
        os.waitpid(self.pid, 0)


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
    """What processes have used up to now."""

    def __init__(self, *pids):
        self.wake_ups = {}
        self.names = {}
        self.nanoseconds = 0
        self.ticks = 0
        for pid in pids:
            self._add(pid)

    def _add(self, pid):
        for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
            try:
                status = dict(line.split(":", 1) for line in (task / "status").read_text().splitlines())
            except (FileNotFoundError, ProcessLookupError):
                continue  # it has ended since the folder was read
            self.names[task.name] = status["Name"].strip()
            self.wake_ups[task.name] = int(status["voluntary_ctxt_switches"])
        # Of all threads, also of those that have ended: in nanoseconds as the scheduler counts, and in ticks.
        processor_clock_of_process = (~pid << 3) | 2
        self.nanoseconds += time.clock_gettime_ns(processor_clock_of_process)
        fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
        self.ticks += int(fields[11]) + int(fields[12])

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
