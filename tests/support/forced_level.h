// Test runs at a forced level: the test main reads ZAL_TEST_LEVEL (0..5) and puts that level in
// force through the engine's own selection, or exits with kSkipExitCode when this processor
// cannot run it. Without the variable the engine selects naturally at the first call.
#pragma once

namespace zal::test {

inline constexpr int kSkipExitCode = 77;

// The forced level, or -1 in a natural run.
int ForcedLevel();

// Puts the forced level back after a test that ran the engine's own selection.
void RestoreForcedLevel();

}  // namespace zal::test
