#!/bin/sh
# Makes sample.mkv, which ./play plays when no file is given. Needs ffmpeg and python3; neither ./play
# nor ./test does. The codecs are those that Wine itself decodes: Cinepak, and MP3 in one channel.
set -eu

folder=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat >"$work/titles.srt" <<'END'
1
00:00:00,500 --> 00:00:02,300
Tarvex Matroska Splitter

2
00:00:02,600 --> 00:00:04,800
One picture, one sound, one subtitle
END

cat >"$work/chapters.txt" <<'END'
;FFMETADATA1
title=Tarvex sample
[CHAPTER]
TIMEBASE=1/1000
START=0
END=2500
title=First half
[CHAPTER]
TIMEBASE=1/1000
START=2500
END=5000
title=Second half
END

ffmpeg -v error -nostdin \
  -f lavfi -i 'testsrc2=size=256x192:rate=12:duration=5' \
  -f lavfi -i 'sine=frequency=440:beep_factor=2:sample_rate=44100:duration=5' \
  -i "$work/titles.srt" -i "$work/chapters.txt" -map_metadata 3 -map_chapters 3 \
  -map 0 -map 1 -map 2 -c:v cinepak -q:v 20 -g 24 -c:a libmp3lame -b:a 64k -ac 1 -c:s subrip \
  -metadata:s:v language=und -metadata:s:a language=eng -metadata:s:s language=eng \
  -write_crc32 0 -fflags +bitexact -flags:v +bitexact -flags:a +bitexact "$work/sample.mkv"

# ffmpeg stores Cinepak with a QuickTime header, which DirectShow has no use for. A bitmap header takes
# its place, at 32 bits per pixel: Wine's decompressor writes pictures of the depth that the header
# names, whatever it agreed on, and its renderer shows 32. What is left of the old elements is void.
python3 - "$work/sample.mkv" "$folder/sample.mkv" <<'END'
import struct
import sys


def element(identifier, body):
    return identifier + bytes([0x80 | len(body)]) + body


def void(total):
    return element(b"\xec", bytes(total - 2))


data = open(sys.argv[1], "rb").read()
old_id = element(b"\x86", b"V_QUICKTIME")
old_private = element(b"\x63\xa2", struct.pack(">I4s", 90, b"cvid") + bytes(82))
bitmap = struct.pack("<IiiHH4sIiiII", 40, 256, 192, 1, 32, b"cvid", 256 * 192 * 4, 0, 0, 0, 0)
new = element(b"\x63\xa2", bitmap) + element(b"\x86", b"V_MS/VFW/FOURCC")
if data.count(old_id) != 1 or data.count(old_private) != 1:
    sys.exit("this ffmpeg writes the track in another way")
data = data.replace(old_id, void(len(old_id)))
data = data.replace(old_private, new + void(len(old_private) - len(new)))
open(sys.argv[2], "wb").write(data)
END
ls -l "$folder/sample.mkv"
