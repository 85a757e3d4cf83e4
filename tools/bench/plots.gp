# Plots of summary.csv and bars.dat: gnuplot -e "folder='…'" plots.gp makes scenes.svg and growth.svg there.
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
  stats match('growth', scenes[s], 2) using 8 name 'F' nooutput
  set title scenes[s]
  set ylabel s % 3 == 1 ? 'median time over the floor''s least' : ''
  plot for [i = 1:3] match('growth', scenes[s], i) using ($3 < 1 ? 1 : $3):($8 / F_min) \
    with linespoints lt i title names[i]
  set key off
}
unset logscale
set xtics 250
set format x '%g'
set title 'retries in one window (the first fifty = 1)'
set ylabel ''
set yrange [0:*]
stats match('retry', 'retries in one window', 1) using 8 every ::0::0 name 'T' nooutput
stats match('retry', 'retries in one window', 1) using 11 every ::0::0 name 'M' nooutput
set key inside bottom left vertical maxrows 2
plot match('retry', 'retries in one window', 1) using 3:($8 / T_min) with linespoints lt 1 title 'median time of fifty', \
  '' using 3:($11 / M_min) with linespoints lt 2 title 'memory'
unset multiplot
reset

set terminal svg size 800,400 font 'sans-serif,11' background 'white'
set output folder . '/scenes.svg'
set datafile separator whitespace
set grid ytics lc rgb '#d0d0d0'
set key outside top center horizontal
set style fill solid 0.8 border -1
set bmargin 4
set xrange [0:15]
set yrange [0:*]
set ylabel 'median time and quartiles, floor = 1'
set xtics ("silent check,\n1 pack" 2, "silent check,\n100,000 packs" 6, "silent check,\n30 MiB" 10, \
           "first painted sheet,\nover its floor" 13.5) scale 0
plot for [i = 1:3] folder . '/bars.dat' using ($2 == i ? $1 : NaN):3:4:5:(0.8) with boxerrorbars lt i title names[i]
