#!/usr/bin/python3
"""A notification daemon without a screen, for what the real one of the tests does not do.

usage: mock_notifications.py SERVER_NAME

It tells everybody on the bus of what is chosen and closed, not the sender alone, as some do. Choose(number) of the
interface app.orbitledge.Test stands for a person's click; it gives an activation token too. CloseAll() closes what
is shown.
"""

import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = "org.freedesktop.Notifications"
PATH = "/org/freedesktop/Notifications"


class Notifications(dbus.service.Object):
    def __init__(self, bus, server_name):
        super().__init__(bus, PATH)
        self.server_name = server_name
        self.count = 0

    @dbus.service.method(NAME, out_signature="ssss")
    def GetServerInformation(self):
        return (self.server_name, "test", "1", "1.2")

    @dbus.service.method(NAME, out_signature="as")
    def GetCapabilities(self):
        return ["actions", "body"]

    @dbus.service.method(NAME, in_signature="susssasa{sv}i", out_signature="u")
    def Notify(self, _name, replaced, _icon, _title, _body, _actions, _hints, _timeout):
        if replaced:
            return replaced
        self.count += 1
        return self.count

    @dbus.service.method(NAME, in_signature="u")
    def CloseNotification(self, number):
        self.NotificationClosed(number, 3)

    @dbus.service.method("app.orbitledge.Test", in_signature="u")
    def Choose(self, number):
        self.ActivationToken(number, "token-%d" % number)
        self.ActionInvoked(number, "default")

    @dbus.service.method("app.orbitledge.Test")
    def CloseAll(self):
        for number in range(1, self.count + 1):
            self.NotificationClosed(number, 2)

    @dbus.service.signal(NAME, signature="us")
    def ActionInvoked(self, number, action):
        pass

    @dbus.service.signal(NAME, signature="us")
    def ActivationToken(self, number, token):
        pass

    @dbus.service.signal(NAME, signature="uu")
    def NotificationClosed(self, number, reason):
        pass


def main():
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    service = Notifications(bus, sys.argv[1])  # before the name, which others wait for
    name = dbus.service.BusName(NAME, bus)
    GLib.MainLoop().run()
    del service, name


main()
