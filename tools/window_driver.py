"""Drives ord8-setup in a virtual X display.

The one home of this job, used by the window tests, the translators' gallery and
tools/try-installer.sh. A Display is an Xvfb of its own with GNUstep's daemons; a
Sandbox is a scratch user (HOME, TMPDIR, GNUstep defaults, a working folder holding
the kit, a recording xdg-open first on PATH); a Setup is one running ord8-setup.
Every wait polls a condition within a bound and names it when it gives up.

Run as a script, it walks the sample kit through every page and saves a screenshot
of each: python3 tools/window_driver.py OUT_DIR [--lang CODE] [--for-real].
"""

import argparse
import ctypes
import os
import random
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[1]
BUILD = Path(os.environ.get("ORD8_BINARY_DIR", SOURCE / "build"))
SETUP = Path(os.environ.get("ORD8_SETUP", BUILD / "ord8-setup"))
KITTOOL = Path(os.environ.get("ORD8KIT", BUILD / "tools" / "ord8kit"))
SAMPLE_KIT = BUILD / "examples" / "ord8.dkz"
SAMPLE_TREE = SOURCE / "examples" / "sample-kit" / "templates"
TIMEOUT = float(os.environ.get("ORD8_WINDOW_TIMEOUT", "20"))

TITLE = "Installing configuration"


def read_layout(header=SOURCE / "wizard" / "window_layout.h"):
    """The controls' frames {name: (x, y, width, height)} and the window's size, from
    where the window takes them, so that the clicks follow the controls."""
    text = header.read_text()
    frames = {name: tuple(int(float(f)) for f in fields.split(",")) for name, fields in
              re.findall(r"constexpr Frame k(\w+)\{([\d., ]+)\}", text)}
    size = dict(re.findall(r"constexpr double kWindow(\w+) = ([\d.]+);", text))
    frames["Window"] = (0, 0, int(float(size["Width"])), int(float(size["Height"])))
    return frames


LAYOUT = read_layout()
SIZE = LAYOUT["Window"][2:]


def centre(name):
    x, y, width, height = LAYOUT[name]
    return x + width // 2, y + height // 2


BACK, NEXT, CANCEL = centre("BackButton"), centre("NextButton"), centre("CancelButton")
PATH_FIELD, BROWSE = centre("PathField"), centre("BrowseButton")
OPEN_DESCRIPTION = (LAYOUT["OpenDescriptionBox"][0] + 10, centre("OpenDescriptionBox")[1])
# A box's buttons sit at its bottom right: offsets from that corner. The folder
# panel's Cancel sits where No does.
YES, NO = OK, PANEL_CANCEL = (-42, -21), (-126, -21)
# Where a page has ink on the white window (x, y, width, height): only the progress page
# lacks the side image, only the directory page has the path field, only the success page
# the check box, and the final pages hide Back.
_side, _path = LAYOUT["SideImage"], LAYOUT["PathField"]
_box, _back = LAYOUT["OpenDescriptionBox"], LAYOUT["BackButton"]
MARKS = {"side image": (_side[0] + 20, _side[3] - 80, _side[2] - 40, 60),
         "path field": (_path[0], _path[1] + 5, 3, 20),
         "check box": (_box[0] + 2, _box[1] + 2, 14, 16),
         "back button": (_back[0] + 5, _back[1] + 13, _back[2] - 10, 4)}
DEFAULT_DIR = ".ord8/Tavri/tavri8/tmplts"  # proposed under HOME when nothing is remembered
LAUNCHER = ".Tavri/ostart/ostart.cfg"
KIT_TIME, OLD_TIME = 1_700_000_000, 1_000_000_000
DEVNULL = subprocess.DEVNULL


def wait_for(what, probe, timeout=TIMEOUT):
    """Polls probe() until it returns something true, and returns that."""
    deadline = time.monotonic() + timeout
    while True:
        value = probe()
        if value:
            return value
        if time.monotonic() > deadline:
            raise TimeoutError(f"timed out after {timeout:g} s waiting for {what}")
        time.sleep(0.05)


def die_with_us():
    """Run in each child before it starts: SIGTERM when the driver ends, however it
    ends (a killed test leaves no display, daemon or installer behind)."""
    ctypes.CDLL(None).prctl(1, signal.SIGTERM)  # PR_SET_PDEATHSIG


def spawn(command, **options):
    return subprocess.Popen(command, stdin=DEVNULL, preexec_fn=die_with_us, **options)


def stop(process, sig=signal.SIGTERM):
    """Ends a child we started and reaps it."""
    if process.poll() is None:
        process.send_signal(sig)
        try:
            process.wait(5)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


