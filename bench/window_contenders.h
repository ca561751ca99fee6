// The window contenders of bench/window_bench.cpp: each gives one runner per member, or null
// where it lacks the member.
#pragma once

#include <array>

namespace zal::bench::window {

// The members, in the order of the runner arrays. Mul (src times a second vector) is the
// library's elementwise product, the yardstick of the window targets.
enum Member { kBartlett, kHann, kHamming, kBlackman, kKaiser, kMul, kMemberCount };

// dst = window(src), alpha the Blackman or Kaiser parameter; Mul takes dst as its second operand.
template <class T>
using Runner = void (*)(const T* src, T* dst, int n, T alpha);
template <class T>
using Runners = std::array<Runner<T>, kMemberCount>;

struct Contender {
  const char* name;
  const char* about;
  Runners<float> f32;
  Runners<double> f64;
};

const Contender* Ours();
const Contender* PlainLoops();

}  // namespace zal::bench::window
