# Plots of summary.csv: gnuplot -e "folder='…'" plots.gp makes scenes.svg and growth.svg there.
set datafile separator ','
summary = folder . '/summary.csv'
array names[3] = ["utility", "floor", "floor with start-up"]
pattern(i) = i == 3 ? "floor with a window.s start-up" : names[i]
match(kind, scene, i) = sprintf("<awk -F, '$1 == \"%s\" && $2 == \"%s\" && $4 ~ /^%s$/' '%s'", \
                                kind, scene, pattern(i), summary)

set terminal svg size 960,640 font 'sans-serif,11' background 'white'
set linetype 1 lc rgb '#c03020' lw 2 pt 7 ps 0.5
set linetype 2 lc rgb '#2060a0' lw 2 pt 5 ps 0.5
set linetype 3 lc rgb '#70a0d0' lw 2 pt 9 ps 0.5
set grid lc rgb '#d0d0d0'

set output folder . '/growth.svg'
set multiplot layout 2,3 margins 0.07,0.98,0.08,0.83 spacing 0.08,0.16
unset mxtics
set xtics rotate by 0
set logscale xy
set format x '10^{%T}'
set key at screen 0.98,0.98 right top horizontal maxrows 1
set yrange [0.7:*]
array scenes[5] = ["sections of the list", "bytes of the list", "bytes of the record", \
                   "log files in the folder", "bytes of the log file"]
do for [s = 1:5] {
  stats match('growth', scenes[s], 2) using 7 name 'F' nooutput
  set title scenes[s]
  set ylabel s % 3 == 1 ? 'times the floor''s shortest run' : ''
  plot for [i = 1:3] match('growth', scenes[s], i) using ($3 < 1 ? 1 : $3):($7 / F_min) \
    with linespoints lt i title names[i]
  set key off
}
unset logscale
set xtics 250
set format x '%g'
set title 'retries in one window (the first fifty = 1)'
set ylabel ''
set yrange [0:*]
stats match('retry', 'retries in one window', 1) using 7 every ::0::0 name 'T' nooutput
stats match('retry', 'retries in one window', 1) using 9 every ::0::0 name 'M' nooutput
set key inside bottom left vertical maxrows 2
plot match('retry', 'retries in one window', 1) using 3:($7 / T_min) with linespoints lt 1 title 'shortest time of fifty', \
  '' using 3:($9 / M_min) with linespoints lt 2 title 'memory'
unset multiplot
reset

set terminal svg size 800,360 font 'sans-serif,11' background 'white'
set output folder . '/scenes.svg'
set datafile separator ','
set grid ytics lc rgb '#d0d0d0'
set multiplot layout 1,3
set key off
set style fill solid 0.8 border -1
set boxwidth 0.8
set xtics ("utility" 1, "floor" 2, "with start-up" 3) rotate by -20
array shown[3] = ["silent check: 1 pack", "silent check: 100000 packs", "first painted sheet"]
do for [s = 1:3] {
  set title shown[s]
  set ylabel s == 1 ? 'time, the utility''s = 1' : ''
  stats match('scene', shown[s], 1) using 6 name 'U' nooutput
  set xrange [0.4:3.6]
  set yrange [0:*]
  plot for [i = 1:3:(shown[s] eq 'first painted sheet' ? 2 : 1)] match('scene', shown[s], i) using (i):($6 / U_min) \
    with boxes lt i
}
unset multiplot