def write_tree(folder, tree, mtime=KIT_TIME):
    """Writes {relative name: bytes} below folder, each file with mtime."""
    for name, data in tree.items():
        path = Path(folder, name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data)
        os.utime(path, (mtime, mtime))


def read_tree(folder):
    """{relative name: bytes} of files, None for folders: what a test compares."""
    root = Path(folder)
    return {str(p.relative_to(root)): p.read_bytes() if p.is_file() else None
            for p in sorted(root.rglob("*"))}


def contents(path):
    """The file's bytes, or None while it is not there (a pass moves files aside)."""
    try:
        return Path(path).read_bytes()
    except FileNotFoundError:
        return None


def pack(tree, kit):
    """Packs tree into kit with ord8kit (no products: the wizard's defaults show)."""
    source = Path(str(kit) + ".src")
    write_tree(source, tree)
    subprocess.run([KITTOOL, "pack", source, "-o", kit], check=True, stdout=DEVNULL,
                   stderr=DEVNULL)
    shutil.rmtree(source)


class Closing:
    """`with` ends it by close()."""

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()


class Display(Closing):
    """An Xvfb display with GNUstep's daemons, all ended by close()."""

    def __init__(self):
        self.scratch = Path(tempfile.mkdtemp(prefix="ord8-window-"))
        self.children = []
        number = self._start_xvfb()
        self.env = {k: v for k, v in os.environ.items()
                    if not k.startswith(("LC_", "LANG", "GNUSTEP_", "ORD8_TEST_"))}
        self.env.update(DISPLAY=f":{number}", **gnustep_env(self.scratch))
        # Started here, or the first installer would start them with no one to end them.
        for daemon in ("gdnc", "gpbs"):
            if shutil.which(daemon):
                self.children.append(spawn([daemon, "--daemon"], env=self.env,
                                           stdout=DEVNULL, stderr=DEVNULL))

    def _start_xvfb(self):
        """Starts Xvfb on a free display number and returns the number. Given the
        number, Xvfb takes the display's lock file or ends when it is taken; left to
        pick one itself (-displayfd) it takes no lock, and two starting at once delete
        each other's socket. Numbers with a socket are skipped for the same reason."""
        for number in random.sample(range(200, 900), 20):
            if Path(f"/tmp/.X11-unix/X{number}").exists():
                continue
            # -noreset: a server that resets whenever its last client leaves refuses
            # the installer's connection for that moment.
            xvfb = spawn(["Xvfb", f":{number}", "-screen", "0", "1024x768x24", "-nolisten",
                          "tcp", "-noreset"], stdout=DEVNULL, stderr=DEVNULL)
            self.children.append(xvfb)
            env = dict(os.environ, DISPLAY=f":{number}")

            def state():
                if xvfb.poll() is not None:
                    return "taken"
                probe = subprocess.run(["xdotool", "getdisplaygeometry"], env=env,
                                       capture_output=True)
                return "up" if probe.returncode == 0 else None
            if wait_for(f"Xvfb :{number} to take connections", state) == "up":
                return number
        self.close()
        raise RuntimeError("no free X display number found")

    def close(self):
        for child in reversed(self.children):
            stop(child)
        # An installer that found no gdnc (another display's had the name and ended)
        # starts one itself, which outlives it: every process whose environment names
        # this display's scratch folder is ours to end.
        for pid in self.strays():
            os.kill(pid, signal.SIGTERM)
        wait_for("the installers' own daemons to end", lambda: not self.strays())
        shutil.rmtree(self.scratch, ignore_errors=True)

    def strays(self):
        mark = str(self.scratch).encode()
        found = []
        for entry in Path("/proc").iterdir():
            try:
                if entry.name.isdigit() and mark in (entry / "environ").read_bytes():
                    found.append(int(entry.name))
            except OSError:  # gone, or not ours to read
                pass
        return found

    def xdo(self, *args, result=False):
        done = subprocess.run(["xdotool", *map(str, args)], env=self.env, stdin=DEVNULL,
                              capture_output=True, text=True, timeout=TIMEOUT)
        return done if result else done.stdout

    def windows(self):
        """{window id: (title, (x, y, width, height))} of the visible titled windows."""
        def search():
            done = self.xdo("search", "--onlyvisible", "--name", "", result=True)
            return None if "X Error" in done.stderr else done.stdout or " "
        # A search that meets a window as it closes fails with an X error: search again.
        found = {}
        for wid in wait_for("a window search without an X error", search).split():
            shell = dict(line.split("=", 1) for line in
                         self.xdo("getwindowgeometry", "--shell", wid).split())
            title = self.xdo("getwindowname", wid).rstrip("\n")
            if shell and title:
                found[int(wid)] = (title, tuple(int(shell[k]) for k in
                                                ("X", "Y", "WIDTH", "HEIGHT")))
        return found

    def click(self, wid, point):
        self.xdo("mousemove", "--window", wid, *point, "mousedown", 1)
        time.sleep(0.08)  # GNUstep loses a press and a release that arrive together
        self.xdo("mouseup", 1, "mousemove_relative", 1, 0)

    def answer(self, box, button=OK):
        """Clicks a button of a message box or panel, found from its bottom right. GNUstep
        without a window manager gives a box the keys only now and then: clicks it is."""
        width, height = self.windows()[box][1][2:]
        self.click(box, (width + button[0], height + button[1]))

    def key(self, wid, *keys):
        # Keys sent to a window (--window) get lost in GNUstep after a message box has
        # come and gone; the server's own key events to the focused window do not.
        self.xdo("windowfocus", "--sync", wid)
        self.xdo("key", *keys)

    def type(self, wid, text):
        self.xdo("windowfocus", "--sync", wid)
        self.xdo("type", text)

    def pixels(self, wid, fmt="png"):
        x, y, width, height = self.windows()[wid][1]
        return subprocess.run(["import", "-window", "root", "-crop",
                               f"{width}x{height}+{x}+{y}", "+repage", "-depth", "8",
                               f"{fmt}:-"], env=self.env, capture_output=True,
                              check=True).stdout

    def page(self, wid):
        """Which wizard page the window shows, told by where it has ink."""
        rgb = self.pixels(wid, "rgb")

        def ink(x, y, width, height):
            rows = (rgb[3 * (SIZE[0] * row + x):3 * (SIZE[0] * row + x + width)]
                    for row in range(y, y + height))
            return any(min(r) < 0xC0 for r in rows)
        if not ink(*MARKS["side image"]):
            return "progress"
        if ink(*MARKS["path field"]):
            return "directory"
        if ink(*MARKS["check box"]):
            return "success"
        return "welcome" if ink(*MARKS["back button"]) else "error"

    def wait_page(self, wid, name):
        wait_for(f"the {name} page", lambda: self.page(wid) == name)

    def shot(self, wid, path):
        """Saves the window once two grabs in a row agree."""
        previous = [None]

        def settled():
            now = self.pixels(wid)
            done, previous[0] = now == previous[0], now
            return now if done else None
        Path(path).write_bytes(wait_for(f"window {wid} to settle for {path}", settled))


