#!/usr/bin/python3
"""A mock of the desktop's portal, as far as it tells settings.

The argument says how it behaves:

dark       the colour scheme is dark, and the contrast the usual one
colourless it has settings, but tells no colour scheme
none       it has no settings
"""
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

BEHAVIOUR = sys.argv[1]
PATH = "/org/freedesktop/portal/desktop"
SETTINGS = "org.freedesktop.portal.Settings"
APPEARANCE = "org.freedesktop.appearance"


class Portal(dbus.service.Object):
    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        if BEHAVIOUR == "none" or (interface, name) != (SETTINGS, "version"):
            raise dbus.DBusException("unknown", name="org.freedesktop.DBus.Error.InvalidArgs")
        return dbus.UInt32(1)

    @dbus.service.method(SETTINGS, in_signature="as", out_signature="a{sa{sv}}")
    def ReadAll(self, namespaces):
        values = {"color-scheme": dbus.UInt32(1), "contrast": dbus.UInt32(0)} if BEHAVIOUR == "dark" else {}
        return {APPEARANCE: dbus.Dictionary(values, signature="sv")}


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
portal = Portal(bus, PATH)
name = dbus.service.BusName("org.freedesktop.portal.Desktop", bus)
GLib.MainLoop().run()
