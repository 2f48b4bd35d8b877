#!/usr/bin/python3
"""A mock Secret Service with one item, for what GNOME's keyring never does. It keeps no secrets.

The first argument says how it behaves:

deny   it finds the item unlocked, but hands out no secret
ask    the collection is unlocked, but the item is not: the person is asked for it, and declines
mute   it finds the item unlocked, and says no more when it is asked for the secret
die    it finds the item unlocked, and ends when it is asked for the secret
"""
import os
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

BEHAVIOUR = sys.argv[1]
ROOT = "/org/freedesktop/secrets"
COLLECTION = ROOT + "/collection/box"
ITEM = COLLECTION + "/1"
PROMPT = ROOT + "/prompt/1"
NOTHING = dbus.ObjectPath("/")


def paths(*items):
    return dbus.Array([dbus.ObjectPath(item) for item in items], signature="o")


class Service(dbus.service.Object):
    @dbus.service.method("org.freedesktop.Secret.Service", in_signature="a{ss}", out_signature="aoao")
    def SearchItems(self, attributes):
        if attributes.get("type", "base64") != "base64":
            return paths(), paths()
        return (paths(), paths(ITEM)) if BEHAVIOUR == "ask" else (paths(ITEM), paths())

    @dbus.service.method("org.freedesktop.Secret.Service", in_signature="s", out_signature="o")
    def ReadAlias(self, alias):
        return dbus.ObjectPath(COLLECTION)

    @dbus.service.method("org.freedesktop.Secret.Service", in_signature="sv", out_signature="vo")
    def OpenSession(self, algorithm, value):
        if algorithm != "plain":
            raise dbus.DBusException("only plain", name="org.freedesktop.DBus.Error.NotSupported")
        return "", dbus.ObjectPath(ROOT + "/session/1")

    @dbus.service.method("org.freedesktop.Secret.Service", in_signature="ao", out_signature="aoo")
    def Unlock(self, objects):
        if list(objects) == [COLLECTION]:
            return paths(COLLECTION), NOTHING
        return paths(), dbus.ObjectPath(PROMPT)

    @dbus.service.method(
        "org.freedesktop.Secret.Service",
        in_signature="aoo",
        out_signature="a{o(oayays)}",
        async_callbacks=("reply", "error"),
    )
    def GetSecrets(self, items, session, reply, error):
        if BEHAVIOUR == "die":
            os._exit(1)
        if BEHAVIOUR != "mute":
            reply(dbus.Dictionary({}, signature="o(oayays)"))


class Collection(dbus.service.Object):
    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return False


class Item(dbus.service.Object):
    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="s", out_signature="a{sv}")
    def GetAll(self, interface):
        return dbus.Dictionary({"Locked": False}, signature="sv")

    @dbus.service.method("org.freedesktop.Secret.Item", out_signature="o")
    def Delete(self):
        return dbus.ObjectPath(PROMPT) if BEHAVIOUR == "ask" else NOTHING


class Prompt(dbus.service.Object):
    @dbus.service.method("org.freedesktop.Secret.Prompt", in_signature="s")
    def Prompt(self, window):
        GLib.idle_add(self.Completed, True, paths())

    @dbus.service.method("org.freedesktop.Secret.Prompt")
    def Dismiss(self):
        pass

    @dbus.service.signal("org.freedesktop.Secret.Prompt", signature="bv")
    def Completed(self, dismissed, result):
        pass


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
objects = [Service(bus, ROOT), Collection(bus, COLLECTION), Item(bus, ITEM), Prompt(bus, PROMPT)]
name = dbus.service.BusName("org.freedesktop.secrets", bus)
GLib.MainLoop().run()
