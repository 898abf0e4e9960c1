"""Finds the controls of a running program by what a screen reader is given of them."""
import os


class Screen:
    """The accessible programs of one desktop. Only one desktop can be looked at by a process."""

    def __init__(self, desktop):
        self.desktop = desktop
        os.environ.update({key: desktop.environment[key] for key in
                           ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "HOME")})
        import pyatspi
        self.pyatspi = pyatspi

    def find(self, role, name, seconds=20):
        """The showing control of that role ("push button", "text", "label") whose name is `name`; waits for it."""
        return self.desktop.wait_for(lambda: next(self.all(role, name), None), f"the {role} \"{name}\"", seconds)

    def all(self, role=None, name=None):
        for control in self.walk():
            try:
                if (role in (None, control.getRoleName()) and name in (None, control.name)
                        and control.getState().contains(self.pyatspi.STATE_SHOWING)):
                    yield control
            except Exception:  # the control went away while we looked at it
                continue

    def focusable(self):
        """The showing controls that the keyboard may reach; the cells of a table count as one control."""
        for control in self.all():
            if (control.getState().contains(self.pyatspi.STATE_FOCUSABLE)
                    and control.getRoleName() not in ("table cell", "list item")):
                yield control

    def texts(self, name):
        """The texts of all fields that are labelled so."""
        fields = [field.queryText() for field in self.all("text", name)]
        return [field.getText(0, field.characterCount) for field in fields]

    def click(self, role, name):
        box = self.box(self.find(role, name))
        self.desktop.click(box.x + box.width // 2, box.y + box.height // 2)

    def box(self, control):
        """Place on the screen: x, y, width, height."""
        return control.queryComponent().getExtents(self.pyatspi.DESKTOP_COORDS)

    def text(self, name):
        """The text of the field that is labelled so."""
        self.find("text", name)
        return self.texts(name)[0]

    def message(self):
        """The texts of the message box on the screen, empty when there is none."""
        boxes = [*self.all("alert"), *self.all("dialog")]
        return "\n".join(child.name for box in boxes for child in box if child.name)

    def walk(self, control=None):
        """Everything that is there, shown or not."""
        try:
            children = [child for child in control or self.pyatspi.Registry.getDesktop(0) if child is not None]
        except Exception:
            return
        for child in children:
            yield child
            yield from self.walk(child)
