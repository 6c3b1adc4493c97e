#!/usr/bin/python3
"""The life of an installed panel, walked inside a booted system: start, tap, watchdog, sudo, restarts used up, refused
packages, FPGA images, upgrade by a signed package, removal, purge. Prints a line for each step; the first that fails ends
it with 1.
usage: walk.py HANDS [STEP...]   a name of hands.py; without steps all but power, which is of this system's start"""
import glob
import hashlib
import json
import os
import shutil
import socket
import subprocess
import sys
import time

from hands import HANDS
from touches import Panel, wait

HOME = "/home/velda"
STICK = "/media/velda/stick"
# One of each channel.
BOARDS = 4
DAMAGED = "not begun: the package is damaged"


def run(*command, check=True):
    done = subprocess.run(command, capture_output=True, text=True)
    if check and done.returncode != 0:
        raise AssertionError(f"{' '.join(command)}: {done.stdout}{done.stderr}")
    return done.stdout.strip()


def shown(unit, *names):
    lines = run("systemctl", "show", unit, "-p", ",".join(names)).splitlines()
    found = dict(line.split("=", 1) for line in lines)
    return [found[name] for name in names]


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as file:
        file.write(text)


def ask(query):
    """An answer of the module's service; its port stands in the simulator's first line."""
    with socket.create_connection(("127.0.0.1", 5025), 5) as service:
        service.sendall(query.encode() + b"\r\n")
        return service.recv(200).decode().strip()


def main_pid():
    return int(shown("velda-panel", "MainPID")[0])


def first_screen(panel):
    wait("the first screen", lambda: panel.opened(main_pid()), 60)
    return panel.opened(main_pid())


def power(panel):
    """When what had come, in seconds of the system's clock, which begins with the kernel."""
    touchable = first_screen(panel) - time.time() + time.clock_gettime(time.CLOCK_MONOTONIC)
    init = run("systemctl", "show", "--value", "-p", "UserspaceTimestampMonotonic")
    began, ready = shown("velda-panel", "ExecMainStartTimestampMonotonic", "ActiveEnterTimestampMonotonic")
    return (f"init {int(init) / 1e6:.1f} s, panel begun {int(began) / 1e6:.1f} s, its first picture {int(ready) / 1e6:.1f} s, "
            f"first screen {touchable:.1f} s")


def start(_):
    wait("the panel is ready", lambda: shown("velda-panel", "ActiveState")[0] == "active", 60)
    began, ready = shown("velda-panel", "ExecMainStartTimestampMonotonic", "ActiveEnterTimestampMonotonic")
    user = run("stat", "-c", "%U", f"/proc/{main_pid()}")
    assert user == "velda", user
    return f"exec to ready {(int(ready) - int(began)) / 1000:.0f} ms, as {user}"


def memory(panel):
    first_screen(panel)
    sizes = {}
    for file in ("status", "smaps_rollup"):
        for line in open(f"/proc/{main_pid()}/{file}"):
            name, *size = line.split()
            if size[1:] == ["kB"]:
                sizes[name] = int(size[0]) / 1024
    return (f"peak {sizes['VmHWM:']:.1f} MiB, now {sizes['VmRSS:']:.1f} MiB, of it written by the panel alone "
            f"{sizes['Private_Dirty:']:.1f} MiB")


def taps(panel):
    first_screen(panel)
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


def watchdog(panel):
    pid = main_pid()
    began = time.monotonic()
    os.kill(pid, 19)
    wait("a panel that stands still is ended", lambda: main_pid() not in (0, pid), 40)
    took = time.monotonic() - began
    first_screen(panel)
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
            f"{HOME}/kavor/pattern/0/gap.json", "/etc/velda/update/policy", "/etc/velda/update/update-1.pub"]
    return {path: hashlib.sha256(open(path, "rb").read()).hexdigest() for path in kept if os.path.exists(path)}


def prepare_data():
    for path in ("preset/preset/preset-3.json", "list/0/hop.json", "pattern/0/gap.json"):
        write(f"{HOME}/kavor/{path}", f"what was kept in {path}\n")
    with open("/etc/velda/velda-panel.conf", "a") as file:
        file.write("VELDA_NET_CLASS=/sys/class/net\n")


def prepare_stick():
    """Three packages: the newer Debian packages and a program, signed; and two that were changed after it."""
    os.makedirs("/etc/velda/update")
    run("update-pack", "keygen", "/root/release.key")
    shutil.copy("/root/release.key.pub", "/etc/velda/update/update-1.pub")
    write("/etc/velda/update/policy", "require\n")
    shutil.copytree("/newer", "/root/source/packages")
    write("/root/source/program", "#!/bin/sh\n")
    install = "sudo dpkg --force-confdef --force-confold -i " + " ".join(
        f"/var/tmp/velda/{os.path.basename(path)}" for path in sorted(glob.glob("/newer/*.deb")))
    for name, place in (("1-changed-package", "/opt/changed"), ("2-changed-manifest", "/opt/changed"),
                        ("3-signed", "/opt/program")):
        run("update-pack", "--version", "9.1", "--key", "/root/release.key", "--release", "7", "--model", "KV-6000",
            "--install", f"program={place}", "--install", "packages=/var/tmp/velda", "--run", install,
            "software", "/root/source", f"{STICK}/{name}")
        run("update-pack", "--public", "/root/release.key.pub", "check", f"{STICK}/{name}")
    with open(glob.glob(f"{STICK}/1-changed-package/*.tar.gz")[0], "r+b") as package:
        package.seek(-1000, os.SEEK_END)
        byte = package.read(1)
        package.seek(-1000, os.SEEK_END)
        package.write(bytes([byte[0] ^ 1]))
    manifest = f"{STICK}/2-changed-manifest/Manifest"
    write(manifest, open(manifest).read().replace("9.1", "9.2"))


