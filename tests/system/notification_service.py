"""A notification service with actions, on the bus of the tests."""

from gi.repository import Gio, GLib

NAME, PATH = "org.freedesktop.Notifications", "/org/freedesktop/Notifications"
METHODS = {"GetCapabilities": ("", "as"), "Notify": ("susssasa{sv}i", "u"),
           "CloseNotification": ("u", "")}


def interface():
    def arguments(signature, direction):
        types = []
        while signature:
            length = 5 if signature.startswith("a{") else 1 + signature.startswith("a")
            types.append(f'<arg type="{signature[:length]}" direction="{direction}"/>')
            signature = signature[length:]
        return "".join(types)

    methods = "".join(f'<method name="{name}">{arguments(taken, "in")}{arguments(given, "out")}'
                      "</method>" for name, (taken, given) in METHODS.items())
    xml = f'<node><interface name="{NAME}">{methods}</interface></node>'
    return Gio.DBusNodeInfo.new_for_xml(xml).interfaces[0]


class NotificationService:
    """Keeps the notices that are shown, {number: (summary, actions)}. Works in the main loop."""

    def __init__(self, bus):
        self.bus, self.shown, self.count = bus, {}, 0
        bus.register_object(PATH, interface(), self.answer, None, None)
        Gio.bus_own_name_on_connection(bus, NAME, 0, None, None)

    def answer(self, _bus, _sender, _path, _interface, method, arguments, invocation):
        if method == "GetCapabilities":
            invocation.return_value(GLib.Variant("(as)", (["actions"],)))
        elif method == "Notify":
            _, replaced, _, summary, _, actions, _, _ = arguments.unpack()
            self.count += 0 if replaced else 1
            number = replaced or self.count
            self.shown[number] = (summary, actions)
            invocation.return_value(GLib.Variant("(u)", (number,)))
        else:
            self.shown.pop(arguments.unpack()[0], None)
            invocation.return_value(None)

    def undo(self):
        """Presses "Undo" of the newest notice that has it; whether there was one."""
        GLib.MainContext.default().iteration(False)
        for number, (_, actions) in sorted(self.shown.items(), reverse=True):
            if "undo" in actions:
                del self.shown[number]
                self.bus.emit_signal(None, PATH, NAME, "ActionInvoked",
                                     GLib.Variant("(us)", (number, "undo")))
                return True
        return False
