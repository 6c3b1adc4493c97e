#!/usr/bin/python3
"""The life of an installed panel, walked inside a booted system: start, tap, watchdog, sudo, restarts used up, upgrade,
removal, purge. Prints a line for each step; the first that fails ends it with 1.
usage: walk.py HANDS [STEP...]   a name of hands.py; without steps all of them"""
import glob
import hashlib
import os
import socket
import subprocess
import sys
import time

from hands import HANDS
from touches import Panel, wait

HOME = "/home/velda"


def run(*command, check=True):
    done = subprocess.run(command, capture_output=True, text=True)
    if check and done.returncode != 0:
        raise AssertionError(f"{' '.join(command)}: {done.stdout}{done.stderr}")
    return done.stdout.strip()


def shown(unit, *names):
    lines = run("systemctl", "show", unit, "-p", ",".join(names)).splitlines()
    found = dict(line.split("=", 1) for line in lines)
    return [found[name] for name in names]


def ask(query):
    """An answer of the module's service; its port stands in the simulator's first line."""
    with socket.create_connection(("127.0.0.1", 5025), 5) as service:
        service.sendall(query.encode() + b"\r\n")
        return service.recv(200).decode().strip()


def main_pid():
    return int(shown("velda-panel", "MainPID")[0])


def start(_):
    wait("the panel is ready", lambda: shown("velda-panel", "ActiveState")[0] == "active", 60)
    began, ready = shown("velda-panel", "ExecMainStartTimestampMonotonic", "ActiveEnterTimestampMonotonic")
    user = run("stat", "-c", "%U", f"/proc/{main_pid()}")
    assert user == "velda", user
    return f"exec to ready {(int(ready) - int(began)) / 1000:.0f} ms, as {user}"


def taps(panel):
    time.sleep(2)  # the splash covers the screen for its one pass
    assert ask(":OUTP?") == "0"
    panel.touch("RF on")
    wait("RF on by a tap", lambda: ask(":OUTP?") == "1", 10)
    panel.touch("RF off")
    wait("RF off by a tap", lambda: ask(":OUTP?") == "0", 10)
    panel.set_3_ghz()
    wait("3 GHz by touch", lambda: float(ask(":FREQ?")) == 3e9, 10)
    return "RF on and off, 3 GHz"


def sudo(_):
    """The drop-in runs it ahead of the panel, with all that the unit sets."""
    copied = "/root/copied-by-the-panel"
    assert os.stat(copied).st_uid == 0 and open(copied).read() == open("/etc/hostname").read()
    return "sudo cp from within the unit wrote root's file"


def watchdog(_):
    pid = main_pid()
    began = time.monotonic()
    os.kill(pid, 19)
    wait("a panel that stands still is ended", lambda: main_pid() not in (0, pid), 40)
    took = time.monotonic() - began
    wait("it is back", lambda: shown("velda-panel", "ActiveState")[0] == "active", 30)
    return f"a stopped panel was replaced after {took:.1f} s"


def restarts(_):
    ask(":OUTP ON")
    assert ask(":OUTP?") == "1"
    kills = 0

    def is_given_up():
        nonlocal kills
        state, pid = shown("velda-panel", "ActiveState", "MainPID")
        if state == "failed":
            return True
        if state == "active" and int(pid):
            os.kill(int(pid), 9)
            kills += 1
        return False

    wait("the restarts are used up", is_given_up, 60)
    wait("RF off without a panel", lambda: ask(":OUTP?") == "0", 10)
    assert shown("velda-rf-off", "Result")[0] == "success"
    return f"given up after {kills} kills, RF off by velda-rf-off.service"


def contents():
    kept = [f"{HOME}/kavor/preset/preset/preset-3.json", f"{HOME}/kavor/list/0/hop.json",
            f"{HOME}/kavor/pattern/0/gap.json", f"{HOME}/kavor/upgrade/unfinished", "/etc/velda/update/policy",
            "/etc/velda/update/update-1.pub"]
    return kept, {path: hashlib.sha256(open(path, "rb").read()).hexdigest() for path in kept if os.path.exists(path)}


def prepare_data():
    for path in contents()[0]:
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w") as file:
            file.write(f"what was kept in {path}\n")
    with open("/etc/velda/velda-panel.conf", "a") as file:
        file.write("VELDA_USER=somebody\n")


def upgrade(_):
    prepare_data()
    before = contents()[1]
    run("systemctl", "reset-failed", "velda-panel")
    run("systemctl", "start", "velda-panel")
    pid = main_pid()
    run("dpkg", "-i", "--force-confdef", "--force-confold", *glob.glob("/newer/*.deb"))
    assert main_pid() == pid, "the panel did not outlive its own upgrade"
    assert contents()[1] == before and len(before) == 6
    assert "VELDA_USER=somebody" in open("/etc/velda/velda-panel.conf").read()
    run("systemctl", "restart", "velda-panel")
    return f"{len(before)} kinds of data and the changed conffile kept, the panel ran on"


def remove(_):
    before = contents()[1]
    run("dpkg", "-r", "velda-panel")
    assert shown("velda-panel", "ActiveState")[0] != "active" and not os.path.exists("/usr/bin/portable_gui")
    assert contents()[1] == before and os.path.exists("/etc/velda/velda-panel.conf")
    return "stopped and gone, data and conffiles kept"


def purge(_):
    before = contents()[1]
    run("dpkg", "-P", "velda-panel", "velda-simulator", "velda-tools")
    assert contents()[1] == before, "purge has taken data"
    assert not os.path.exists("/etc/velda/velda-panel.conf") and not os.path.exists("/etc/sudoers.d/velda-panel")
    return "conffiles gone, data and keys kept"


STEPS = (start, taps, sudo, watchdog, restarts, upgrade, remove, purge)


def walk(hands, names):
    panel = Panel(hands)
    for step in STEPS:
        if names and step.__name__ not in names:
            continue
        began = time.monotonic()
        try:
            said = step(panel)
            hands.picture(step.__name__)
            print(f"walk: {step.__name__}: {said} ({time.monotonic() - began:.1f} s)", flush=True)
        except (AssertionError, OSError) as problem:
            print(f"walk: {step.__name__}: FAILED: {problem}", flush=True)
            hands.picture(step.__name__ + "-failed")
            print(run("journalctl", "-b", "--no-pager", "-n", "60", check=False), flush=True)
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(walk(HANDS[sys.argv[1]](), sys.argv[2:]))
