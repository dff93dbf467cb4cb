#!/bin/sh
# Writes what the pictures of the sample are when ffmpeg decodes them, for the playback test.
# Usage: make_pictures.sh FOLDER. Needs ffmpeg.
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
folder=${1:?usage: make_pictures.sh FOLDER}
mkdir -p "$folder"
# Wine's renderer takes luma to have its full range, whatever the file says.
ffmpeg -v error -nostdin -y -i "$here/../data/sample.mkv" -vf scale=in_range=full:out_range=full \
  -map 0:v -f rawvideo -pix_fmt bgr0 "$folder/sample.pictures"
