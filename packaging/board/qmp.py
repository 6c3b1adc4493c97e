"""The emulated board seen from outside: its power, its screen and the touch screen over it, through the emulator's own
protocol."""
import hashlib
import json
import socket
import struct
import time

WIDTH, HEIGHT = 1280, 800
# The touch screen reports positions from 0 to this.
REACH = 0x7FFF
NO_FINGER = -1


class Emulator:
    def __init__(self, path, seconds=30):
        end = time.monotonic() + seconds
        while True:
            try:
                self._socket = socket.socket(socket.AF_UNIX)
                self._socket.connect(path)
                break
            except OSError:
                if time.monotonic() > end:
                    raise
                time.sleep(0.05)
        self._lines = self._socket.makefile()
        self._lines.readline()
        self.command("qmp_capabilities")
        self._finger = 0

    def command(self, name, **arguments):
        self._socket.sendall(json.dumps({"execute": name, "arguments": arguments}).encode())
        while True:
            line = self._lines.readline()
            if not line:
                raise EOFError("the emulator has ended")
            answer = json.loads(line)
            if "error" in answer:
                raise AssertionError(f"{name}: {answer['error']['desc']}")
            if "return" in answer:
                return answer["return"]

    def picture(self, path):
        """Writes the screen as it is now, as PNG. What comes back differs when the screen does; it is nothing while no
        driver has set the screen up."""
        self.command("screendump", filename=path, format="png")
        with open(path, "rb") as file:
            content = file.read()
        size = struct.unpack(">II", content[16:24])
        return hashlib.sha256(content).hexdigest() if size == (WIDTH, HEIGHT) else None

    def tap(self, x, y, seconds=0.15):
        self._finger += 1
        self._touch("begin", self._finger, x, y)
        time.sleep(seconds)
        self._touch("end", NO_FINGER, x, y)

    def _touch(self, kind, finger, x, y):
        def point(kind, axis, value):
            return {"type": "mtt", "data": {"type": kind, "slot": 0, "tracking-id": finger, "axis": axis, "value": value}}

        events = [point(kind, "x", 0)]
        if kind == "begin":
            events += [point("data", "x", x * REACH // WIDTH), point("data", "y", y * REACH // HEIGHT)]
        events.append({"type": "btn", "data": {"button": "touch", "down": kind == "begin"}})
        self.command("input-send-event", events=events)
