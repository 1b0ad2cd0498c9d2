#!/bin/sh
# Draws the PNG pictures below resources/ anew from their SVG sources. Needs rsvg-convert (Debian:
# librsvg2-bin). The pictures are kept beside the sources, so a build does not draw them.
set -eu
cd "$(dirname "$0")/../resources"

draw() {  # draw SOURCE PIXELS FILE
    rsvg-convert --width "$2" --height "$2" --output "$3" "$1"
    echo "$3"
}

for source in images/source/*.svg; do
    name=$(basename "$source" .svg)
    # At one pixel per point the strokes must lie on whole pixels, so this size has its own drawing.
    draw "images/source/1x/$name.svg" 20 "images/$name.png"
    draw "$source" 40 "images/$name@2x.png"
    draw "$source" 60 "images/$name@3x.png"
done
for size in 48 128 256; do
    draw icons/it.tarno.quillet.today.svg "$size" "icons/it.tarno.quillet.today-$size.png"
done
