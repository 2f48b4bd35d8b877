#!/usr/bin/python3
"""A mock of KWallet's daemon, as far as a client sees it: one wallet, closed at first.

Not a wallet: it keeps what it is given in memory. Whoever opens the wallet waits until the test answers for the
person, with the method Answer(bool) of app.orbitledge.Mock, unless the client has it open already.
"""
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = sys.argv[1]
WALLET = "org.kde.KWallet"
MOCK = "app.orbitledge.Mock"


class Daemon(dbus.service.Object):
    def __init__(self, bus):
        super().__init__(bus, "/modules/" + NAME.rsplit(".", 1)[1])
        self.enabled = True
        self.users_of_wallet = set()
        self.opening = []
        self.entries = {}

    @dbus.service.method(WALLET, out_signature="b")
    def isEnabled(self):
        return self.enabled

    @dbus.service.method(WALLET, out_signature="s")
    def networkWallet(self):
        return "kdewallet"

    @dbus.service.method(WALLET, in_signature="s", out_signature="as")
    def users(self, wallet):
        return dbus.Array(sorted(self.users_of_wallet), signature="s")

    @dbus.service.method(WALLET, in_signature="s", out_signature="b")
    def isOpen(self, wallet):
        return bool(self.users_of_wallet)

    @dbus.service.method(WALLET, in_signature="sss", out_signature="b")
    def keyDoesNotExist(self, wallet, folder, key):
        return (folder, key) not in self.entries

    @dbus.service.method(WALLET, in_signature="sxs", out_signature="i", async_callbacks=("reply", "error"))
    def open(self, wallet, window, application, reply, error):
        if application in self.users_of_wallet:
            reply(1)
        else:
            self.opening.append((application, reply))

    @dbus.service.method(WALLET, in_signature="isss", out_signature="i")
    def entryType(self, handle, folder, key, application):
        return 2 if (folder, key) in self.entries else 0

    @dbus.service.method(WALLET, in_signature="isss", out_signature="ay")
    def readEntry(self, handle, folder, key, application):
        return dbus.ByteArray(self.entries[(folder, key)])

    @dbus.service.method(WALLET, in_signature="issays", out_signature="i", byte_arrays=True)
    def writeEntry(self, handle, folder, key, value, application):
        self.entries[(folder, key)] = bytes(value)
        return 0

    @dbus.service.method(WALLET, in_signature="isss", out_signature="i")
    def removeEntry(self, handle, folder, key, application):
        return 0 if self.entries.pop((folder, key), None) is not None else -3

    @dbus.service.method(MOCK, in_signature="b")
    def Answer(self, consents):
        for application, reply in self.opening:
            if consents:
                self.users_of_wallet.add(application)
            reply(1 if consents else -1)
        self.opening = []

    @dbus.service.method(MOCK, out_signature="i")
    def CountEntries(self):
        return len(self.entries)

    @dbus.service.method(MOCK)
    def CloseWallet(self):
        self.users_of_wallet.clear()

    @dbus.service.method(MOCK)
    def Disable(self):
        self.enabled = False


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
session = dbus.SessionBus()
daemon = Daemon(session)
name = dbus.service.BusName(NAME, session)
GLib.MainLoop().run()
