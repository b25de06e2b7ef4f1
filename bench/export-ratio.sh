#!/usr/bin/env bash
# How long an export takes beside what FFmpeg needs for the same number of frames with the same
# encoder settings: alone, which is the limit of any export, and with its zoompan filter, which is
# what one would script instead. The three run in turn, so that a busy machine slows all of them.
# Usage: bench/export-ratio.sh PACKAGE [RUNS [OPTION of --export…]]
# The executable is build/release/vesk, or the one that the variable VESK names.
set -euo pipefail
export LC_ALL=C.UTF-8

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
[ $# -ge 1 ] || { sed -n '5,6s/^# //p' "$0"; exit 2; }
package=${1%/}
runs=${2:-3}
options=("${@:3}")
vesk=${VESK:-$root/build/release/vesk}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# measure NAME COMMAND…: adds the wall time in seconds and the peak memory in KiB to NAME's list.
measure() {
  local name=$1 begin end pid watcher
  shift
  begin=${EPOCHREALTIME/./}
  "$@" >"$work/$name.log" 2>&1 </dev/null &
  pid=$!
  # The kernel keeps the peak itself; the last look before the end is as good as exact.
  while sed -n 's/^VmHWM:[^0-9]*\([0-9]*\).*/\1/p' "/proc/$pid/status" >"$work/look" 2>/dev/null &&
    [ -s "$work/look" ]; do
    mv "$work/look" "$work/peak"
    sleep 0.05
  done &
  watcher=$!
  wait "$pid" || { cat "$work/$name.log" >&2; exit 1; }
  end=${EPOCHREALTIME/./}
  wait "$watcher" || true
  echo "$((end - begin)) $(cat "$work/peak")" >>"$work/$name.runs"
}

# median NAME COLUMN
median() {
  cut -d' ' -f"$2" "$work/$1.runs" | sort -n |
    awk '{ v[NR] = $1 } END { print NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

export_movie() {
  measure vesk "$vesk" --export "$work/vesk.mp4" --package "$package" "${options[@]}"
}

# setting NAME: the H.264 encoder's field of that name, as the exporter has it.
setting() {
  local field
  field=$(sed -n '/EncoderChoice .*H264/I,/};/s/.*\.'"$1"' = "\(.*\)",.*/\1/p' \
    "$root/src/media/VideoEncoder.cpp")
  [ -n "$field" ] || { echo "VideoEncoder.cpp has no $1 for H.264" >&2; exit 1; }
  echo "$field"
}

# encode NAME FILTER
encode() {
  measure "$1" ffmpeg -nostdin -y -v error -i "$package/screen.mov" -map 0:v:0 \
    -vf "fps=$rate,tpad=stop_mode=clone:stop=-1$2" -frames:v "$frames" -pix_fmt yuv420p \
    -c:v "$encoder" -preset "$preset" "-$parameter_name" "$parameters" \
    -b:v "$((width * height * rate * 8 / 100))" -g "$((2 * rate))" -movflags +faststart \
    "$work/$1.mp4"
}

encoder=$(setting encoder)
preset=$(setting preset)
parameter_name=$(setting parameterName)
parameters=$(setting parameters)

# The first export, which also warms the caches, says what there is to encode.
export_movie
rm "$work/vesk.runs"
IFS=, read -r width height fraction frames < <(ffprobe -v error -select_streams v:0 \
  -show_entries stream=width,height,avg_frame_rate,nb_frames -of csv=p=0 "$work/vesk.mp4")
rate=$((${fraction%/*} / ${fraction#*/}))
zoom="z='if(lt(mod(on,$((8 * rate))),$((4 * rate))),min(pzoom+0.02,2),max(pzoom-0.02,1))'"
pan="x='iw*0.4-iw/zoom*0.4':y='ih*0.4-ih/zoom*0.4'"

for ((run = 0; run < runs; ++run)); do
  export_movie
  encode limit ""
  encode zoompan ",zoompan=$zoom:$pan:d=1:s=${width}x$height:fps=$rate"
done

for movie in limit zoompan; do
  encoded=$(ffprobe -v error -select_streams v:0 -show_entries stream=nb_frames -of csv=p=0 \
    "$work/$movie.mp4")
  [ "$encoded" = "$frames" ] || { echo "$movie has $encoded frames, not $frames" >&2; exit 1; }
done

awk -v vesk="$(median vesk 1)" -v limit="$(median limit 1)" -v zoompan="$(median zoompan 1)" \
  -v peak="$(median vesk 2)" -v what="$(basename "$package")  ${width}x$height  $frames frames" \
  -v runs="$runs" 'BEGIN {
    printf "%s, medians of %d runs\n", what, runs
    printf "export          %7.2f s   peak memory %.0f MB\n", vesk / 1e6, peak / 1024
    printf "FFmpeg alone    %7.2f s   export takes %.2f times as long\n", limit / 1e6, vesk / limit
    printf "FFmpeg zoompan  %7.2f s   export takes %.2f times as long\n", zoompan / 1e6, vesk / zoompan
  }'
