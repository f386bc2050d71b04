# Which device a command runs on. Sourced after common.sh; needs first_gpu and the layers built.

# The interpreting driver under the simulated GPU.
simulated_driver=/usr/lib/oclgrind/liboclgrind-rt-icd.so

device=own # or as_gpu, or simulated
no_device=1 # the status if there is none
keep_denormals=
device_options='--simulated | --keep-denormals | --as-gpu'

# device_option OPTION: whether the option chooses a device. If so, it is noted for pick_device.
device_option() {
  case $1 in
    --simulated) device=simulated ;;
    --keep-denormals) device=simulated keep_denormals=1 ;;
    --as-gpu) device=as_gpu ;;
    *) return 1 ;;
  esac
}

# pick_device: leaves in the environment what makes the chosen device the suite's own choice, and says
# on standard error which it is. From then on the command must not leave the project's root.
pick_device() {
  if [[ $device == simulated ]]; then
    use_simulated_gpu
    return
  fi
  [[ $device == own ]] || stand_before as_gpu
  if find_gpu; then
    say "on $answer"
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
  local asked=${OCL_ICD_VENDORS-} drivers=() driver status
  # A path is relative to where the caller was.
  [[ $asked != [!/]* || ! -e $OLDPWD/$asked ]] || asked=$OLDPWD/$asked
  if [[ -n $asked && ! -d $asked ]]; then
    drivers=("$asked")
  else
    [[ -n $asked ]] || IFS=: read -ra drivers <<<"${OCL_ICD_FILENAMES-}"
    drivers+=("${asked:-${OPENCL_VENDOR_PATH:-/etc/OpenCL/vendors}}"/*.icd)
  fi
  for driver in "${drivers[@]}"; do
    status=0
    take_driver "$driver"
    ask || status=$?
    case $status in
      0) return ;;
      2) fail "$answer" "$no_device" ;;
      3)
        [[ $driver != "$asked" ]] || fail "the driver $driver $answer"
        say "the driver $driver $answer: going on without it"
        ;;
    esac
  done
  [[ -z $asked ]] || fail "no GPU device behind OCL_ICD_VENDORS=$asked" "$no_device"
  return 1
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

# ask: what first_gpu answers goes into $answer. 3 stands for a driver that lets it give none.
ask() {
  local status=0
  answer=$(build/first_gpu) || status=$?
  [[ -n $answer ]] || status=3 answer='ends the process that loads it'
  return "$status"
} 2>/dev/null
