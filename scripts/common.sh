# What the commands share. Sourced in the project's root, with the name of the command in $0.

# The interpreting driver under the simulated GPU.
simulated_driver=/usr/lib/oclgrind/liboclgrind-rt-icd.so

# One line on standard error, and a status that is not zero.
fail() {
  echo "${0##*/}: $1" >&2
  exit "${2:-1}"
}

# need PACKAGE...: installs those Debian packages that are missing, without a word if that works.
need() {
  local package missing=() as_root=()
  local installed
  installed=" $(dpkg-query -W -f '${db:Status-Status}:${Package} ' "$@" 2>/dev/null || true) "
  for package; do
    [[ $installed == *" installed:$package "* ]] || missing+=("$package")
  done
  [[ ${#missing[@]} -gt 0 ]] || return 0
  [[ $EUID -eq 0 ]] || as_root=(sudo)
  if ! { command -v apt-get && command -v "${as_root[@]:-env}"; } >/dev/null; then
    fail "these Debian packages are missing and cannot be installed here: ${missing[*]}"
  fi
  local install=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive
    apt-get install -y --no-install-recommends "${missing[@]}")
  # The package lists may be missing or stale, which only a failing install shows.
  "${install[@]}" >/dev/null 2>&1 || { "${as_root[@]}" apt-get update && "${install[@]}"; } >/dev/null 2>&1 ||
    fail "these Debian packages are missing and could not be installed: ${missing[*]}"
}

# configure: makes or refreshes the build tree, without a word if that works.
configure() {
  mkdir -p build
  local generator=()
  [[ -e build/CMakeCache.txt ]] || generator=(-G Ninja)
  quietly cmake -S . -B build "${generator[@]}" "$@"
}

# quietly COMMAND...: its output on standard error, but only if it fails.
quietly() {
  local log
  log=$(mktemp)
  if ! "$@" >"$log" 2>&1; then
    cat "$log" >&2
    rm -f "$log"
    fail "'$*' failed"
  fi
  rm -f "$log"
}

# on_simulated_gpu COMMAND...: becomes the command, with the simulated GPU as its only platform.
# Layers that the caller has named stay in place, nearer to the program.
on_simulated_gpu() {
  export OCL_ICD_VENDORS=$simulated_driver
  export OPENCL_LAYERS=$PWD/build/layers/libsimulated_gpu.so${OPENCL_LAYERS:+:$OPENCL_LAYERS}
  exec "$@"
}
