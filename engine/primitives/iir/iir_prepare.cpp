// Building a recursive filter's spec, and its delay line in and out: baseline code shared by every
// level. The block matrices come from the taps normalised by a0 and simulated in long double, so
// each is the exact matrix rounded once to T.
#include <cstddef>
#include <cstdint>

#include "engine/core/fp_support.h"
#include "engine/primitives/iir/iir_spec.h"

namespace zal::engine {
namespace {

constexpr unsigned int kFlushToZero = 0x8000;
constexpr unsigned int kDenormalsAreZero = 0x40;
constexpr int kCacheLine = 64;

using Wide = long double;

int RoundUp(int value, int multiple) {
  return (value + multiple - 1) / multiple * multiple;
}

// A transposed direct form II of order n over exact normalised taps.
class WideSystem {
 public:
  template <class T>
  WideSystem(const T* taps, int n) : n_(n) {
    const Wide a0 = taps[n + 1];
    for (int k = 0; k <= n; ++k) {
      b_[k] = taps[k] / a0;
      a_[k] = taps[n + 1 + k] / a0;
    }
  }
  void Clear() {
    for (int j = 0; j < n_; ++j) s_[j] = 0;
  }
  void SetState(int j, Wide value) { s_[j] = value; }
  Wide State(int j) const { return s_[j]; }
  Wide Step(Wide x) {
    const Wide y = b_[0] * x + (n_ > 0 ? s_[0] : 0);
    for (int j = 0; j < n_; ++j) {
      const Wide next = j + 1 < n_ ? s_[j + 1] : 0;
      s_[j] = b_[j + 1] * x - a_[j + 1] * y + next;
    }
    return y;
  }

 private:
  int n_;
  Wide b_[kIIRMaxOrder + 1];
  Wide a_[kIIRMaxOrder + 1];
  Wide s_[kIIRMaxOrder] = {};
};

template <class T>
T* SystemAt(IIRSpec* spec, int i) {
  return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(spec) + spec->data_offset) +
         static_cast<std::ptrdiff_t>(i) * spec->system_stride;
}
template <class T>
const T* SystemAt(const IIRSpec* spec, int i) {
  return SystemAt<T>(const_cast<IIRSpec*>(spec), i);
}

// value as high + low, each in T.
template <class T>
void SetSplit(T* high, T* low, int at, Wide value) {
  high[at] = static_cast<T>(value);
  low[at] = static_cast<T>(value - high[at]);
}

template <class T>
void BuildSystem(T* data, const IIRSystemLayout& at, const T* taps, int n, int padded) {
  WideSystem system(taps, n);
  for (int k = 0; k < 2 * (n + 1); ++k) data[at.taps + k] = taps[k];
  for (int k = 0; k < kIIRBlock; ++k) {
    system.Clear();
    for (int t = 0; t < kIIRBlock; ++t) {
      const Wide y = system.Step(t == k ? 1 : 0);
      data[at.response + k * kIIRBlock + t] = static_cast<T>(y);
    }
    for (int i = 0; i < padded; ++i) {
      SetSplit(data + at.from_input, data + at.from_input_low, k * padded + i,
               i < n ? system.State(i) : 0);
    }
    for (int i = 0; i < n; ++i) {
      SetSplit(data + at.input_rows, data + at.input_rows_low, i * kIIRBlock + k, system.State(i));
    }
  }
  for (int j = 0; j < n; ++j) {
    system.Clear();
    system.SetState(j, 1);
    for (int t = 0; t < kIIRBlock; ++t) {
      data[at.from_state + j * kIIRBlock + t] = static_cast<T>(system.Step(0));
    }
    for (int i = 0; i < padded; ++i) {
      SetSplit(data + at.transition, data + at.transition_low, j * padded + i,
               i < n ? system.State(i) : 0);
    }
  }
}

template <class T>
EngStatus Prepare(IIRSpec** spec, int level, int systems, int states, const T* taps,
                  const T* dly_line, unsigned char* block) {
  if (!spec || !taps || !block) return engStsNullPtrErr;
  int size = 0;
  const EngStatus sized = IIRBlockSize(systems, states, sizeof(T), &size);
  if (sized != engStsNoErr) return sized;
  for (int i = 0; i < systems; ++i) {
    if (taps[i * 2 * (states + 1) + states + 1] == T(0)) return engStsDivByZeroErr;
  }
  const auto address = reinterpret_cast<std::uintptr_t>(block);
  const auto data = (address + sizeof(IIRSpec) + kCacheLine - 1) / kCacheLine * kCacheLine;
  const IIRSystemLayout at = IIRLayout(states);
  auto* prepared = reinterpret_cast<IIRSpec*>(block);
  *prepared = IIRSpec{level,
                      static_cast<int>(sizeof(T)),
                      systems,
                      states,
                      RoundUp(states, kIIRStatePad),
                      at.stride,
                      0,
                      kFlushToZero | (ProcessorHasDenormalsAreZero() ? kDenormalsAreZero : 0u),
                      static_cast<int>(data - address)};
  for (int i = 0; i < systems; ++i) {
    T* system = SystemAt<T>(prepared, i);
    BuildSystem(system, at, taps + i * 2 * (states + 1), states, prepared->padded_states);
    for (int j = 0; j < prepared->padded_states; ++j) {
      system[at.state + j] = dly_line && j < states ? dly_line[i * states + j] : T(0);
    }
    for (int k = 0; k < kIIRBlock; ++k) system[at.pending + k] = 0;
  }
  *spec = prepared;
  return engStsNoErr;
}

template <class T>
EngStatus ReadDelayLine(const IIRSpec* spec, T* dly_line) {
  if (!spec || !dly_line) return engStsNullPtrErr;
  if (spec->element_bytes != static_cast<int>(sizeof(T))) return engStsContextMatchErr;
  const IIRSystemLayout at = IIRLayout(spec->states);
  const int n = spec->states;
  for (int i = 0; i < spec->systems; ++i) {
    const T* data = SystemAt<T>(spec, i);
    WideSystem system(data + at.taps, n);
    for (int j = 0; j < n; ++j) system.SetState(j, data[at.state + j]);
    for (int k = 0; k < spec->phase; ++k) system.Step(data[at.pending + k]);
    for (int j = 0; j < n; ++j) dly_line[i * n + j] = static_cast<T>(system.State(j));
  }
  return engStsNoErr;
}

template <class T>
EngStatus WriteDelayLine(IIRSpec* spec, const T* dly_line) {
  if (!spec || !dly_line) return engStsNullPtrErr;
  if (spec->element_bytes != static_cast<int>(sizeof(T))) return engStsContextMatchErr;
  const IIRSystemLayout at = IIRLayout(spec->states);
  for (int i = 0; i < spec->systems; ++i) {
    T* data = SystemAt<T>(spec, i);
    for (int j = 0; j < spec->states; ++j) data[at.state + j] = dly_line[i * spec->states + j];
  }
  spec->phase = 0;
  return engStsNoErr;
}

}  // namespace

