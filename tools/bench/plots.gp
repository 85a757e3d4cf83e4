# Plots of summary.csv: gnuplot -e "folder='…'" plots.gp makes scenes.svg and growth.svg there.
set datafile separator ','
summary = folder . '/summary.csv'
programs = "'utility' 'floor' 'floor with a window''s start-up'"
rows(kind, scene, program) = \
  sprintf("<awk -F, '$1 == \"%s\" && $2 == \"%s\" && $4 == \"%s\"' '%s'", kind, scene, program, summary)
array names[3] = ["utility", "floor", "floor with a window's start-up"]
pattern(i) = i == 3 ? "floor with a window.s start-up" : names[i]
match(kind, scene, i) = sprintf("<awk -F, '$1 == \"%s\" && $2 == \"%s\" && $4 ~ /^%s$/' '%s'", \
                                kind, scene, pattern(i), summary)

set terminal svg size 960,640 font 'sans-serif,11' background 'white'
set style line 1 lc rgb '#c03020' lw 2 pt 7 ps 0.5
set style line 2 lc rgb '#2060a0' lw 2 pt 5 ps 0.5
set style line 3 lc rgb '#70a0d0' lw 2 pt 9 ps 0.5
set grid lc rgb '#d0d0d0'
set key top left

set output folder . '/growth.svg'
set multiplot layout 2,3
set logscale xy
set ylabel 'times the floor''s shortest run'
array scenes[5] = ["sections of the list", "bytes of the list", "bytes of the record", \
                   "log files in the folder", "bytes of the log file"]
do for [s = 1:5] {
  stats match('growth', scenes[s], 2) using 6 name 'F' nooutput
  set title scenes[s]
  plot for [i = 1:3] match('growth', scenes[s], i) using ($3 < 1 ? 1 : $3):($6 / F_min) \
    with linespoints ls i title names[i]
  set key off
}
unset logscale
set title 'retries in one window'
set xlabel 'retry'
set ylabel 'times the first fifty'
set yrange [0:*]
stats match('retry', 'retries in one window', 1) using 6 every ::0::0 name 'T' nooutput
stats match('retry', 'retries in one window', 1) using 9 every ::0::0 name 'M' nooutput
set key top left
plot match('retry', 'retries in one window', 1) using 3:($6 / T_min) with linespoints ls 1 title 'time of each', \
  '' using 3:($9 / M_min) with linespoints ls 2 title 'memory'
unset multiplot

set terminal svg size 800,360 font 'sans-serif,11' background 'white'
set output folder . '/scenes.svg'
set multiplot layout 1,3
set key off
unset xlabel
set style data histograms
set style fill solid 0.8 border -1
set boxwidth 0.8
set xtics rotate by -20
array shown[3] = ["silent check: 1 pack", "silent check: 100000 packs", "first painted sheet"]
do for [s = 1:3] {
  set title shown[s]
  set ylabel s == 1 ? 'time, the utility''s = 1' : ''
  stats match('scene', shown[s], 1) using 6 name 'U' nooutput
  set xrange [0.4:3.6]
  plot for [i = 1:3] match('scene', shown[s], i) using (i):($6 / U_min):xtic(i == 3 ? 'with start-up' : names[i]) \
    with boxes ls i
}
unset multiplot
