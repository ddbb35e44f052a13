# SPDX-License-Identifier: Apache-2.0
# The plots of docs/performance.md. Called with the folders: gnuplot -e "data='...'; images='...'" bench/plots.gp
set terminal pngcairo size 900,560 font "DejaVu Sans,12" linewidth 1.5
set grid linecolor rgb "#c4c4c4" linewidth 0.6
set border 3 linecolor rgb "#505050"
set tics nomirror
set key top left Left reverse
set style line 1 linecolor rgb "#b3541e" pointtype 7 pointsize 1.1 linewidth 1.6
set style line 2 linecolor rgb "#1f5f99" pointtype 5 pointsize 1.1 linewidth 1.6
set style line 3 linecolor rgb "#d99a6c" pointtype 6 pointsize 1.2 linewidth 1.6 dashtype 2
set style line 4 linecolor rgb "#7fb0dc" pointtype 4 pointsize 1.2 linewidth 1.6 dashtype 2
file(name) = data . "/" . name . ".dat"
image(name) = images . "/performance-" . name . ".png"

set ylabel "time, ms"

set output image("size")
set title "One frame, intake and measurement, over the picture size"
set logscale xy
set xlabel "picture, megapixels"
set xrange [0.06:12]
set format x "%g"
set format y "%g"
plot file("size") using 1:2 with linespoints linestyle 1 title "plain", \
     file("size") using 1:3 with linespoints linestyle 2 title "fast"
unset logscale
set format
set autoscale
set yrange [0:*]
set offsets graph 0, 0, graph 0.15, 0

set output image("regions")
set title "One frame at 640 x 480 over clutter"
set xlabel "small blocks around the parcel"
plot file("regions") using 1:2 with linespoints linestyle 1 title "plain", \
     file("regions") using 1:3 with linespoints linestyle 2 title "fast"

set output image("coverage")
set title "One frame at 640 x 480 over the size of the object"
set xlabel "share of the picture that the box's top covers, %"
set xrange [0:100]
plot file("coverage") using 1:2 with linespoints linestyle 1 title "plain", \
     file("coverage") using 1:3 with linespoints linestyle 2 title "fast"

set output image("area")
set title "Calibration at 640 x 480 over the calibration area"
set xlabel "calibration area, share of width and height, %"
plot file("area-sampling") using 1:2 with linespoints linestyle 1 title "sampling fit, plain", \
     file("area-sampling") using 1:3 with linespoints linestyle 2 title "sampling fit, fast", \
     file("area-growing") using 1:2 with linespoints linestyle 3 title "growing fit, plain", \
     file("area-growing") using 1:3 with linespoints linestyle 4 title "growing fit, fast"

set output image("batch")
set title "A whole batch at 640 x 480 over its length"
set xlabel "frames in the batch"
set xrange [0:32]
plot file("batch") using 1:2 with linespoints linestyle 1 title "plain", \
     file("batch") using 1:3 with linespoints linestyle 2 title "fast"
