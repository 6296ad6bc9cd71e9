#!/usr/bin/env bash
# Draws tovan-network-monitor.ico anew from the mark. The result is kept in the repository, since a
# machine with Windows has none of these tools: run this after the mark changed.
# Needs Debian's icoutils and librsvg2-bin.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
mark=../../assets/tovan-site-icon.svg

scratch=$(mktemp --directory)
trap 'rm -r "$scratch"' EXIT

# Sizes of small and large icons at 100 to 200 percent; the largest is stored as PNG.
bitmaps=()
for size in 16 20 24 32 40 48 64; do
    rsvg-convert --width=$size --height=$size --output="$scratch/$size.png" "$mark"
    bitmaps+=("$scratch/$size.png")
done
rsvg-convert --width=256 --height=256 --output="$scratch/256.png" "$mark"
icotool --create --output=tovan-network-monitor.ico "${bitmaps[@]}" --raw="$scratch/256.png"
