"""The files that are measured, by the letter that the tables use."""
import os

NAMES = {
    "a": "big_mpeg2_header.mkv",
    "b": "audio2h.mka",
    "c": "audio2h_laced.mka",
    "d": "movie.mkv",
    "e": "movie_nocues.mkv",
    "f": "cues100k.mkv",
    "g": "pcm_zlib.mka",
    "h": "chapters1000.mkv",
    "i": "cues100k_ffmpeg.mkv",
    "j": "chapters10000.mkv",
}
ABOUT = {
    "a": "453 MB high rate",
    "b": "300k frames",
    "c": "laced",
    "d": "1.7 GB movie",
    "e": "d without Cues",
    "f": "100k clusters",
    "g": "zlib",
    "h": "1,000 chapters",
    "i": "f from FFmpeg",
    "j": "10,000 chapters",
}
TRACKS = {"a": 2, "b": 1, "c": 1, "d": 5, "e": 5, "f": 1, "g": 1, "h": 2, "i": 1, "j": 2}


class Corpus:
    def __init__(self, folder):
        self.folder = os.path.abspath(folder)

    def path(self, letter):
        return os.path.join(self.folder, NAMES[letter])

    def size(self, letter):
        return os.path.getsize(self.path(letter))

    def warm(self, letter):
        """Reads the file once, so that no contestant is the first to fetch it from the disk."""
        with open(self.path(letter), "rb", buffering=0) as file:
            while file.read(1 << 22):
                pass
