# Shared by the scripts: where things are, and installing what a fresh Debian machine lacks.
set -euo pipefail

ZAL_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
ZAL_JOBS=${ZAL_JOBS:-$(nproc)}

# ensure_packages PKG...: apt-get installs the packages that are not installed yet.
ensure_packages() {
  local missing=()
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" ||
      missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "installing: ${missing[*]}"
  local sudo=""
  [ "$(id -u)" -eq 0 ] || sudo=sudo
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends \
    "${missing[@]}" >/dev/null
}

ZAL_BUILD_PACKAGES=(g++ cmake ninja-build binutils git)
# The math family: MPFR for its accuracy tests, SLEEF as a benchmark peer.
ZAL_MATH_PACKAGES=(libmpfr-dev libsleef-dev)
# The transforms' test oracle and benchmark peer.
ZAL_FFT_PACKAGES=(libfftw3-dev)
# The filters' benchmark peers (VOLK comes with the arithmetic peers).
ZAL_FILTER_PACKAGES=(libliquid-dev libsoxr-dev libsamplerate0-dev)
# The matrix product: Eigen, compiled into the library's kernels (headers only).
ZAL_MATRIX_PACKAGES=(libeigen3-dev)

# The libFuzzer targets, built by a tree configured with -DZAL_BUILD_FUZZ=ON.
ZAL_FUZZ_TARGETS=(utility transform filter convolution)

# run_fuzz_targets DIR SECONDS [SEED]: runs each fuzz target of build tree DIR for SECONDS from a
# copy of its seed corpus (the checked-in corpus is never written), with libFuzzer's random seed
# SEED (default 0: a new one each run). A broken promise, a sanitizer report
# or a leak stops that target with the input saved under DIR/fuzz-artifacts; the other targets
# still run, and the function fails.
run_fuzz_targets() {
  local dir=$1 seconds=$2 seed=${3:-0}
  local artifacts="$dir/fuzz-artifacts" failed=()
  mkdir -p "$artifacts"
  for target in "${ZAL_FUZZ_TARGETS[@]}"; do
    local corpus log="$artifacts/$target.log"
    corpus=$(mktemp -d)
    cp "$ZAL_ROOT/tests/fuzz/corpus/$target/"* "$corpus/"
    echo "-- fuzzing $target for ${seconds}s"
    if LSAN_OPTIONS="suppressions=$ZAL_ROOT/tests/fuzz/lsan.supp" \
      "$dir/tests/fuzz/zal_${target}_fuzz" -max_total_time="$seconds" -seed="$seed" -rss_limit_mb=4096 \
      -timeout=60 -print_final_stats=1 -artifact_prefix="$artifacts/$target-" "$corpus" \
      >"$log" 2>&1; then
      grep -E 'stat::number_of_executed_units' "$log"
    else
      grep -E -A2 'broken promise|ERROR|runtime error' "$log" | head -20
      failed+=("$target")
    fi
    rm -rf "$corpus"
  done
  [ ${#failed[@]} -eq 0 ] && return 0
  echo "fuzz targets failed: ${failed[*]} (logs and inputs in $artifacts)"
  return 1
}
