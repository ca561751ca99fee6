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