def gnustep_env(folder):
    """GNUstep keeps its defaults here, not in the user's. It takes the folder only from
    a config file (GNUSTEP_USER_DEFAULTS_DIR in the environment is ignored), and only
    from one no one else may write."""
    config = Path(folder, "gnustep.conf")
    config.write_text(f"GNUSTEP_USER_DEFAULTS_DIR={Path(folder, 'defaults')}\n")
    config.chmod(0o600)
    return {"GNUSTEP_CONFIG_FILE": str(config)}


class Sandbox:
    """A scratch user for installer runs, with a kit in its working folder."""

    def __init__(self, display, kit=SAMPLE_KIT, for_real=False):
        self.display = display
        self.root = Path(tempfile.mkdtemp(dir=display.scratch, prefix="user-"))
        self.cwd, self.bin = self.root / "cwd", self.root / "bin"
        self.home, self.tmp = self.root / "home", self.root / "tmp"
        for folder in (self.cwd, self.bin, self.home, self.tmp):
            folder.mkdir()
        self.env = dict(display.env, PATH=f"{self.bin}:{os.environ['PATH']}")
        if for_real:
            self.home, self.tmp = Path.home(), Path(tempfile.gettempdir())
        else:
            self.env.update(gnustep_env(self.root))
        self.env.update(HOME=str(self.home), TMPDIR=str(self.tmp))
        # One line per run of the opener: the count of arguments, then each, tab-separated.
        self.opened = self.root / "opened"
        stub = self.bin / "xdg-open"
        stub.write_text(f'#!/bin/sh\n{{ printf %s "$#"; printf "\\t%s" "$@"; echo; }}'
                        f' >> "{self.opened}"\n')
        stub.chmod(0o755)
        if kit:
            shutil.copy(kit, self.cwd / "ord8.dkz")

    def start(self, *args, hold=None, wrap=(), **env):
        """ord8-setup on the kit in cwd, run through the command wrap when given;
        hold=n stops the pass before file n."""
        if hold:
            env["ORD8_TEST_HOLD_AT_FILE"] = str(hold)
        # An installer that has exited may still have its window up for a moment, under
        # the id the next one will get.
        wait_for("the windows of earlier runs to close", lambda: not self.display.windows())
        return Setup(self, [*wrap, SETUP, "usecwd", *args], dict(self.env, **env))

    def launcher(self):
        path = self.home / LAUNCHER
        return path.read_bytes().decode("utf-8", "replace") if path.exists() else ""

    def journals(self):
        return sorted((self.home / ".ord8").glob("o8journal-*"))


