# SPDX-License-Identifier: GPL-2.0-or-later
# Reflectivity over energy and qz, logarithmic colours.
#
#   gnuplot -e "map='map.txt'; picture='map.png'" map.gp
set terminal pngcairo size 800,560 enhanced font ",11"
set output picture
set title "A film like cobalt: log_{10} R"
set xlabel "energy (eV)"
set ylabel "q_z (Å^{-1})"
set pm3d map
set palette defined (0 "#0b1d3a", 0.4 "#1f5fa8", 0.75 "#e8c33d", 1 "#fffbe6")
unset key
set autoscale xfix
set autoscale yfix
splot map using 1:2:(log10($3))