def installations(panel):
    with open(panel.log, errors="replace") as log:
        return log.read().count("fwThread::fwUpgrade start")


def last_update(kind="software"):
    try:
        with open(f"{HOME}/kavor/upgrade/updates.json") as file:
            return json.load(file).get(kind)
    except FileNotFoundError:
        return None


def refusals(panel):
    prepare_data()
    prepare_stick()
    run("systemctl", "reset-failed", "velda-panel")
    run("systemctl", "start", "velda-panel")
    first_screen(panel)
    for row in (1, 2):
        asked = panel.update(row)
        wait(f"the refusal of package {row}", lambda: len(panel.boxes()) > asked, 60)
        panel.hands.picture(f"refusal-{row}")
        panel.touch("OK")
        # The first is refused by its copy, which is noted; the second before there is one.
        assert last_update() == {"version": "9.1", "ok": False, "end": DAMAGED}, last_update()
        assert installations(panel) == 0 and not os.path.exists("/opt/changed") and not os.path.exists("/var/tmp/velda")
    return "a changed package and a changed manifest, nothing was installed"


def fpga(panel):
    """A signed image, to every board."""
    image = os.urandom(256 * 1024)
    with open("/root/image", "wb") as file:
        file.write(image)
    run("fpga-sign", "--version", "9.1", "sign", "/root/image", "/root/image.signed")
    run("update-pack", "--version", "9.1", "--key", "/root/release.key", "--release", "1", "--model", "KV-6000",
        "fpga", "/root/image.signed", f"{STICK}/0-fpga")
    asked = panel.update(1)
    panel.hands.picture("fpga-transfer")
    wait("the transfer", lambda: "has burnt" in run("journalctl", "-u", "velda-simulator"), 120)
    wait("the end of the update", lambda: len(panel.boxes()) > asked, 120)
    panel.hands.picture("fpga-end")
    panel.touch("OK")
    assert last_update("fpga")["ok"], last_update("fpga")
    burnt = run("journalctl", "-u", "velda-simulator").count(hashlib.sha256(image).hexdigest())
    assert burnt == BOARDS, f"{burnt} boards have burnt the image"
    shutil.rmtree(f"{STICK}/0-fpga")
    return f"{burnt} boards have burnt the image, byte for byte"


def upgrade(panel):
    before = contents()
    pid = main_pid()
    panel.update(3)
    wait("the end of the installation", lambda: last_update()["end"] not in (DAMAGED, "cut off"), 120)
    assert last_update()["ok"] and last_update()["end"] == "done", last_update()
    assert last_update()["release"] == 7, last_update()
    owner = os.stat("/opt/program")
    assert (owner.st_uid, open("/opt/program").read()) == (0, "#!/bin/sh\n"), owner
    for name in ("panel", "simulator", "tools"):
        version = run("dpkg-query", "-Wf", "${Version} ${Status}", f"velda-{name}")
        assert version.endswith("+newer install ok installed"), version
    assert main_pid() == pid, "the panel did not outlive its own upgrade"
    assert contents() == before and len(before) == 5, before
    configuration = open("/etc/velda/velda-panel.conf").read()
    assert "VELDA_NET_CLASS=" in configuration and "newer" not in configuration
    assert not os.path.exists(f"{HOME}/kavor/upgrade/unfinished")
    panel.hands.picture("upgraded")
    run("systemctl", "restart", "velda-panel")
    return f"by a signed package, as root's; {len(before)} kinds of data and the changed conffile kept, the panel ran on"


def remove(_):
    before = contents()
    ask(":OUTP ON")
    assert ask(":OUTP?") == "1"
    run("dpkg", "-r", "velda-panel")
    assert ask(":OUTP?") == "0", "a removed panel leaves RF on"
    assert shown("velda-panel", "ActiveState")[0] != "active" and not os.path.exists("/usr/bin/portable_gui")
    assert contents() == before and os.path.exists("/etc/velda/velda-panel.conf")
    return "stopped and gone, RF off, data and conffiles kept"


def purge(_):
    before = contents()
    run("dpkg", "-P", "velda-panel", "velda-simulator", "velda-tools")
    assert contents() == before, "purge has taken data"
    assert not os.path.exists("/etc/velda/velda-panel.conf") and not os.path.exists("/etc/sudoers.d/velda-panel")
    return "conffiles gone, data and keys kept"


STEPS = (power, start, memory, taps, sudo, watchdog, restarts, refusals, fpga, upgrade, remove, purge)


def walk(hands, names):
    panel = Panel(hands)
    for step in STEPS:
        if step.__name__ not in names if names else step is power:
            continue
        began = time.monotonic()
        try:
            said = step(panel)
            hands.picture(step.__name__)
            print(f"walk: {step.__name__}: {said} ({time.monotonic() - began:.1f} s)", flush=True)
        except Exception as problem:
            print(f"walk: {step.__name__}: FAILED: {problem!r}", flush=True)
            hands.picture(step.__name__ + "-failed")
            print(run("journalctl", "-b", "--no-pager", "-n", "60", check=False), flush=True)
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(walk(HANDS[sys.argv[1]](), sys.argv[2:]))
