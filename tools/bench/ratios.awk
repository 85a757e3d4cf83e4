# The scenes of summary.csv as two tables: what each program takes, with the spread of its times, and the utility and
# other programs over the floor (the sheet: over the floor with a window's start-up).
$1 != "scene" { next }
!($2 in seen) { seen[$2]; scene[++scenes] = $2 }
!($4 in known) { known[$4]; program[++programs] = $4 }
{
  key = $2 SUBSEP $4
  shortest[key] = $6; lower[key] = $7; median[key] = $8; upper[key] = $9
  processor[key] = $10; memory[key] = $11; requests[key] = $12
}

function ratio(above, below) { return above > 0 && below > 0 ? sprintf("%.2f", above / below) : "-" }

END {
  print "| scene | program | shortest, ms | lower quartile | median | upper quartile | processor, ms | memory, KiB | requests |"
  print "|---|---|---:|---:|---:|---:|---:|---:|---:|"
  for (s = 1; s <= scenes; ++s)
    for (p = 1; p <= programs; ++p) {
      key = scene[s] SUBSEP program[p]
      if (key in median)
        printf "| %s | %s | %.1f | %.1f | %.1f | %.1f | %.1f | %d | %s |\n", scene[s], program[p], shortest[key],
          lower[key], median[key], upper[key], processor[key], memory[key], requests[key]
    }
  print ""
  print "| scene | program | over | median time | shortest time | processor time | memory | requests |"
  print "|---|---|---|---:|---:|---:|---:|---:|"
  for (s = 1; s <= scenes; ++s)
    for (p = 1; p <= programs; ++p) {
      floor = (scene[s], "floor") in median ? "floor" : "floor with a window's start-up"
      a = scene[s] SUBSEP program[p]
      b = scene[s] SUBSEP floor
      if (program[p] ~ /^floor/ || !(a in median) || !(b in median)) continue
      printf "| %s | %s | %s | %s | %s | %s | %s | %s |\n", scene[s], program[p], floor,
        ratio(median[a], median[b]), ratio(shortest[a], shortest[b]), ratio(processor[a], processor[b]),
        ratio(memory[a], memory[b]), ratio(requests[a], requests[b])
    }
}
