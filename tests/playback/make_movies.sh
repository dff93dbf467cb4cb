#!/bin/sh
# Makes the movie of the playback test, and what its pictures are when ffmpeg decodes them.
# Usage: make_movies.sh FOLDER. Needs ffmpeg and python3.
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
folder=${1:?usage: make_movies.sh FOLDER}
rate=10
pictures="testsrc=size=320x240:rate=$rate:duration=3"
sound='sine=frequency=440:sample_rate=44100:duration=2.9'

rm -rf "$folder"
mkdir -p "$folder/packets"
make() {
  ffmpeg -v error -nostdin "$@"
}

# ffmpeg would store Cinepak as QuickTime does, so it is written here, with sound in layer 3.
make -f lavfi -i "$pictures" -c:v cinepak -g 1 -pix_fmt rgb24 "$folder/cinepak.avi"
make -i "$folder/cinepak.avi" -c:v copy -f image2 "$folder/packets/%03d"
make -f lavfi -i "$sound" -c:a libmp3lame -b:a 32k -ac 1 -write_xing 0 -id3v2_version 0 "$folder/sound.mp3"
python3 -B "$here/make_movie.py" cvid 32 320 240 $rate "$folder/packets" "$folder/sound.mp3" "$folder/cinepak.mkv"
make -i "$folder/cinepak.avi" -f rawvideo -pix_fmt bgr0 "$folder/cinepak.pictures"
