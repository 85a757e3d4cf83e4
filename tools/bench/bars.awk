# The bars of scenes.svg: position, program's number, median, lower and upper quartile, each over the floor's median
# (the sheet: over the median of the floor with a window's start-up).
$1 != "scene" { next }
{ median[$2, $4] = $8; lower[$2, $4] = $7; upper[$2, $4] = $9 }

END {
  scenes = split("silent check: 1 pack|silent check: 100000 packs|silent check: 30 MiB|first painted sheet", scene, "|")
  programs = split("utility|floor|floor with a window's start-up", program, "|")
  for (s = 1; s <= scenes; ++s) {
    base = median[scene[s], (scene[s], "floor") in median ? "floor" : program[3]]
    ++position
    for (p = 1; p <= programs; ++p) {
      key = scene[s] SUBSEP program[p]
      if (!(key in median)) continue
      print position++, p, median[key] / base, lower[key] / base, upper[key] / base
    }
  }
}