class Setup(Closing):
    """One running ord8-setup, killed at close() when it is still running."""

    def __init__(self, sandbox, command, env):
        self.display = sandbox.display
        self.log = sandbox.root / "setup.log"
        with open(self.log, "ab") as log:
            self.process = spawn(command, cwd=sandbox.cwd, env=env, stdout=log, stderr=log)

    def _find(self, what, test):
        def probe():
            if self.process.poll() is not None:
                raise AssertionError(f"ord8-setup exited ({self.process.returncode}) "
                                     f"while waiting for {what}:\n{self.output()}")
            return next((w for w, (t, g) in self.display.windows().items() if test(t, g)),
                         None)
        return wait_for(what, probe)

    def window(self, title=None):
        """The wizard window (titled title when given)."""
        return self._find(f"the wizard window {title or ''}", lambda t, g: g[2:] == SIZE
                          and t == (title or t))

    def box(self, title=TITLE):
        """A message box or panel titled title."""
        return self._find(f"a box titled {title!r}", lambda t, g: t == title and g[2:] != SIZE)

    def output(self):
        """The log without GNUstep's usual noise."""
        noise = ("Failed to determine offsets", "Tiff Error", "Fontconfig warning")
        return "".join(line for line in self.log.read_text(errors="replace").splitlines(True)
                       if not any(n in line for n in noise))

    def title(self, wid):
        return self.display.windows()[wid][0]

    def gone(self, wid):
        wait_for(f"window {wid} to close", lambda: wid not in self.display.windows())

    def exit_status(self):
        wait_for("ord8-setup to exit", lambda: self.process.poll() is not None)
        return self.process.returncode

    def close(self):
        stop(self.process, signal.SIGKILL)


def walk(display, sandbox, shoot, lang="en"):
    """Every page as a user meets them, calling shoot(page, window) at each: welcome,
    the cancel question, directory, progress (held at the first file), then Cancel to
    the error page and Finish; a second run goes on to the success page and Finish."""
    def visit(wid, key, page):
        display.key(wid, key)
        display.wait_page(wid, page)
        shoot(page, wid)

    with sandbox.start(f"/L{lang}", hold=1) as setup:
        wid = setup.window()
        title = setup.title(wid)
        display.wait_page(wid, "welcome")
        shoot("welcome", wid)
        display.key(wid, "Escape")
        box = setup.box(title)
        shoot("cancel", box)
        display.answer(box, NO)
        setup.gone(box)
        visit(wid, "Return", "directory")
        visit(wid, "Return", "progress")
        display.click(wid, CANCEL)
        display.answer(setup.box(title))
        display.wait_page(wid, "error")
        shoot("error", wid)
        display.key(wid, "Return")
        setup.exit_status()
    with sandbox.start(f"/L{lang}") as setup:
        wid = setup.window()
        display.key(wid, "Return")
        display.wait_page(wid, "directory")
        visit(wid, "Return", "success")
        display.key(wid, "Return")
        setup.exit_status()


class WindowTest(unittest.TestCase):
    """One display per test class, a scratch user per test, installers ended after."""

    @classmethod
    def setUpClass(cls):
        cls.display = Display()
        cls.addClassCleanup(cls.display.close)

    def setUp(self):
        self.user = Sandbox(self.display)

    def start(self, *args, **env):
        setup = self.user.start(*args, **env)
        self.addCleanup(setup.close)
        return setup


def main():
    """Walks the sample kit through every page in a display of its own."""
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("out", type=Path, help="folder for the screenshots")
    parser.add_argument("--lang", default="en", help="interface language code")
    parser.add_argument("--for-real", action="store_true",
                        help="install into the real templates folder and launcher file")
    args = parser.parse_args()
    args.out.mkdir(parents=True, exist_ok=True)
    with Display() as display:
        sandbox = Sandbox(display, for_real=args.for_real)

        def shoot(page, wid):
            display.shot(wid, args.out / f"{page}.png")
            print(f"{page:9} {args.out / page}.png", flush=True)
        walk(display, sandbox, shoot, args.lang)
        print(sandbox.launcher().strip() or "no launcher file written",
              "" if args.for_real else "(in a scratch HOME, now removed)")


if __name__ == "__main__":
    main()
