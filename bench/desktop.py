"""A desktop to measure in, within a session of scripts/with-desktop: an X server, a window manager, a bar with a
tray, and the demo service."""

import json
import os
import pathlib
import signal
import subprocess

from processes import end_with_parent, fail, output, wait_for

BADGE = bytes((0xDC, 0x26, 0x26))
SCREEN = (1024, 768)


class Session:
    def __init__(self, build, subscriptions):
        self.build = build
        self.subscriptions = subscriptions
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
        (folder / "xfce4-panel.xml").write_text(bar_configuration())
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
            os.environ["XDG_STATE_HOME"] + "/service", "--populate", str(self.subscriptions),
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
        if len(saved["subscriptions"]) < self.subscriptions:  # the sample account has some of its own
            fail("not all subscriptions were saved")

    def end(self):
        for process in reversed(self.children):
            process.send_signal(signal.SIGCONT)
            process.terminate()
        for process in self.children:
            process.wait()


def has_owner(name):
    return b"true" in output("dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
        "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner", f"string:{name}")


def bar_configuration():
    """A bar along the top, with nothing but a tray."""
    support = pathlib.Path(__file__).parent.parent / "tests/support"
    text = (support / "xfce_bar.xml").read_text()
    for name, value in dict(POSITION="p=11;x=512;y=15", MODE=0, THICKNESS=30, ICON_SIZE=22).items():
        text = text.replace(f"@{name}@", str(value))
    return text


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
