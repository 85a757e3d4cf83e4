# The curves of summary.csv as a table: how many times larger the input is at the end of a curve than at its start, and
# how many times longer (median time) and larger (memory) the run.
$1 != "growth" && $1 != "retry" { next }
{ key = $2 SUBSEP $4 }
!(key in first) { first[key] = $8; low[key] = $3; low_memory[key] = $11; order[++n] = key }
{ last[key] = $8; high[key] = $3; high_memory[key] = $11 }

END {
  print "| input | from, to | program | median time | memory |"
  print "|---|---|---|---:|---:|"
  for (i = 1; i <= n; ++i) {
    key = order[i]
    split(key, part, SUBSEP)
    printf "| %s | %d, %d | %s | × %.2f | × %.2f |\n", part[1], low[key], high[key], part[2],
      last[key] / first[key], high_memory[key] / low_memory[key]
  }
}
