# SPDX-License-Identifier: GPL-2.0-or-later
# The nickel film before and after its fits, from the files that fit_film.py leaves in a folder.
#
#   gnuplot -e "folder='build/fit_film'" fit_film.gp
set terminal pngcairo size 1000,420 enhanced font ",11"
set output folder."/fit_film.png"
set multiplot layout 1,2
set grid lc rgb "#dddddd"
set logscale y
set format y "10^{%L}"
set xlabel "q_z (Å^{-1})"
set ylabel "reflectivity"
set xrange [0:0.36]
set yrange [1e-8:2]

set title "before"
plot folder."/measured.txt" with points pt 6 ps 0.5 lc rgb "#888888" title "measured", \
     folder."/start.txt" with lines lw 1.2 lc rgb "#c0392b" title "start, 205 Å"

set title "after"
plot folder."/measured.txt" with points pt 6 ps 0.5 lc rgb "#888888" title "measured", \
     folder."/simplex.txt" with lines lw 1.2 dt 2 lc rgb "#c0392b" title "simplex", \
     folder."/annealing.txt" with lines lw 2.4 lc rgb "#9ac7a0" title "annealing", \
     folder."/levenberg.txt" with lines lw 1.0 lc rgb "#1f5fa8" title "Levenberg-Marquardt"
unset multiplot
