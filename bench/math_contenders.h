// The math function benchmark: what each contender implements. Each contender lives in its own
// translation unit, built with its own flags, and exposes one table of runners per element type.
#pragma once

#include <array>

namespace zal::bench::math {

enum Member {
  kAbs,
  kSqr,
  kSqrt,
  kInverse,
  kRound,
  kExp,
  kLn,
  kLnPrec24,
  kLnPrec21,
  kLnPrec11,
  kPow,
  kPowPrec26,
  kInversePrec26,
  kMemberCount,
};

// dst[i] = f(a[i]) or f(a[i], b[i]) for i < n. Null: the contender lacks the member.
template <class T>
using Runner = void (*)(const T* a, const T* b, T* dst, int n);
template <class T>
using Runners = std::array<Runner<T>, kMemberCount>;

struct Contender {
  const char* name;   // in benchmark names: <type>.<member>/<name>/n:<n>
  const char* about;  // what it is, for the report
  Runners<float> f32;
  Runners<double> f64;
};

// Null where the processor lacks what the contender was built for.
const Contender* Ours();
const Contender* Sleef();
const Contender* LibmLoop();
const Contender* LibmvecLoop();
const Contender* Volk();

}  // namespace zal::bench::math
