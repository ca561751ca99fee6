#!/usr/bin/env bash
# Runs the processor probe on emulated processors and checks the level the engine chooses on
# each. A probe killed by SIGILL ran an instruction above the emulated processor; a wrong level
# or a failed check in the probe fails too. Exits 77 (skipped) without qemu-x86_64.
#
# Usage: emulated_levels.sh <path to zal_cpu_probe, or empty when it is not built>
#
# What qemu-user 7.2 can emulate, and why the processors below are what they are:
# - Each is the emulator's baseline x86-64 model with instruction-set extensions added or taken
#   away one by one, so a case differs from the one before it by what it tells apart.
# - qemu-user plays the OS: it sets CR4.OSXSAVE and the SSE/YMM bits of XCR0 exactly when the
#   processor has XSAVE. Every AVX case therefore reaches its level with no extra flags, and
#   leaving out "+xsave" yields a processor whose CPUID lists AVX while the OS saves no YMM state;
#   there qemu raises #UD on any VEX instruction, the very case XGETBV detection exists for.
# - TCG executes no EVEX instruction and strips the AVX-512 CPUID bits (with a warning), so level
#   5 cannot be emulated; the last case checks that the engine stays at 4.
# - The baseline lists SSE3 but not SSSE3; "-pni" takes SSE3 away for bare SSE2.
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

readonly sse42=qemu64,+ssse3,+sse4.1,+sse4.2,+popcnt
readonly avx2=$sse42,+xsave,+avx,+avx2,+fma,+bmi1,+bmi2

# processor, expected level, what the processor tells apart
readonly cases=(
  "qemu64,-pni            0  SSE2 without SSE3"
  "qemu64                 0  SSE3 without SSSE3"
  "qemu64,+ssse3          1  SSSE3"
  "qemu64,+ssse3,+sse4.1  1  SSE4.1 without SSE4.2"
  "$sse42                 2  SSE4.2"
  "$sse42,+xsave,+avx     3  AVX"
  "$sse42,+avx            2  AVX in CPUID, YMM state not enabled"
  "$avx2                  4  AVX2 with FMA, BMI1, BMI2"
  "${avx2/,+fma/}         3  AVX2 without FMA"
  "${avx2/+xsave,/}       2  AVX2 in CPUID, YMM state not enabled"
  "$avx2,+avx512f,+avx512cd,+avx512bw,+avx512dq,+avx512vl 4  AVX-512 stripped by the emulator"
)

# qemu dumps core for a guest killed by a signal; the verdict says enough.
ulimit -c 0
errors=$(mktemp)
trap 'rm -f "$errors"' EXIT

passed=0
failed=0
printf '%-40s %-8s %-6s %-11s %s\n' processor expected got result features
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

  printf '%-40s %-8s %-6s %-11s %s\n' "$note" "$expected" "$got" "$verdict" "$features"
  if [[ $verdict == ok ]]; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    # qemu warns about every requested feature TCG lacks; only the probe's own words matter here.
    echo "    -cpu $model"
    grep -v "TCG doesn't support requested feature" "$errors" | sed 's/^/    /'
  fi
done

echo "emulated: $passed passed, $failed failed"
[[ $failed -eq 0 ]]
