# SPDX-License-Identifier: GPL-3.0-or-later
"""What the comparisons with other programs share: kestrane_bench's times, libvips and GIMP."""
import ctypes
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

WIDTH, HEIGHT = 6000, 4000
ROUNDS = 3
USHORT, RGB16 = 2, 25  # VIPS_FORMAT_USHORT, VIPS_INTERPRETATION_RGB16
GIMP_U16 = 250  # GIMP 2.10's number of 16 bits, non-linear, whose name varies


def skip(reason):
    print(f"skipped: {reason}")
    sys.exit(0)


def kestrane_times(bench, pattern, folder=None):
    """Seconds of each case of kestrane_bench that matches the pattern, by name."""
    env = dict(os.environ, QT_QPA_PLATFORM="offscreen")
    if folder:
        env["KESTRANE_BENCH_FOLDER"] = folder
    done = subprocess.run(
        [bench, f"--benchmark_filter={pattern}", "--benchmark_format=json"],
        env=env, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True)
    times = {}
    for case in json.loads(done.stdout)["benchmarks"]:
        name = case["name"].split("/iterations")[0]
        if case.get("error_occurred"):
            sys.exit(f"{name}: {case['error_message']}")
        times[name] = case["real_time"] / 1000
    return times


def median_time(work, rounds=ROUNDS):
    """Seconds that `work` takes: the median of some rounds after one that is not timed, or
    a single round, for what takes so long that a first one makes no difference."""
    taken = []
    for _ in range(rounds + 1 if rounds > 1 else 1):
        start = time.monotonic()
        work()
        taken.append(time.monotonic() - start)
    kept = taken[1:] or taken
    return sorted(kept)[len(kept) // 2]


class Vips:
    """libvips through its C interface, which needs no further package."""

    def __init__(self):
        try:
            self.lib = ctypes.CDLL("libvips.so.42")
            self.glib = ctypes.CDLL("libgobject-2.0.so.0")
        except OSError:
            skip("libvips is not installed (Debian: libvips-tools)")
        self.lib.vips_error_buffer.restype = ctypes.c_char_p
        for name in ("vips_image_new_from_file", "vips_image_copy_memory"):
            getattr(self.lib, name).restype = ctypes.c_void_p
        if self.lib.vips_init(b"bench"):
            self.fail()
        self.lib.vips_cache_set_max(0)  # each round does the work again

    def fail(self):
        sys.exit(f"libvips: {self.lib.vips_error_buffer().decode()}")

    def make(self, name, *arguments, source=None, inputs=None):
        """The output of one operation. What it takes stands before the output: an image,
        which is let go of, or an array of images, which is kept."""
        out = ctypes.c_void_p()
        first = [taken for taken in (source, inputs) if taken is not None]
        if getattr(self.lib, name)(*first, ctypes.byref(out), *arguments, ctypes.c_void_p()):
            self.fail()
        if source:
            self.free(source)
        return out

    def in_memory(self, img):
        copied = self.lib.vips_image_copy_memory(img)
        if not copied:
            self.fail()
        self.free(img)
        return ctypes.c_void_p(copied)

    def open(self, path):
        opened = self.lib.vips_image_new_from_file(path.encode(), ctypes.c_void_p())
        if not opened:
            self.fail()
        return self.in_memory(ctypes.c_void_p(opened))

    def write(self, img, path):
        if self.lib.vips_image_write_to_file(img, path.encode(), ctypes.c_void_p()):
            self.fail()

    def free(self, img):
        self.glib.g_object_unref(img)


def gimp_timing(call, before="", after=""):
    """A loop of GIMP's language that runs ROUNDS + 1 times `before`, `call`, of which it tells
    the seconds, and `after`."""
    return (f"(let loop ((left {ROUNDS + 1})) (if (> left 0) (begin {before}"
            f"(let ((start (gettimeofday))) {call} (let ((end (gettimeofday)))"
            '(gimp-message (string-append "took " (number->string'
            "(+ (- (car end) (car start)) (/ (- (cadr end) (cadr start)) 1000000.0))) \" s\"))))"
            f"{after} (loop (- left 1)))))")


def gimp_run(script, count):
    """The seconds that a script tells, of which there must be `count`; None without GIMP."""
    program = shutil.which("gimp-console") or shutil.which("gimp")
    if not program:
        return None
    with tempfile.TemporaryDirectory() as home:
        # Its own settings are left alone.
        env = dict(os.environ, GIMP2_DIRECTORY=os.path.join(home, "gimp"), HOME=home)
        done = subprocess.run([program, "-i", "-d", "-f", "-b", script, "-b", "(gimp-quit 1)"],
                              env=env, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, errors="replace")
    taken = [float(number) for number in re.findall(r"took ([0-9.e+-]+) s", done.stdout)]
    if len(taken) != count:
        sys.exit("GIMP did not run the batch:\n" + done.stdout[-2000:])
    return taken


def table(rows):
    """Rows of (what, own seconds, peer, peer's seconds, limit); false if one is over."""
    print(f"{'':26}{'kestrane':>10}{'peer':>10}{'ratio':>8}{'limit':>8}")
    kept = True
    for what, own, peer, theirs, limit in rows:
        ratio = own / theirs
        figures = f"{what + ' / ' + peer:26}{own:9.2f}s{theirs:9.2f}s{ratio:8.2f}"
        if limit is None:
            print(f"{figures}    none")
            continue
        kept = kept and ratio <= limit
        mark = "within" if ratio <= limit else "OVER"
        print(f"{figures}{limit:8.2f}  {mark}")
    return kept
