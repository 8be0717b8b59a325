"""Who manages sessions and the computer's power on a desktop's own system bus: what a test lets org.freedesktop.login1 do."""

import os
import select
import threading

from gi.repository import Gio, GLib

from processes import wait_for

NAME = "org.freedesktop.login1"
MANAGER = "/org/freedesktop/login1"
SESSION = "/org/freedesktop/login1/session/_31"

INTERFACES = Gio.DBusNodeInfo.new_for_xml("""
<node>
  <interface name="org.freedesktop.login1.Manager">
    <method name="GetSession"><arg type="s" direction="in"/><arg type="o" direction="out"/></method>
    <method name="GetSessionByPID"><arg type="u" direction="in"/><arg type="o" direction="out"/></method>
    <method name="Inhibit">
      <arg type="s" name="what" direction="in"/><arg type="s" name="who" direction="in"/>
      <arg type="s" name="why" direction="in"/><arg type="s" name="mode" direction="in"/>
      <arg type="h" direction="out"/>
    </method>
    <signal name="PrepareForSleep"><arg type="b"/></signal>
    <signal name="PrepareForShutdown"><arg type="b"/></signal>
  </interface>
  <interface name="org.freedesktop.login1.Session">
    <method name="SetIdleHint"><arg type="b" direction="in"/></method>
    <method name="SetLockedHint"><arg type="b" direction="in"/></method>
    <signal name="Lock"/><signal name="Unlock"/>
  </interface>
</node>
""")


class Inhibitor:
    """A lock that somebody has been given; it is held until every copy of its descriptor has been closed."""

    def __init__(self, arguments, end):
        self.what, self.who, self.why, self.mode = arguments
        self.end = end

    def held(self):
        return not select.select([self.end], [], [], 0)[0]


class Logind:
    """Answers on a thread of its own until it is closed."""

    def __init__(self):
        self.inhibitors = []
        self.context = GLib.MainContext()
        self.loop = GLib.MainLoop(self.context)
        self.thread = threading.Thread(target=self.serve, daemon=True)
        self.bus = Gio.DBusConnection.new_for_address_sync(
            os.environ["DBUS_SYSTEM_BUS_ADDRESS"],
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        self.bus.set_exit_on_close(False)
        self.thread.start()
        wait_for(lambda: self.owns_name, "logind's name")

    owns_name = False

    def serve(self):
        self.context.push_thread_default()
        for path, interface in ((MANAGER, INTERFACES.interfaces[0]), (SESSION, INTERFACES.interfaces[1])):
            self.bus.register_object(path, interface, self.answer, None, None)
        answer = self.bus.call_sync("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName",
                                    GLib.Variant("(su)", (NAME, 4)), None, Gio.DBusCallFlags.NONE, 5000, None)
        self.owns_name = answer.unpack() == (1,)
        self.loop.run()

    def answer(self, bus, sender, path, interface, method, arguments, invocation):
        if method == "Inhibit":
            reader, writer = os.pipe()
            self.inhibitors.append(Inhibitor(arguments.unpack(), reader))
            descriptors = Gio.UnixFDList.new()
            descriptors.append(writer)
            invocation.return_value_with_unix_fd_list(GLib.Variant("(h)", (0,)), descriptors)
            os.close(writer)
        elif method.startswith("GetSession"):
            invocation.return_value(GLib.Variant("(o)", (SESSION,)))
        else:
            invocation.return_value(None)

    def tell(self, path, interface, signal, *arguments):
        body = GLib.Variant("(" + "b" * len(arguments) + ")", arguments) if arguments else None
        self.bus.emit_signal(None, path, f"{NAME}.{interface}", signal, body)
        self.bus.flush_sync(None)

    def lock_session(self):
        self.tell(SESSION, "Session", "Lock")

    def unlock_session(self):
        self.tell(SESSION, "Session", "Unlock")

    def prepare_for_sleep(self):
        self.tell(MANAGER, "Manager", "PrepareForSleep", True)

    def prepare_for_shutdown(self):
        self.tell(MANAGER, "Manager", "PrepareForShutdown", True)

    def close(self):
        self.loop.quit()
        self.thread.join(5)
        self.bus.close_sync(None)
        for inhibitor in self.inhibitors:
            os.close(inhibitor.end)
