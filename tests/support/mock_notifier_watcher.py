#!/usr/bin/python3
"""Keeps a list of tray icons, and says that somebody shows them when it is told so by Host(bool)."""

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = "org.kde.StatusNotifierWatcher"


class Watcher(dbus.service.Object):
    def __init__(self, bus):
        self.has_host = False
        self.items = []
        super().__init__(bus, "/StatusNotifierWatcher")

    # The module that this is written with declares no properties, and some look for them there first.
    @dbus.service.method(
        dbus.INTROSPECTABLE_IFACE, out_signature="s", path_keyword="path", connection_keyword="connection")
    def Introspect(self, path, connection):
        text = super().Introspect(path, connection)
        start = f'<interface name="{NAME}">'
        return text.replace(
            start, start + '<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>')

    @dbus.service.method("app.orbitledge.Test", in_signature="b")
    def Host(self, has_host):
        self.has_host = bool(has_host)
        if has_host:
            self.StatusNotifierHostRegistered()
        else:
            self.StatusNotifierHostUnregistered()

    @dbus.service.method("app.orbitledge.Test", out_signature="i")
    def ItemCount(self):
        return len(self.items)

    @dbus.service.method(NAME, in_signature="s", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, service, sender=None):
        self.items.append(service if service.startswith(":") else sender + service)

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, _interface, name):
        if name == "IsStatusNotifierHostRegistered":
            return dbus.Boolean(self.has_host)
        if name == "RegisteredStatusNotifierItems":
            return dbus.Array(self.items, signature="s")
        return dbus.Int32(0)

    @dbus.service.signal(NAME)
    def StatusNotifierHostRegistered(self):
        pass

    @dbus.service.signal(NAME)
    def StatusNotifierHostUnregistered(self):
        pass


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
session = dbus.SessionBus()
watcher = Watcher(session)
owned = dbus.service.BusName(NAME, session)
GLib.MainLoop().run()
