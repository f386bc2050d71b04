# Which device a command runs on. Sourced after common.sh; needs the probe and the layers built.

# The interpreting driver under the simulated GPU.
simulated_driver=/usr/lib/oclgrind/liboclgrind-rt-icd.so

device=own # or as_gpu, or simulated
no_device=1 # the status if there is none
accounts=no # yes: the command itself says what became of its work on a driver that does not come up
keep_denormals=
wanted_platform='' wanted_device=''
wants_list=no
device_options='--simulated | --keep-denormals | [--as-gpu] [--platform TEXT] [--device TEXT|INDEX] | --list-devices'
device_help="
Which device:
  --simulated               The simulated GPU, which has no denormals
  --keep-denormals          The same with denormals
  --as-gpu                  Processors and accelerators are presented as GPUs
  --list-devices            Name the devices of all drivers, and say which a run can use
  --platform TEXT           The first device of the platform whose name has this in it
  --device TEXT|INDEX       The device whose name has this in it, or that of this index in the list
Without one of these: the first GPU of the first installed driver that has one, else the simulated GPU.
OCL_ICD_VENDORS names another driver: a library, an .icd file or a folder of such files.
"

# device_option WORD...: whether the first of them is an option that chooses a device. If so, it is noted
# for pick_device, and $taken is how many words it takes.
device_option() {
  taken=1
  case $1 in
    --simulated) set_device simulated ;;
    --keep-denormals) set_device simulated && keep_denormals=1 ;;
    --as-gpu) set_device as_gpu ;;
    --list-devices) wants_list=yes ;;
    --platform=?* | --device=?*)
      local wanted=wanted_${1%%=*}
      wanted=${wanted/--/}
      [[ -z ${!wanted} ]] || fail "${1%%=*} stands more than once" 2
      printf -v "$wanted" %s "${1#*=}"
      ;;
    --platform | --device)
      device_option "$1=${2-}"
      taken=2
      ;;
    --platform= | --device=) fail "${1%=} needs a text" 2 ;;
    *) return 1 ;;
  esac
  [[ $device != simulated || -z $wanted_platform$wanted_device ]] ||
    fail "the simulated GPU is one device: --platform and --device choose among a driver's own" 2
}

# set_device CHOICE: at most one of those that exclude each other.
set_device() {
  [[ $device == own ]] || fail "--simulated, --keep-denormals and --as-gpu exclude each other" 2
  device=$1
}

# pick_device: leaves in the environment what makes the chosen device the suite's own choice, and says
# on standard error which it is. From then on the command must not leave the project's root.
pick_device() {
  if [[ $wants_list == yes ]]; then
    list_devices
    exit
  elif [[ $device == simulated ]]; then
    use_simulated_gpu
    return
  fi
  [[ $device == own ]] || stand_before as_gpu
  if [[ -n $wanted_platform$wanted_device ]]; then
    find_wanted
    say "on $answer"
  elif find_gpu; then
    [[ -z $answer ]] || say "on $answer"
  elif [[ $device == own ]]; then
    use_simulated_gpu
  else
    fail "no installed OpenCL driver has a device" "$no_device"
  fi
}

# find_gpu: makes the first driver that has a GPU device the loader's only one, with what it says of itself
# in $answer: of those that the caller's OCL_ICD_VENDORS names, or else of those in OCL_ICD_FILENAMES, as
# the loader of some vendors takes them, and of the installed ones. Fails if none of the latter has one;
# ends the command if none of the former has.
find_gpu() {
  local asked drivers driver status
  list_drivers
  for driver in "${drivers[@]}"; do
    status=0
    take_driver "$driver"
    ask || status=$?
    case $status in
      0) return ;;
      2) fail "$answer" "$no_device" ;;
      3)
        answers_nothing "$driver"
        [[ $driver != "$asked" ]] || return 0
        ;;
    esac
  done
  [[ -z $asked ]] || fail "no GPU device behind OCL_ICD_VENDORS=$asked" "$no_device"
  return 1
}

