#!/usr/bin/python3
"""Runs the emulated board and is the fingers and eyes of the walk inside it. Prints what the walk prints, with the seconds
since the power came, and writes the pictures.
usage: board.py PICTURES -- COMMAND OF THE EMULATOR..."""
import glob
import os
import selectors
import shutil
import socket
import subprocess
import sys
import time

from qmp import Emulator

BOARD = os.path.abspath("build-board")
SCREEN = f"{BOARD}/screen.png"
# A walk that says nothing for so long stands still.
PATIENCE = 600
LOOK = 0.25


class Board:
    def __init__(self, pictures, command):
        self.pictures = pictures
        os.makedirs(pictures, exist_ok=True)
        for old in (f"{pictures}/[0-9][0-9]-*.png", f"{pictures}/boot-*.png", f"{BOARD}/*.sock"):
            for path in glob.glob(old):
                os.remove(path)
        self.power = time.monotonic()
        self.process = subprocess.Popen(command, stdin=subprocess.DEVNULL)
        self.emulator = None
        self.count = 0
        self.booting = True
        self.screens = {}
        self.code = None
        self.selector = selectors.DefaultSelector()

    def connect(self):
        self.emulator = Emulator(f"{BOARD}/qmp.sock")
        for name, answer in (("hands", self.obey), ("walk", self.hear)):
            port = socket.socket(socket.AF_UNIX)
            port.connect(f"{BOARD}/{name}.sock")
            self.selector.register(port, selectors.EVENT_READ, (answer, bytearray()))

    def seconds(self):
        return time.monotonic() - self.power

    def say(self, text):
        print(f"{self.seconds():7.1f} s  {text}", flush=True)

    def run(self):
        self.connect()
        self.power = heard = time.monotonic()
        self.emulator.command("cont")
        while time.monotonic() - heard < PATIENCE:
            events = self.selector.select(LOOK)
            for key, _ in events:
                data = key.fileobj.recv(4096)
                if not data:
                    self.process.wait()
                    return self.code
                heard = time.monotonic()
                answer, kept = key.data
                kept += data
                while b"\n" in kept:
                    line, _, rest = kept.partition(b"\n")
                    kept[:] = rest
                    answer(key.fileobj, line.decode(errors="replace").strip("\r"))
            if not events and self.booting:
                self.look()
        self.say(f"nothing heard for {PATIENCE} s")
        return None

    def hear(self, _, line):
        self.say(line)
        if line.startswith("walk: ended with "):
            self.code = int(line.split()[-1])

    def obey(self, port, line):
        word, *rest = line.split()
        answer = "ok"
        self.booting = False
        if word == "TAP":
            self.emulator.tap(int(rest[0]), int(rest[1]))
        elif word == "PICTURE":
            self.take(rest[0])
        else:
            answer = "what?"
        port.sendall(f"{answer}\n".encode())

    def take(self, name):
        """A picture of a screen that has come to rest, or of one that moves for longer than two seconds."""
        self.count += 1
        end = time.monotonic() + 2
        before, now = "", self.emulator.picture(SCREEN)
        while now != before and time.monotonic() < end:
            time.sleep(LOOK)
            before, now = now, self.emulator.picture(SCREEN)
        shutil.move(SCREEN, f"{self.pictures}/{self.count:02}-{name}.png")

    def look(self):
        """What the screen shows on the way to the panel: each picture that is new."""
        when = self.seconds()
        now = self.emulator.picture(SCREEN)
        if now and now not in self.screens:
            self.screens[now] = when
            shutil.move(SCREEN, f"{self.pictures}/boot-{when:05.1f}s.png")


def main():
    pictures = os.path.abspath(sys.argv[1])
    board = Board(pictures, sys.argv[3:])
    try:
        code = board.run()
    except (EOFError, OSError) as problem:
        board.say(f"the emulator has gone: {problem}")
        code = None
    finally:
        if board.process.poll() is None:
            board.process.kill()  # what it has started ends with it
            board.process.wait()
    if code is None:
        with open(f"{BOARD}/serial.log", errors="replace") as serial:
            print("".join(serial.readlines()[-40:]))
    return 0 if code == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
