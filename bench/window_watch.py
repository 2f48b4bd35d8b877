"""What bench/WindowWatch.cpp sees of the windows of the X server."""

import queue
import subprocess
import sys
import threading
import time

from processes import end_with_parent, fail


class Unseen(Exception):
    """The observer was late, as can be on a busy machine."""


def once_seen(name, attempt):
    """What the attempt gives; it raises Unseen where it has to be made once more."""
    for _ in range(3):
        try:
            return attempt()
        except Unseen:
            print(f"{name}: not seen, so once more", file=sys.stderr)
    return fail(f"{name} drew no window")


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
        return self.next_of(lambda process: process == pid, kinds, patience)

    def next_of(self, is_meant, kinds, patience=20):
        """The same for all processes that are meant."""
        deadline = time.monotonic() + patience
        while True:
            try:
                at, kind, process, details = self._lines.get(timeout=max(0, deadline - time.monotonic()))
            except queue.Empty:
                return None
            if kind in kinds and is_meant(process):
                return at, kind, details

    def close(self):
        self._process.stdin.close()
        self._process.wait()
