#!/usr/bin/python3
"""A mock of systemd's user instance, which starts nothing. It writes what it is asked for to a file, a line a
call.

Arguments: how it behaves, and the file.

obey       it says that it did what it was asked for
mute       it says nothing
refuse     it denies everything
fail       it accepts jobs, and they fail
forget     it knows no unit
restarted  it knows no unit before it has read them
stopped    its unit is not active before it is started
slow       it obeys, but its jobs end only when it is asked for the next thing, or to Finish
"""
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

BEHAVIOUR, RECORD = sys.argv[1:]
ROOT = "/org/freedesktop/systemd1"
INTERFACE = ROOT[1:].replace("/", ".") + ".Manager"


class Unit(dbus.service.Object):
    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        if name == "ActiveState":
            if BEHAVIOUR == "stopped" and manager.jobs == 0:
                return "inactive"
            return "failed" if BEHAVIOUR == "fail" else "active"
        return dbus.UInt64(1773824400000000)  # 2026-03-18T09:00:00Z


class Manager(dbus.service.Object):
    jobs = 0
    unfinished = []
    has_read = False

    @dbus.service.method(
        dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v", async_callbacks=("reply", "error")
    )
    def Get(self, interface, name, reply, error):
        self.answer(["Get", name], reply, error, ("252.38",))

    @dbus.service.method(
        INTERFACE, in_signature="s", out_signature="o", async_callbacks=("reply", "error")
    )
    def GetUnit(self, unit, reply, error):
        self.answer(["GetUnit", unit], reply, error, (dbus.ObjectPath(ROOT + "/unit/one"),))

    def answer(self, call, reply, error, value=()):
        with open(RECORD, "a", encoding="utf-8") as record:
            record.write(" ".join(call) + "\n")
        self.finish()
        if BEHAVIOUR == "refuse":
            name = "org.freedesktop.DBus.Error.AccessDenied"
            error(dbus.DBusException("You may not do that.\nReally.", name=name))
        elif self.knows_nothing() and call[0] not in ("Reload", "Get"):
            name = "org.freedesktop.systemd1.NoSuchUnit"
            error(dbus.DBusException("Unit " + call[1] + " not found.", name=name))
        elif BEHAVIOUR != "mute":
            reply(*value)

    def knows_nothing(self):
        return BEHAVIOUR == "forget" or (BEHAVIOUR == "restarted" and not self.has_read)

    def finish(self):
        for number, unit in self.unfinished:
            result = "failed" if BEHAVIOUR == "fail" else "done"
            self.JobRemoved(number, self.path(number), unit, result)
        self.unfinished.clear()

    @staticmethod
    def path(number):
        return dbus.ObjectPath(f"{ROOT}/job/{number}")

    def start_job(self, call, reply, error):
        self.jobs += 1
        self.answer(call, reply, error, (self.path(self.jobs),))
        self.unfinished.append((self.jobs, call[1]))
        if BEHAVIOUR != "slow":
            GLib.idle_add(self.finish)

    @dbus.service.method(INTERFACE, async_callbacks=("reply", "error"))
    def Reload(self, reply, error):
        self.has_read = True
        self.answer(["Reload"], reply, error)

    @dbus.service.method(
        INTERFACE, in_signature="ss", out_signature="o", async_callbacks=("reply", "error")
    )
    def RestartUnit(self, unit, mode, reply, error):
        self.start_job(["RestartUnit", unit, mode], reply, error)

    @dbus.service.method(
        INTERFACE, in_signature="ss", out_signature="o", async_callbacks=("reply", "error")
    )
    def StopUnit(self, unit, mode, reply, error):
        self.start_job(["StopUnit", unit, mode], reply, error)

    @dbus.service.method(INTERFACE)
    def Finish(self):
        self.finish()

    @dbus.service.signal(INTERFACE, signature="uoss")
    def JobRemoved(self, number, job, unit, result):
        pass


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
manager = Manager(bus, ROOT)
unit = Unit(bus, ROOT + "/unit/one")
name = dbus.service.BusName("org.freedesktop.systemd1", bus)
GLib.MainLoop().run()
