"""What is to be reached."""

# Wall time natively, at most this share of the other's.
DEMUX = {
    "ffmpeg -c copy": {"a": 0.9, "b": 0.3, "c": 0.2, "d": 0.5, "f": 0.6, "g": 0.9},
    "libavformat packets": {"a": 1.0, "b": 0.24, "c": 0.25, "d": 0.7, "f": 0.8, "g": 0.95},
    "matroskademux with queues": {"a": 1.0, "b": 0.18, "c": 0.18, "d": 0.3, "f": 0.35, "g": 0.85},
}
# On c, of what reads the blocks and keeps nothing.
OF_LIBMATROSKA = 0.9

# Files on which the user CPU time must be below libavformat's.
LESS_CPU_ON = "bcdfg"

WINE_SHARE_OF_RAW = 0.8  # of the raw speed, on a and d
WINE_TO_NATIVE_B = 2.0

READ_BYTES_A_CALL = 512 * 1024
READ_CALLS_MORE = 40
OPEN_READS_D = 12
SEEK_READS = 6

# Milliseconds.
OPEN_MS = {"d": 10, "f": 40, "h": 5, "i": 15}
SEEK_MS = {"d": 3, "f": 3, "i": 3}

# Without Cues (e), where every new place is looked for.
SEARCH_MS = 10
SEARCH_MS_WINE = 50
SEARCH_READS = 60

FROM_FFMPEG = 1.15  # a whole pass over i, at most this share of one over f

PEAK_ABOVE_RINGS = 24 * 1024 * 1024  # on d
INDEX_BYTES_AN_ENTRY = 32

# Growth is linear when a fit of log(cost) over log(size) rises at most so steeply.
STEEPEST = 1.1


def mark(value, limit):
    """A cell's mark against a limit that is an upper one."""
    return "✓" if value <= limit else "✗"