IIRSystemLayout IIRLayout(int states) {
  const int padded = RoundUp(states, kIIRStatePad);
  IIRSystemLayout at{};
  int next = 0;
  const auto take = [&next](int count) {
    const int start = next;
    next += RoundUp(count, kIIRStatePad);
    return start;
  };
  at.response = take(kIIRBlock * kIIRBlock);
  at.from_state = take(states * kIIRBlock);
  at.transition = take(states * padded);
  at.from_input = take(kIIRBlock * padded);
  at.transition_low = take(states * padded);
  at.from_input_low = take(kIIRBlock * padded);
  at.input_rows = take(states * kIIRBlock);
  at.input_rows_low = take(states * kIIRBlock);
  at.state = take(padded);
  at.pending = take(kIIRBlock);
  at.taps = take(2 * (states + 1));
  at.stride = next;
  return at;
}

EngStatus IIRBlockSize(int systems, int states, int element_bytes, int* size) {
  if (!size) return engStsNullPtrErr;
  if (systems < 1 || systems > kIIRMaxBiquads || states < 0 || states > kIIRMaxOrder) {
    return engStsIIROrderErr;
  }
  const long long bytes =
      static_cast<long long>(systems) * IIRLayout(states).stride * element_bytes +
      RoundUp(sizeof(IIRSpec), kCacheLine) + kCacheLine;
  *size = static_cast<int>(bytes);
  return engStsNoErr;
}

EngStatus IIRPrepare(IIRSpec** spec, int level, int systems, int states, const float* taps,
                     const float* dly_line, unsigned char* block) {
  return Prepare(spec, level, systems, states, taps, dly_line, block);
}
EngStatus IIRPrepare(IIRSpec** spec, int level, int systems, int states, const double* taps,
                     const double* dly_line, unsigned char* block) {
  return Prepare(spec, level, systems, states, taps, dly_line, block);
}
EngStatus IIRReadDelayLine(const IIRSpec* spec, float* dly_line) {
  return ReadDelayLine(spec, dly_line);
}
EngStatus IIRReadDelayLine(const IIRSpec* spec, double* dly_line) {
  return ReadDelayLine(spec, dly_line);
}
EngStatus IIRWriteDelayLine(IIRSpec* spec, const float* dly_line) {
  return WriteDelayLine(spec, dly_line);
}
EngStatus IIRWriteDelayLine(IIRSpec* spec, const double* dly_line) {
  return WriteDelayLine(spec, dly_line);
}

}  // namespace zal::engine
