#!/usr/bin/env bash
# Draws the growth curves that scripts/bench.sh measured.
# usage: scripts/bench-plot.sh [POINTS [SVG]]
#   POINTS   default build/bench/growth.dat
#   SVG      default docs/growth.svg
# Needs gnuplot-nox. Exit status: 0 done, 1 usage or no points, else gnuplot's.
set -euo pipefail
. "$(dirname "$0")/common.sh"
cd "$(dirname "$0")/.."

points=${1:-build/bench/growth.dat}
svg=${2:-docs/growth.svg}
[[ $# -le 2 && -s $points ]] || usage
mkdir -p "$(dirname "$svg")"
gnuplot <<PLOT
set terminal svg size 760,460 font "sans-serif,12" noenhanced background "white"
set output "$svg"
set logscale xy
set grid
set key below
set xlabel "units cached, keys, writes queued"
set ylabel "processor time in µs"
set format y "%g"
stats "$points" using 1:2 nooutput
plot for [i=0:5] "$points" index i using 1:(\$2 / 1000) title columnhead(1) with linespoints lw 2 pt 7 ps 0.5
PLOT
echo "$svg"
