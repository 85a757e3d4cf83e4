# Counts the requests of each run in the Wine server's trace: awk -F, -f requests.awk RUNS TRACE
# RUNS are the rows of "tavrel_bench requests" in the order of their runs. Prints kind,scene,x,program,requests for
# the second run of each program and scene; the first one fills the caches.
FNR == NR {
  sub(/\r$/, "")
  row[++rows] = $1 FS $2 FS $3 FS $4
  counts[rows] = $5 == 1
  thread[rows] = $6 ""  # a text, since 00e4 would count as a number
  next
}
# A traced line is "THREAD: REQUEST( …" for a request and "THREAD: REQUEST() = …" for its reply.
{ split($0, part, ": "); id = part[1] "" }
part[2] ~ /^init_first_thread\(\) = / && id == thread[run + 1] { run_of[id] = ++run }
# The threads of a run are its first thread and those that its threads create.
part[2] ~ /^new_thread\(\) = 0 / {
  match($0, /tid=[0-9a-f]+/)
  run_of[substr($0, RSTART + 4, RLENGTH - 4)] = run_of[id]
}
part[2] ~ /^[a-z_0-9]+\( / { ++requests[run_of[id]] }

END {
  if (run != rows) {
    print "the trace holds " run + 0 " of " rows + 0 " runs" >"/dev/stderr"
    exit 1
  }
  for (i = 1; i <= rows; ++i) if (counts[i]) print row[i] FS requests[i]
}
