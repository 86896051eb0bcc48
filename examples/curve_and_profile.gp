# SPDX-License-Identifier: GPL-2.0-or-later
# A reflectivity curve beside its depth profile, as a picture and as text on the terminal.
#
#   gnuplot -e "curve='curve.txt'; profile='profile.txt'; picture='picture.png'; label='a title'" curve_and_profile.gp
set terminal pngcairo size 1000,420 enhanced font ",11"
set output picture
set multiplot layout 1,2 title label
set grid lc rgb "#dddddd"
unset key

set logscale y
set format y "10^{%L}"
set xlabel "q_z (Å^{-1})"
set ylabel "reflectivity"
set yrange [1e-9:2]
plot curve using 1:2 with lines lw 1.2 lc rgb "#1f5fa8"

unset logscale y
set format y "%g"
set autoscale y
set autoscale xfix
set xlabel "height above the substrate (Å)"
set ylabel "{/Symbol d} (10^{-6})"
plot profile using 1:($2*1e6) with filledcurves y1=0 fc rgb "#c9dcf2" notitle, \
     profile using 1:($2*1e6) with lines lw 1 lc rgb "#1f5fa8"
unset multiplot
set output

set terminal dumb size 100,30
set logscale y
set format y "%.0e"
set xlabel "qz (1/A)"
unset ylabel
set yrange [1e-9:2]
set title label." : reflectivity"
plot curve using 1:2 with lines
