"""Starts a desktop entry as GNOME does. Argument: the entry."""

import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio  # noqa: E402

try:
    Gio.DesktopAppInfo.new_from_filename(sys.argv[1]).launch([], None)
except Exception as error:  # also where it is no entry, which is a TypeError
    sys.exit(f"not started: {error}")
