"""A screen whose pixels lie in a file, its mouse, and the wizard on it. Whoever measures here asks the wizard for
nothing: what it paints is read from the file, whether it works from its processor time, that a run has ended from the
notice of its settings file."""
import ctypes
import mmap
import os
import struct
import subprocess
import time
from pathlib import Path

x11, xtst = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXtst.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
libc = ctypes.CDLL(None)
PATIENCE = 60   # seconds until something counts as never coming
QUIET = 0.3     # seconds without processor time, after which a wizard waits for its user


class Screen:
    def __init__(self, folder):
        read, write = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x800x24", "-fbdir", folder,
                                        "-nolisten", "tcp"], pass_fds=[write], stderr=subprocess.DEVNULL)
        self.name = ":" + os.read(read, 16).decode().strip()
        self.manager = subprocess.Popen(["openbox"], stdout=subprocess.DEVNULL, env=dict(os.environ, DISPLAY=self.name), stderr=subprocess.DEVNULL)
        with open(Path(folder) / "Xvfb_screen0", "rb") as file:
            self.pixels = mmap.mmap(file.fileno(), 0, prot=mmap.PROT_READ)
        header = struct.unpack(">25I", self.pixels[:100])  # of an XWD file
        self.start, self.stride = header[0] + 12 * header[19], header[12]
        self.display = ctypes.c_void_p(x11.XOpenDisplay(self.name.encode()))
        time.sleep(0.5)  # the window manager takes its place

    def close(self):
        for process in (self.manager, self.server):
            process.terminate()
            process.wait()

    def see(self, left, top, right, bottom):
        at = self.start + top * self.stride
        return [self.pixels[y + 4 * left:y + 4 * right] for y in range(at, at + (bottom - top) * self.stride, self.stride)]

    def seconds_to_change(self, place, act):
        """Seconds from act to the first change of what is seen at that place."""
        before = self.see(*place)
        start = time.perf_counter()
        result = act()
        while self.see(*place) == before:
            if time.perf_counter() - start > PATIENCE:
                raise TimeoutError("the screen never changed")
            time.sleep(0.0002)
        return time.perf_counter() - start, result

    def point(self, place):
        """Moves the pointer, and lets what lies there take notice."""
        x, y = place
        xtst.XTestFakeMotionEvent(self.display, -1, x, y, 0)
        x11.XFlush(self.display)
        time.sleep(0.1)

    def click(self):
        for down in (1, 0):
            xtst.XTestFakeButtonEvent(self.display, 1, down, 0)
        x11.XFlush(self.display)


class Program:
    def __init__(self, command, screen, environment):
        self.started = time.perf_counter()
        self.process = subprocess.Popen([command], env={
            "PATH": os.environ["PATH"], "LANG": "C.UTF-8", "DISPLAY": screen.name, "QT_QPA_PLATFORM": "xcb",
            "DBUS_SESSION_BUS_ADDRESS": "disabled:", **environment}, stderr=subprocess.DEVNULL)

    def worked(self):
        """Nanoseconds of processor time of all its threads."""
        total = 0
        for thread in Path(f"/proc/{self.process.pid}/task").iterdir():
            try:
                total += int((thread / "schedstat").read_text().split()[0])
            except (FileNotFoundError, ProcessLookupError):
                pass  # the thread has ended meanwhile
        return total

    def wait_until_quiet(self):
        """Seconds from the start until it last worked."""
        last, since = self.worked(), time.perf_counter()
        while time.perf_counter() - since < QUIET:
            time.sleep(0.01)
            if (now := self.worked()) != last:
                last, since = now, time.perf_counter()
        return since - self.started

    def end(self):
        """Ends it; seconds of processor time and the peak of its memory in KB."""
        status = Path(f"/proc/{self.process.pid}/status").read_text()
        self.process.kill()
        _, _, usage = os.wait4(self.process.pid, 0)
        self.process.returncode = 0
        return usage.ru_utime + usage.ru_stime, int(status.split("VmHWM:")[1].split()[0])  # ru_maxrss may be its parent's


def seconds_to_rename(folder, name, act):
    """Seconds from act until a file of that name takes its place in a folder."""
    notices = libc.inotify_init()
    libc.inotify_add_watch(notices, str(folder).encode(), 0x80)  # IN_MOVED_TO
    start = time.perf_counter()
    act()
    while name.encode() not in os.read(notices, 65536):
        pass
    seconds = time.perf_counter() - start
    os.close(notices)
    return seconds
