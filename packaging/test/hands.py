"""Hands and eyes of a walk: how a tap reaches the panel, and how a picture of its screen is taken."""
import os
import socket
import struct
import time
import zlib

WIDTH, HEIGHT = 1280, 800


class Vnc:
    """Taps and sees a panel that is served over VNC on this machine."""

    def __init__(self, folder="/pictures", port=5900):
        self.folder = folder
        self.port = port

    def tap(self, x, y):
        with self._screen() as screen:
            for buttons in (1, 0):
                screen.sendall(struct.pack(">BBHH", 5, buttons, x, y))
                time.sleep(0.1)

    def picture(self, name):
        """Writes NAME.png; nothing while no panel serves its screen."""
        try:
            screen = self._screen()
        except OSError:
            return
        with screen:
            # 32 bits a pixel, blue in the lowest eight of them; the whole screen, uncompressed.
            screen.sendall(struct.pack(">Bxxx4B3H3Bxxx", 0, 32, 24, 0, 1, 255, 255, 255, 16, 8, 0))
            screen.sendall(struct.pack(">BxHi", 2, 1, 0))
            screen.sendall(struct.pack(">BB4H", 3, 0, 0, 0, WIDTH, HEIGHT))
            pixels = bytearray(4 * WIDTH * HEIGHT)
            missing = WIDTH * HEIGHT
            while missing > 0:
                kind, count = struct.unpack(">BxH", self._read(screen, 4))
                assert kind == 0, f"message {kind} instead of a picture"
                for _ in range(count):
                    left, top, width, height, encoding = struct.unpack(">4Hi", self._read(screen, 12))
                    assert encoding == 0, f"encoding {encoding}"
                    for row in range(top, top + height):
                        start = 4 * (row * WIDTH + left)
                        pixels[start:start + 4 * width] = self._read(screen, 4 * width)
                    missing -= width * height
        write_png(os.path.join(self.folder, name + ".png"), pixels)

    def _screen(self):
        screen = socket.create_connection(("127.0.0.1", self.port), 10)
        version = self._read(screen, 12)
        screen.sendall(version)
        if version >= b"RFB 003.007":
            kinds = self._read(screen, self._read(screen, 1)[0])
            assert 1 in kinds, f"asks for a password: {kinds}"
            screen.sendall(b"\1")
            if version >= b"RFB 003.008":
                assert self._read(screen, 4) == bytes(4)
        else:
            assert self._read(screen, 4) == struct.pack(">I", 1)
        screen.sendall(b"\1")
        width, height, name_length = struct.unpack(">HH16xI", self._read(screen, 24))
        assert (width, height) == (WIDTH, HEIGHT), (width, height)
        self._read(screen, name_length)
        return screen

    @staticmethod
    def _read(screen, size):
        data = b""
        while len(data) < size:
            more = screen.recv(size - len(data))
            if not more:
                raise ConnectionError("the screen's connection was closed")
            data += more
        return data


def write_png(path, pixels):
    """Of a whole screen of four bytes a pixel: blue, green, red, unused."""
    rows = bytearray()
    for row in range(HEIGHT):
        line = pixels[4 * WIDTH * row:4 * WIDTH * (row + 1)]
        colours = bytearray(3 * WIDTH)
        colours[0::3], colours[1::3], colours[2::3] = line[2::4], line[1::4], line[0::4]
        rows += b"\0" + colours

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", WIDTH, HEIGHT, 8, 2, 0, 0, 0)) +
                   chunk(b"IDAT", zlib.compress(bytes(rows))) + chunk(b"IEND", b""))


class Port:
    """Has what lies beyond a port of this machine, the emulator it runs in, tap and look."""

    def __init__(self, path="/dev/virtio-ports/velda.hands"):
        self._port = open(path, "r+b", buffering=0)

    def tap(self, x, y):
        self._do(f"TAP {x} {y}")

    def picture(self, name):
        self._do(f"PICTURE {name}")

    def _do(self, line):
        self._port.write(line.encode() + b"\n")
        answer = self._port.readline()
        assert answer == b"ok\n", f"{line}: {answer!r}"


HANDS = {"vnc": Vnc, "port": Port}
