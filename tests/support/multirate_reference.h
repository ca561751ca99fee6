// The multirate FIR filter from its definition, in long double: the inputs upsampled by zero
// insertion at the up phase, filtered with every tap (the zeros included), every down-th sample
// kept from the down phase.
#pragma once

#include <vector>

namespace zal::test {

struct MultirateCase {
  int up;
  int down;
  int taps_len;
  int up_phase;
  int down_phase;
};

// Outputs of `iters` iterations over `inputs`, after `history` (the inputs before them, oldest
// first; silence before that). `magnitude` receives, per output, the sum of |tap x input| over
// its terms: the scale of its rounding error.
template <class T>
std::vector<long double> MultirateReference(const MultirateCase& c, const std::vector<T>& taps,
                                            const std::vector<T>& history,
                                            const std::vector<T>& inputs, int iters,
                                            std::vector<long double>* magnitude);

// The number of products in one output of a polyphase filter: the taps of the longest phase.
inline int PhaseTaps(const MultirateCase& c) {
  return (c.taps_len + c.up - 1) / c.up;
}

}  // namespace zal::test
