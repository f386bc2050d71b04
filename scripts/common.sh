# What the commands share. Sourced in the project's root, with the name of the command in $0.

# Nobody need listen on standard error, but what is opened next must not take its place.
[[ -e /dev/fd/2 ]] || exec 2>/dev/null

# What a test's or a driver's library would read, and a command here does not mean.
unset "${!GTEST_@}" TESTBRIDGE_TEST_ONLY SIMULATED_GPU_KEEP_DENORMALS

# say LINE: on standard error, which may be full.
say() {
  echo "${0##*/}: $1" >&2 || true
}

# fail LINE [STATUS]: says it, and ends with a status that is not zero.
fail() {
  say "$1"
  exit "${2:-1}"
}

# say_building: once.
say_building() {
  [[ -n ${building-} ]] || say building
  building=1
}

# usage OPTIONS: one line, and the status of bad use.
usage() {
  echo "usage: $1" >&2 || true
  exit 2
}

# The Debian packages that the build needs. Its tools may have come from elsewhere.
packages=(ocl-icd-opencl-dev opencl-c-headers opencl-clhpp-headers)
for tool in g++ cmake ninja:ninja-build; do
  command -v "${tool%:*}" >/dev/null || packages+=("${tool#*:}")
done

# What ./triage needs beside those.
triage_packages=(libcli11-dev libfmt-dev libpugixml-dev libuv1-dev nlohmann-json3-dev)

# Debian packages that were needed and could not be looked for, for want of dpkg.
unknown=()

# need PACKAGE...: installs those Debian packages that are missing.
need() {
  local package missing=() as_root=()
  if ! command -v dpkg-query >/dev/null; then
    unknown+=("$@")
    return
  fi
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
  say "installing ${missing[*]}"
  local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600)
  local install=("${apt[@]}" install -y --no-install-recommends "${missing[@]}")
  # The package lists may be missing or stale, which only a failing install shows. One command at a
  # time: the lock is the checkout's own, for there may be nothing else here that can be opened.
  (
    one_at_a_time
    "${install[@]}" || { "${apt[@]}" update && "${install[@]}"; }
  ) 9<. >/dev/null 2>&1 ||
    fail "these Debian packages are missing and could not be installed: ${missing[*]}"
}

# one_at_a_time: waits for what is open as 9. Where there is no flock, or the file system cannot lock,
# the caller goes on.
one_at_a_time() {
  ! command -v flock >/dev/null || flock 9 || true
}

# build_suite PROGRAM TARGET...: makes them up to date in build, one command at a time. Where nothing can
# be written, what was built before has to do.
build_suite() {
  if [[ -x build/$1 && ! -w build ]]; then
    local made=build/.made newer
    [[ -e $made ]] || made=build/$1
    newer=$(find . -path ./build -prune -o -newer "$made" \( -name '*.cpp' -o -name '*.h' -o -name \
      CMakeLists.txt \) -print -quit)
    [[ -z $newer ]] || fail "cannot write in $PWD/build, and what is there is older than $newer"
    return
  fi
  take_build
  need "${packages[@]}"
  # A tree from before the program's packages were there does not know it.
  if ! is_own build || ! grep -qsw "$1" build/build.ninja build/Makefile; then configure; fi
  touch build/.making
  watched cmake --build build --target "$@"
  mv build/.making build/.made
  leave_build
}

# take_build: waits until no other command builds here. leave_build: lets the next one.
take_build() {
  # The build systems take these for syntax of theirs, or lose track of files.
  [[ $PWD != *[$'"#$&\'*;<>?[\\]^`|'[:cntrl:]]* ]] ||
    fail "cannot build in a path that has a control character or one of \" # \$ & ' * ; < > ? [ \\ ] ^ \` |"
  { mkdir -p build && [[ -w build ]]; } 2>/dev/null || fail "cannot write in $PWD/build"
  ! grep -qs '^CMAKE_GENERATOR:INTERNAL=.*Multi-Config' build/CMakeCache.txt ||
    fail "build is a tree for several configurations: remove it, or give it another name"
  exec 9>>build/.lock
  one_at_a_time
}
leave_build() {
  exec 9>&-
}

# is_own TREE: whether CMake made the build tree for this checkout. A copy or a move brings trees along
# that belong to the place where they came from.
is_own() {
  local home
  home=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$1/CMakeCache.txt" 2>/dev/null) || return
  [[ $home -ef . ]]
}

# forget TREE: what CMake and the build system know of a tree, so that everything is made anew.
forget() {
  rm -rf "$1"/{CMakeCache.txt,CMakeFiles,build.ninja,Makefile,.ninja_deps,.ninja_log}
}

# configure OPTION...: makes or refreshes the build tree.
configure() {
  local generator=()
  if ! is_own build || [[ ! -e build/build.ninja && ! -e build/Makefile ]]; then
    # The tree is new, another checkout's, or left half-made by a command that was stopped.
    say_building
    forget build
    ! command -v ninja >/dev/null || generator=(-G Ninja)
  fi
  quietly cmake -S . -B build "${generator[@]}" "$@"
}

# quietly COMMAND...: its output on standard error, but only if it fails.
quietly() {
  local output
  output=$("$@" 2>&1) || failed "$output" "$@"
}

# watched COMMAND...: quietly, for a command that builds: says so if it has something to do.
watched() {
  local line output=''
  # The last line is the command's status.
  while IFS= read -r line; do
    output+=$line$'\n'
    [[ $line != *@(Building|Linking|Generating)* ]] || say_building
  done < <(
    status=0
    "$@" 2>&1 || status=$?
    printf '\n%s' "$status"
  )
  [[ $line == 0 ]] || failed "$output" "$@"
}

# failed OUTPUT COMMAND...: what a command wrote, and which one it was.
failed() {
  printf '%s\n' "$1" >&2 || true
  shift
  fail "'$*' failed${unknown[*]:+; on Debian these packages would have been installed: ${unknown[*]}}"
}