# list_drivers: those that find_gpu asks go into $drivers, and into $asked what OCL_ICD_VENDORS names.
list_drivers() {
  asked=${OCL_ICD_VENDORS-} drivers=()
  # A path is relative to where the caller was.
  [[ $asked != [!/]* || ! -e $OLDPWD/$asked ]] || asked=$OLDPWD/$asked
  if [[ -n $asked && ! -d $asked ]]; then
    drivers=("$asked")
  else
    [[ -n $asked ]] || IFS=: read -ra drivers <<<"${OCL_ICD_FILENAMES-}"
    drivers+=("${asked:-${OPENCL_VENDOR_PATH:-/etc/OpenCL/vendors}}"/*.icd)
  fi
}

# answers_nothing DRIVER: says so, and ends the command if it is the one that the caller named and the
# command does not account for that itself. Then nothing is left in $answer.
answers_nothing() {
  if [[ $1 != "$asked" ]]; then
    say "the driver $1 $answer: going on without it"
  elif [[ $accounts == yes ]]; then
    say "the driver $1 $answer"
    answer=
  else
    fail "the driver $1 $answer"
  fi
}

# find_devices: every device of these drivers goes into $found, a line each: its driver, and what the
# probe says of it. Its place there is its index.
find_devices() {
  local driver status line
  found=()
  for driver in "${drivers[@]}"; do
    status=0
    # Without layers: they may show other devices than there are.
    take_driver "$driver"
    OPENCL_LAYERS='' ask all || status=$?
    case $status in
      0) while IFS= read -r line; do found+=("$driver"$'\t'"$line"); done <<<"$answer" ;;
      3) answers_nothing "$driver" ;;
    esac
  done
}

# read_device INDEX: the fields of its line.
read_device() {
  IFS=$'\t' read -r driver platform_index device_index type platform name version driver_version obstacle \
    <<<"${found[$1]}"
}

# list_devices: on standard output, a line each.
list_devices() {
  local asked drivers found index format='%-5s  %-28.28s  %-36.36s  %-11s  %-14.14s  %-16.16s  %s\n'
  local driver platform_index device_index type platform name version driver_version obstacle
  list_drivers
  find_devices
  # shellcheck disable=SC2059
  printf "$format" index platform device type version driver 'can be used'
  for index in "${!found[@]}"; do
    read_device "$index"
    # shellcheck disable=SC2059
    printf "$format" "$index" "$platform" "$name" "$type" "$version" "$driver_version" "$(usable)"
  done
}

# usable: whether a run can use the device that was read, and why not.
usable() {
  case $obstacle in
    -) echo yes ;;
    'not a GPU') echo 'with --as-gpu' ;;
    *) echo "no: $obstacle" ;;
  esac
}

# find_wanted: makes the device that --platform and --device name the only one, with what it says of
# itself in $answer.
find_wanted() {
  local asked drivers found index fitting=() platforms='' candidates='' why=''
  local driver platform_index device_index type platform name version driver_version obstacle
  list_drivers
  find_devices
  local wanted="${wanted_platform:+--platform '$wanted_platform'}${wanted_device:+ --device '$wanted_device'}"
  wanted=${wanted# }
  for index in "${!found[@]}"; do
    read_device "$index"
    [[ -z $wanted_platform || ${platform,,} == *"${wanted_platform,,}"* ]] || continue
    # As text: the shell's numbers begin anew behind 2^63.
    if [[ $wanted_device == +([0-9]) ]]; then
      [[ $wanted_device =~ ^0*(0|[1-9][0-9]*)$ && ${BASH_REMATCH[1]} == "$index" ]] || continue
    else
      [[ ${name,,} == *"${wanted_device,,}"* ]] || continue
    fi
    if [[ $obstacle != - && ($obstacle != 'not a GPU' || $device != as_gpu) ]]; then
      why="$index ($name) cannot be used: "
      [[ $obstacle == 'not a GPU' ]] && why+="it is no GPU, which --as-gpu would present it as" || why+=$obstacle
      continue
    fi
    # Of a platform alone, the first device is meant, as the suite takes it.
    [[ -n $wanted_device || $platforms != *"|$driver:$platform_index|"* ]] || continue
    platforms+="|$driver:$platform_index|"
    fitting+=("$index")
    candidates+="${candidates:+, }$index ($name on $platform)"
  done
  case ${#fitting[@]} in
    0) fail "no device fits $wanted${why:+: $why} ('--list-devices' names them)" "$no_device" ;;
    1) ;;
    *) fail "$wanted fits ${#fitting[@]} devices: $candidates" 2 ;;
  esac
  read_device "${fitting[0]}"
  take_driver "$driver"
  export ONE_DEVICE=$platform_index:$device_index
  stand_before one_device
  local status=0
  ask || status=$?
  [[ $status -eq 0 ]] || fail "device ${fitting[0]} cannot be used: $answer" "$no_device"
}

# take_driver DRIVER: a library, or an .icd file whose first line names one. Debian's loader takes either
# from the one variable, others a library from the other.
take_driver() {
  export OCL_ICD_VENDORS=$1 OCL_ICD_FILENAMES=$1
  [[ $1 != *.icd ]] || read -r OCL_ICD_FILENAMES 2>/dev/null <"$1" || true
}

use_simulated_gpu() {
  local status=0
  need oclgrind
  take_driver "$simulated_driver"
  export SIMULATED_GPU_KEEP_DENORMALS=$keep_denormals
  # The driver's own settings can make it write where the suite writes.
  unset "${!OCLGRIND_@}"
  stand_before simulated_gpu
  ask || status=$?
  case $status in
    1) answer+=" with its driver $simulated_driver" ;;
    3) answer="its driver $simulated_driver $answer" ;;
  esac
  [[ $status -eq 0 ]] || fail "the simulated GPU cannot start: $answer" "$no_device"
  say "on the simulated GPU, denormals $([[ -n $keep_denormals ]] && echo kept || echo flushed)"
}

# break_compiler FAULT: gives the chosen device, the simulated GPU if none is, a compiler with that fault.
# "help" lists the faults and ends the command.
break_compiler() {
  local name meaning
  if [[ $1 == help ]]; then
    build/layers/list_faults
    exit
  fi
  while read -r name meaning && [[ $name != "$1" ]]; do :; done < <(build/layers/list_faults)
  [[ -n $meaning ]] || fail "no fault is called '$1' ('--broken help' lists them)" 2
  say "a compiler with a fault: $meaning"
  [[ $device != own ]] || device=simulated
  export BROKEN_COMPILER=$1
  stand_before broken_compiler
}

# stand_before LAYER: puts one of the project's layers before the driver. Layers that the caller has named
# stay in place, nearer to the program. The path is relative because the loader splits at each colon.
stand_before() {
  export OPENCL_LAYERS=build/layers/lib$1.so${OPENCL_LAYERS:+:$OPENCL_LAYERS}
}

# ask [all]: what the probe answers goes into $answer. 3 stands for a driver that lets it give none.
ask() {
  local status=0
  answer=$(build/probe "$@") || status=$?
  [[ -n $answer ]] || status=3 answer='ends the process that loads it'
  return "$status"
} 2>/dev/null
