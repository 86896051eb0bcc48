# SPDX-License-Identifier: GPL-2.0-or-later
# Both helicities and their asymmetry over qz.
#
#   gnuplot -e "curve='dichroic.txt'; picture='dichroic.png'" dichroism.gp
set terminal pngcairo size 1000,420 enhanced font ",11"
set output picture
set multiplot layout 1,2 title "150 Å of a film like cobalt at the L_3 edge, circular light"
set grid lc rgb "#dddddd"
set xlabel "q_z (Å^{-1})"

set logscale y
set format y "10^{%L}"
set ylabel "reflectivity"
plot curve using 1:2 with lines lc rgb "#1f5fa8" title "R_+", curve using 1:3 with lines lc rgb "#c2401c" title "R_-"

unset logscale y
set format y "%g"
set ylabel "(R_+ - R_-) / (R_+ + R_-)"
unset key
plot curve using 1:(($2-$3)/($2+$3)) with lines lc rgb "#333333"
unset multiplot
