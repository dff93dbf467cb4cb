#!/bin/sh
# Makes sample.mkv, which ./play plays when no file is given. Needs ffmpeg and python3; ./play and
# ./test need neither for it.
set -eu

folder=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
width=320 height=240 rate=10

ffmpeg -v error -nostdin -f lavfi -i "testsrc=size=${width}x$height:rate=$rate:duration=5" \
  -f rawvideo -pix_fmt uyvy422 "$work/pictures"
# The encoder's delay makes the sound longer. All of it must lie within the five seconds: whatever ends
# after the stop time is not played, and players differ in when they set one.
make_sound() {
  ffmpeg -v error -nostdin -f lavfi -i "sine=frequency=$1:beep_factor=2:sample_rate=44100:duration=4.9" \
    -c:a libmp3lame -b:a 32k -ac 1 -write_xing 0 -id3v2_version 0 -f mp3 "$2"
}
make_sound 440 "$work/low"
make_sound 660 "$work/high"
python3 "$folder/make_sample.py" "$work/pictures" $width $height $rate "$work/low" "$work/high" "$folder/sample.mkv"
ls -l "$folder/sample.mkv"
