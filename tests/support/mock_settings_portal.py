#!/usr/bin/python3
"""The part of the desktop portal that tells how the person wants things to look.

Its first argument are the settings, JSON of groups of keys; with "error" for a second one it refuses to tell
them. app.orbitledge.Test.Set(group, key, JSON) changes one, which it tells everybody, and
ReadCount() is how often somebody asked for all.
"""

import json
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = "org.freedesktop.portal.Desktop"
INTERFACE = "org.freedesktop.portal.Settings"
TEST = "app.orbitledge.Test"


def on_bus(value):
    """Whole numbers are unsigned, as the portal has them."""
    if isinstance(value, bool):
        return dbus.Boolean(value, variant_level=1)
    if isinstance(value, int):
        return dbus.UInt32(value, variant_level=1) if value >= 0 else dbus.Int32(value, variant_level=1)
    if isinstance(value, float):
        return dbus.Double(value, variant_level=1)
    if isinstance(value, list):
        return dbus.Array([dbus.Double(part) for part in value], signature="d", variant_level=1)
    return dbus.String(value, variant_level=1)


class Portal(dbus.service.Object):
    def __init__(self, bus, settings):
        super().__init__(bus, "/org/freedesktop/portal/desktop")
        self.settings = settings
        self.kind = "settings"
        self.reads = 0

    @dbus.service.method(
        INTERFACE, in_signature="as", out_signature="a{sa{sv}}", async_callbacks=("answer", "fail"))
    def ReadAll(self, groups, answer, fail):
        self.reads += 1
        if self.kind == "error":
            fail(dbus.DBusException("not today", name="org.freedesktop.portal.Error.Failed"))
        else:
            answer({group: {key: on_bus(value) for key, value in keys.items()}
                    for group, keys in self.settings.items() if group in groups})

    @dbus.service.method(TEST, in_signature="sss")
    def Set(self, group, key, value):
        self.settings.setdefault(group, {})[key] = json.loads(value)
        self.SettingChanged(group, key, on_bus(json.loads(value)))

    @dbus.service.method(TEST, out_signature="i")
    def ReadCount(self):
        return self.reads

    @dbus.service.signal(INTERFACE, signature="ssv")
    def SettingChanged(self, group, key, value):
        pass


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
session = dbus.SessionBus()
portal = Portal(session, json.loads(sys.argv[1]))
portal.kind = sys.argv[2] if len(sys.argv) > 2 else "settings"
owned = dbus.service.BusName(NAME, session)
GLib.MainLoop().run()
