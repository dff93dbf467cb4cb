#!/bin/sh
# Makes the files that are measured, about 6 GB. Usage: benchmarks/corpus.sh DIR
# Every file is made only if it is missing, and appears only when it is whole. Nothing is downloaded: all
# content is synthetic. Needs ffmpeg, mkvmerge and awk.
set -eu

dir=${1:?usage: benchmarks/corpus.sh DIR}
mkdir -p "$dir"
cd "$dir"
parts=parts.$$
trap 'rm -rf "$parts"' EXIT
trap 'exit 130' INT TERM HUP

run_ffmpeg() {
  mkdir -p "$parts"
  ffmpeg -nostdin -v error -y "$@"
}

merge() {
  mkdir -p "$parts"
  mkvmerge -q "$@"
}

# absent FILE: says so and answers true when the file has to be made.
absent() {
  [ ! -e "$1" ] || return 1
  echo "bench: making $1"
}

finish() {
  mv "$parts/$1" "$1"
}

# a: 60 s of MPEG-2 in full HD at 60 Mb/s, and AC-3. Its muxer writes no codec data at first, without which
# the splitter refuses MPEG-2; copying the streams once more finds them.
make_high_rate() {
  if [ ! -e big_mpeg2.mkv ]; then
    run_ffmpeg -f lavfi -i 'testsrc2=s=1920x1080:r=25:d=60,noise=alls=40:allf=t' \
      -f lavfi -i 'sine=f=440:r=48000:d=60' -map 0:v -map 1:a \
      -c:v mpeg2video -b:v 60M -minrate 60M -maxrate 60M -bufsize 20M -g 12 \
      -c:a ac3 -b:a 448k -ac 2 "$parts/big_mpeg2.mkv"
    finish big_mpeg2.mkv
  fi
  run_ffmpeg -i big_mpeg2.mkv -map 0 -c copy "$parts/big_mpeg2_header.mkv"
  finish big_mpeg2_header.mkv
}

# b: two hours of MP3, 300,001 frames of 24 ms, each a block of its own.
make_small_frames() {
  run_ffmpeg -f lavfi -i 'sine=f=440:r=48000:d=7200' -c:a libmp3lame -b:a 64k "$parts/audio2h.mka"
  finish audio2h.mka
}

# c: the same, eight frames a block.
make_laced() {
  merge -o "$parts/audio2h_laced.mka" audio2h.mka
  finish audio2h_laced.mka
}

make_clip() {
  [ -e "$parts/v60.mp4" ] || run_ffmpeg -f lavfi -i 'testsrc2=s=1280x720:r=24:d=60,noise=alls=12:allf=t' -an \
    -c:v libx264 -preset veryfast -b:v 1500k -maxrate 3000k -bufsize 3000k -g 48 -bf 2 -pix_fmt yuv420p \
    "$parts/v60.mp4"
  [ -e "$parts/a60_1.ac3" ] || run_ffmpeg -f lavfi -i 'sine=f=440:r=48000:d=60' -c:a ac3 -b:a 192k -ac 2 \
    "$parts/a60_1.ac3"
}

make_subtitles() {
  awk -v k="$1" 'function ts(t) { return sprintf("%02d:%02d:%02d,000", t / 3600, (t % 3600) / 60, t % 60) }
    BEGIN {
      for (i = 0; i < 1500; i++) {
        t = 2 + i * 4.75
        printf "%d\n%s --> %s\nSubtitle %d line %d\nsecond line\n\n", i + 1, ts(int(t)), ts(int(t) + 3), k, i
      }
    }' >"$parts/s$1.srt"
}

# d: two hours of H.264 with B frames at 1.5 Mb/s, two AC-3 tracks, two of subtitles, Cues at the end. One
# minute repeated, so that it takes seconds to make.
make_movie() {
  make_clip
  run_ffmpeg -f lavfi -i 'sine=f=660:r=48000:d=60' -c:a ac3 -b:a 192k -ac 2 "$parts/a60_2.ac3"
  make_subtitles 1
  make_subtitles 2
  run_ffmpeg -stream_loop 119 -i "$parts/v60.mp4" -c copy "$parts/v2h.mkv"
  for k in 1 2; do
    i=0
    : >"$parts/a2h_$k.ac3"
    while [ $i -lt 120 ]; do
      cat "$parts/a60_$k.ac3" >>"$parts/a2h_$k.ac3"
      i=$((i + 1))
    done
  done
  merge -o "$parts/movie.mkv" "$parts/v2h.mkv" --language 0:eng "$parts/a2h_1.ac3" --language 0:ger "$parts/a2h_2.ac3" \
    --language 0:eng "$parts/s1.srt" --language 0:ger "$parts/s2.srt"
  finish movie.mkv
}

# e: the movie without Cues.
make_movie_without_cues() {
  merge -o "$parts/movie_nocues.mkv" --no-cues movie.mkv
  finish movie_nocues.mkv
}

# f: 100,000 tiny pictures, a cluster and a cue point for each.
make_many_cues() {
  run_ffmpeg -f lavfi -i 'testsrc=s=64x64:r=25' -frames:v 100000 -c:v libx264 -preset ultrafast -crf 45 \
    -g 1 -pix_fmt yuv420p "$parts/intra.mkv"
  merge -o "$parts/cues100k.mkv" --cues 0:iframes "$parts/intra.mkv"
  finish cues100k.mkv
}

# g: about 100 MB of PCM, each block compressed with zlib.
make_compressed() {
  run_ffmpeg -f lavfi -i \
    'aevalsrc=0.3*sin(2*PI*440*t)+0.002*random(0)|0.3*sin(2*PI*550*t)+0.002*random(1):s=48000:d=540' \
    -c:a pcm_s16le "$parts/pcm.wav"
  merge -o "$parts/pcm_zlib.mka" --compression 0:zlib "$parts/pcm.wav"
  finish pcm_zlib.mka
}

# h and j: a minute with so many chapters.
make_chapters() {
  make_clip
  awk -v count="$1" 'BEGIN {
    for (i = 0; i < count; i++) {
      printf "CHAPTER%05d=00:00:%06.3f\nCHAPTER%05dNAME=Chapter number %d\n", i + 1, i * 60 / count, i + 1, i + 1
    }
  }' >"$parts/chapters.txt"
  merge -o "$parts/chapters$1.mkv" --chapters "$parts/chapters.txt" "$parts/v60.mp4" "$parts/a60_1.ac3"
  finish "chapters$1.mkv"
}

# i: the same, written by FFmpeg, which begins the Cues and every cluster with a checksum. b is FFmpeg's already.
make_many_cues_by_ffmpeg() {
  run_ffmpeg -i cues100k.mkv -c copy "$parts/cues100k_ffmpeg.mkv"
  finish cues100k_ffmpeg.mkv
}

mkdir -p "$parts"
if absent big_mpeg2_header.mkv; then make_high_rate; fi
if absent audio2h.mka; then make_small_frames; fi
if absent audio2h_laced.mka; then make_laced; fi
if absent movie.mkv; then make_movie; fi
if absent movie_nocues.mkv; then make_movie_without_cues; fi
if absent cues100k.mkv; then make_many_cues; fi
if absent pcm_zlib.mka; then make_compressed; fi
if absent chapters1000.mkv; then make_chapters 1000; fi
if absent chapters10000.mkv; then make_chapters 10000; fi
if absent cues100k_ffmpeg.mkv; then make_many_cues_by_ffmpeg; fi
