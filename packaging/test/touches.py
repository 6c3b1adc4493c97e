"""Where to touch the panel, and what a walk does with touches. The panel must run with VELDA_FOCUS_TRACE: each touch is
checked against what its log says was pressed, so a place that the panel has moved from fails with the name of what is
there now."""
import datetime
import re
import time

LOG = "/home/velda/kavor/log/portable_gui.log"

# Middle of each on the screen of 1280 x 800, and what the panel says is pressed there.
PLACES = {
    "CW": (160, 31, 'IntfButton "funcCw"'),
    "System": (800, 31, 'IntfButton "funcSystem"'),
    "RF on": (1026, 687, 'QPushButton "rfOn"'),
    "RF off": (1178, 687, 'QPushButton "rfOff"'),
    "Frequency": (478, 189, 'vkFreqEdit "cwFrequency"'),
    "3": (372, 472, 'VKButton "key3"'),
    "GHz": (649, 225, 'VKButton "keyUnit0"'),
    "Update SW": (230, 605, 'QPushButton "sysUpdate"'),
    "package 1": (533, 269, 'QWidget "qt_scrollarea_viewport"'),
    "package 2": (533, 365, 'QWidget "qt_scrollarea_viewport"'),
    "package 3": (533, 461, 'QWidget "qt_scrollarea_viewport"'),
    "Yes": (491, 471, 'QPushButton ""'),
    "OK": (638, 476, 'QPushButton ""'),
}


def wait(what, condition, seconds=30):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if condition():
            return
        time.sleep(0.1)
    raise AssertionError(f"waited {seconds} s in vain: {what}")


class Panel:
    """A panel under the given hands."""

    def __init__(self, hands, log=LOG):
        self.hands = hands
        self.log = log

    def events(self, kind):
        """What the log names as pressed, or as having the focus, since it began, in order."""
        with open(self.log, encoding="utf-8", errors="replace") as log:
            return re.findall(rf'\[FOCUS\] {kind} (?:\w+::)*(\w+ ".*?") ', log.read())

    def pressed(self):
        """RF Off and the entries take the touch itself, the rest what is made of it."""
        return self.events("(?:MouseButtonPress|MouseButtonDblClick|TouchBegin)")

    def boxes(self):
        """Every question and message that has come up."""
        return [name for name in self.events("FocusIn") if name.startswith("QMessageBox ")]

    def opened(self, pid):
        """When the splash of this process made way for the first screen; nothing until then."""
        with open(self.log, encoding="utf-8", errors="replace") as log:
            found = re.search(rf"^(\S+ \S+) \[{pid}\] .*\[FOCUS\] FocusIn", log.read(), re.MULTILINE)
        return found and datetime.datetime.fromisoformat(found[1]).timestamp()

    def touch(self, name):
        x, y, expected = PLACES[name]
        before = len(self.pressed())
        self.hands.tap(x, y)
        wait(f"the panel logs the touch of {name} at {x},{y} (VELDA_FOCUS_TRACE)", lambda: len(self.pressed()) > before)
        found = self.pressed()[before]
        assert found == expected, f"{name} is not at {x},{y} any more: there is {found} instead of {expected}"

    def set_3_ghz(self):
        for name in ("CW", "Frequency", "3", "GHz"):
            self.touch(name)

    def update(self, row):
        """From whatever screen: the list of packages, one of them, "Yes". The list fills only when the media have been
        looked through, so the package is touched until the question about it comes up. Returns how many boxes there
        were before the "Yes": one more is its answer."""
        self.touch("System")
        self.touch("Update SW")
        before = len(self.boxes())
        for _ in range(10):
            self.touch(f"package {row}")
            try:
                wait("the question", lambda: len(self.boxes()) > before, 3)
            except AssertionError:
                continue
            asked = len(self.boxes())
            self.touch("Yes")
            return asked
        raise AssertionError(f"no question about package {row} comes up: is it in the list?")
