#!/usr/bin/env bash
# Runs the processor probe on emulated processors and checks the level the engine chooses on
# each. A probe killed by SIGILL ran an instruction above the emulated processor; a wrong level
# or a failed check in the probe fails too. Exits 77 (skipped) without qemu-x86_64.
#
# Usage: emulated_levels.sh <path to zal_cpu_probe, or empty when it is not built>
#
# What qemu-user 7.2 can emulate, and why the models below are what they are:
# - qemu-user plays the OS: it sets CR4.OSXSAVE and the SSE/YMM bits of XCR0 exactly when the
#   model has XSAVE. Every AVX model therefore reaches its level with no extra flags, and
#   ",-xsave" yields a processor whose CPUID lists AVX while the OS saves no YMM state; there
#   qemu raises #UD on any VEX instruction, the very case XGETBV detection exists for.
# - TCG executes no EVEX instruction and strips the AVX-512 CPUID bits from every model (with a
#   warning), so level 5 cannot be emulated; Skylake-Server checks that the engine stays at 4.
# - qemu64 lists SSE3 but not SSSE3; ",-pni" takes SSE3 away for bare SSE2.
set -uo pipefail

if [[ $# -ne 1 ]]; then
  echo "usage: $0 <zal_cpu_probe>" >&2
  exit 2
fi
probe=$1

if [[ -z $probe ]]; then
  echo "the probe is not built (ZAL_BUILD_TOOLS=OFF): skipped"
  exit 77
fi
if ! command -v qemu-x86_64 >/dev/null; then
  echo "qemu-x86_64 is not installed: skipped"
  exit 77
fi

# model, expected level, what the model tells apart
readonly cases=(
  "qemu64,-pni      0  SSE2 without SSE3"
  "qemu64           0  SSE3 without SSSE3"
  "core2duo         1  SSSE3"
  "Penryn           1  SSE4.1 without SSE4.2"
  "Nehalem          2  SSE4.2"
  "SandyBridge      3  AVX"
  "SandyBridge,-xsave 2  AVX in CPUID, YMM state not enabled"
  "Haswell          4  AVX2 with FMA, BMI1, BMI2"
  "Haswell,-fma     3  AVX2 without FMA"
  "Haswell,-xsave   2  AVX2 in CPUID, YMM state not enabled"
  "Skylake-Server   4  AVX-512 stripped by the emulator"
)

# qemu dumps core for a guest killed by a signal; the verdict says enough.
ulimit -c 0
errors=$(mktemp)
trap 'rm -f "$errors"' EXIT

passed=0
failed=0
printf '%-20s %-8s %-6s %-11s %s\n' model expected got result features
for entry in "${cases[@]}"; do
  read -r model expected note <<<"$entry"
  output=$(timeout 120 qemu-x86_64 -cpu "$model" "$probe" 2>"$errors")
  status=$?
  got=-
  if [[ $output =~ ^level=([0-9]+)\ features=(0x[0-9A-F]+) ]]; then
    got=${BASH_REMATCH[1]}
    features=${BASH_REMATCH[2]}
  else
    features=-
  fi

  case $status in
    0) verdict=ok ;;
    132) verdict=SIGILL ;;
    139) verdict=SIGSEGV ;;
    124) verdict=timeout ;;
    *) verdict="exit $status" ;;
  esac
  if [[ $verdict == ok && $got != "$expected" ]]; then
    verdict="wrong level"
  fi

  printf '%-20s %-8s %-6s %-11s %s (%s)\n' "$model" "$expected" "$got" "$verdict" "$features" "$note"
  if [[ $verdict == ok ]]; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    # qemu warns about every model feature TCG lacks; only the probe's own words matter here.
    grep -v "TCG doesn't support requested feature" "$errors" | sed 's/^/    /'
  fi
done

echo "emulated: $passed passed, $failed failed"
[[ $failed -eq 0 ]]
