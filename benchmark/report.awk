# Reads the files of several runs, and prints the medians: calls and time by entry point, the time
# also as a share of the run, and the suite's own part.

{
  name[$1]
  calls[$1] = $2
  values[$1] = values[$1] " " $3
}

function median(list,   count, sorted, i, j, swap) {
  count = split(list, sorted, " ")
  for (i = 2; i <= count; ++i)
    for (j = i; j > 1 && sorted[j - 1] + 0 > sorted[j] + 0; --j) {
      swap = sorted[j]; sorted[j] = sorted[j - 1]; sorted[j - 1] = swap
    }
  return sorted[int((count + 1) / 2)]
}

END {
  wall = median(values["wall"])
  process = median(values["process"])
  own = median(values["own"])
  printf "%-28s %8s %10s %7s\n", "entry point", "calls", "ms", "share"
  sort = "sort -k 3 -n -r"
  for (entry in name)
    if (entry ~ /^cl/ && calls[entry] > 0)
      printf "%-28s %8d %10.3f %6.2f%%\n", entry, calls[entry], median(values[entry]) / 1e6,
          100 * median(values[entry]) / wall | sort
  close(sort)
  printf "%-28s %8s %10.3f %6.2f%%\n", "wall time", "", wall / 1e6, 100
  printf "%-28s %8s %10.3f\n", "processor time", "", process / 1e6
  printf "%-28s %8s %10.3f %6.2f%% of it\n", "of it the suite's own", "", own / 1e6,
      100 * own / process
  printf "%-28s %8s %10.2f\n", "largest resident set, MiB", "", median(values["memory"]) / 1048576
}
