# The curves of summary.csv as a table: how much longer and larger a run is at the largest input than at the
# smallest (the shortest run of each), and the exponent of what it takes longer, between the last two sizes. An input that makes a run less
# than a quarter longer has none: it would be one of the noise.
$1 != "growth" && $1 != "retry" { next }
{ key = $2 SUBSEP $4 }
!(key in first) { first[key] = $7; low[key] = $3; small[key] = $9; order[++n] = key }
{ before[key] = last[key]; x_before[key] = x[key]; last[key] = $7; x[key] = $3; large[key] = $9 }

END {
  print "| input | from, to | program | time | memory | exponent of the time |"
  print "|---|---|---|---:|---:|---:|"
  for (i = 1; i <= n; ++i) {
    key = order[i]
    split(key, part, SUBSEP)
    more = last[key] - first[key]
    less = before[key] - first[key]
    exponent = more < first[key] / 4 || less <= 0 ? "none" : \
      sprintf("%.2f", log(more / less) / log(x[key] / x_before[key]))
    printf "| %s | %d, %d | %s | × %.2f | × %.2f | %s |\n", part[1], low[key], x[key], part[2],
      last[key] / first[key], large[key] / small[key], exponent
  }
}
