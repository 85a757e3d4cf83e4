# The scenes of summary.csv as a table of ratios: each program over the floor, and over the floor that has a
# window's start-up, in the median and the shortest time, processor time and memory.
$1 != "scene" { next }
!($2 in seen) { seen[$2]; scene[++scenes] = $2 }
!($4 in known) { known[$4]; program[++programs] = $4 }
{ time[$2, $4] = $6; shortest[$2, $4] = $7; processor[$2, $4] = $8; memory[$2, $4] = $9 }

function ratio(above, below) { return below > 0 ? sprintf("%.2f", above / below) : "-" }

END {
  floors[1] = "floor"
  floors[2] = "floor with a window's start-up"
  print "| scene | program | over | time | shortest time | processor time | memory |"
  print "|---|---|---|---:|---:|---:|---:|"
  for (s = 1; s <= scenes; ++s)
    for (p = 1; p <= programs; ++p)
      for (f = 1; f <= 2; ++f) {
        a = scene[s] SUBSEP program[p]
        b = scene[s] SUBSEP floors[f]
        if (program[p] ~ /^floor/ || !(a in time) || !(b in time)) continue
        printf "| %s | %s | %s | %s | %s | %s | %s |\n", scene[s], program[p], floors[f],
          ratio(time[a], time[b]), ratio(shortest[a], shortest[b]),
          ratio(processor[a], processor[b]), ratio(memory[a], memory[b])
      }
}
