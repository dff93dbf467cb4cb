"""Who is measured: each turns a file into one record {"wall_ms", "user_ms", "peak_bytes", ...}."""
import json
import os
import subprocess
import time

PATIENCE = 900  # seconds


class MeasureError(RuntimeError):
    pass


def run_process(command, environment=None):
    """Standard output, wall and user milliseconds, and peak bytes of a process that must succeed."""
    start = time.perf_counter()
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          env=environment) as process:
        try:
            output, errors = process.communicate(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            process.kill()
            raise MeasureError(f"{command[0]} took longer than {PATIENCE} s") from None
    wall = (time.perf_counter() - start) * 1e3
    if process.returncode != 0:
        raise MeasureError(f"{' '.join(command)}: code {process.returncode}: {errors.decode(errors='replace')[-500:]}")
    return output.decode(), wall


class InProcess:
    """A program that measures itself and prints one JSON object a repetition."""

    def __init__(self, name, command, environment=None):
        self.name = name
        self.command = command
        self.environment = environment

    def measure_all(self, path, *options):
        output, _ = run_process([*self.command, *options, path], self.environment)
        return [json.loads(line) for line in output.splitlines() if line.startswith("{")]

    def measure(self, path, *options):
        return self.measure_all(path, *options)[0]


class WholeProcess:
    """A program whose time is that of its process, start included."""

    def __init__(self, name, make_command):
        self.name = name
        self.make_command = make_command

    def measure(self, path):
        before = os.times()
        _, wall = run_process(self.make_command(path))
        after = os.times()
        return {"wall_ms": wall, "user_ms": (after.children_user - before.children_user) * 1e3}


def ffmpeg(path):
    return ["ffmpeg", "-nostdin", "-v", "error", "-i", path, "-map", "0", "-c", "copy", "-f", "null", "-"]


def mkvextract(tracks):
    """Every output has a name of its own, since one name is one file to mkvextract."""
    def command(path):
        outputs = [f"{k}:/dev/{'./' * k}null" for k in range(tracks)]
        return ["mkvextract", "-q", path, "tracks", *outputs]
    return command


class Programs:
    """Where the built programs are. `wine` is None where there is no Wine to measure."""

    def __init__(self, native, windows, wine):
        self.bench_play = os.path.join(native, "bench_play")
        self.av_packets = os.path.join(native, "av_packets")
        self.block_walk = os.path.join(native, "block_walk")
        self.gst_play = os.path.join(native, "gst_play")
        self.windows_play = os.path.join(windows, "bench_play.exe") if windows and wine else None
        self.wine = wine

    def native(self, name="ours", *options):
        return InProcess(name, [self.bench_play, *options])

    def under_wine(self, name, *options):
        return InProcess(name, [self.wine, "Z:" + self.windows_play.replace("/", "\\"), *options])

    def one_heap(self):
        """All of the heap in one arena, where it can be counted."""
        return InProcess("ours", [self.bench_play], dict(os.environ, MALLOC_ARENA_MAX="1"))
