#!/bin/sh
# Makes the icons of this folder anew from the drawings beside it: those of up to 24 pixels from the
# plain one. Needs rsvg-convert (Debian: librsvg2-bin).
set -eu
cd "$(dirname "$0")"
for side in 16 22 24 32 48 64 128 256 512; do
    drawing=../tessary.svg
    [ "$side" -gt 24 ] || drawing=../tessary-small.svg
    rsvg-convert --width "$side" --height "$side" "$drawing" --output "$side.png"
done
