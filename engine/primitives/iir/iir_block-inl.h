// The recursive filter's run, written once for a vector type V of T: the levels' registers, or a
// one-lane stand-in in the portable variant. The caller's namespace provides Load, Store,
// Broadcast, MulAdd, operator+, operator* and HasNonFinite for V. Included inside a level
// namespace's anonymous namespace, after iir_spec.h.

template <class T>
struct IIRSystem {
  T* data;
  IIRSystemLayout at;
  int padded;

  const T* Response(int k) const { return data + at.response + k * kIIRBlock; }
  const T* FromState(int j) const { return data + at.from_state + j * kIIRBlock; }
  const T* Transition(int j) const { return data + at.transition + j * padded; }
  const T* FromInput(int k) const { return data + at.from_input + k * padded; }
  const T* TransitionLow(int j) const { return data + at.transition_low + j * padded; }
  const T* FromInputLow(int k) const { return data + at.from_input_low + k * padded; }
  const T* InputRow(int i) const { return data + at.input_rows + i * kIIRBlock; }
  const T* InputRowLow(int i) const { return data + at.input_rows_low + i * kIIRBlock; }
  T* State() const { return data + at.state; }
  T* Pending() const { return data + at.pending; }
};

template <class T>
IIRSystem<T> SystemOf(IIRSpec* spec, int i) {
  T* first = reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(spec) + spec->data_offset);
  return {first + static_cast<std::ptrdiff_t>(i) * spec->system_stride, IIRLayout(spec->states),
          spec->padded_states};
}

// sum over k < count of column(k) * x[k], in four chains (k mod 4) joined pairwise: a block's
// products would otherwise wait on each other. Whatever `count`, each term lands in the same chain
// in the same order, so a lane whose later columns are exact zeros gets the same bits.
template <class V, class T, class Column>
ZAL_INLINE V SumOfColumns(const Column& column, const T* x, int count) {
  const V zero = Broadcast(T(0));
  V s0 = zero, s1 = zero, s2 = zero, s3 = zero;
  int k = 0;
  for (; k + 4 <= count; k += 4) {
    s0 = MulAdd(Load(column(k)), Broadcast(x[k]), s0);
    s1 = MulAdd(Load(column(k + 1)), Broadcast(x[k + 1]), s1);
    s2 = MulAdd(Load(column(k + 2)), Broadcast(x[k + 2]), s2);
    s3 = MulAdd(Load(column(k + 3)), Broadcast(x[k + 3]), s3);
  }
  if (k < count) s0 = MulAdd(Load(column(k)), Broadcast(x[k]), s0);
  if (k + 1 < count) s1 = MulAdd(Load(column(k + 1)), Broadcast(x[k + 1]), s1);
  if (k + 2 < count) s2 = MulAdd(Load(column(k + 2)), Broadcast(x[k + 2]), s2);
  return (s0 + s1) + (s2 + s3);
}

// The state after the block x[0 .. kIIRBlock): the inputs' part first, off the recursion's path,
// then the old state's. The state recirculates every block, so its matrices' rounding would
// move the filter's poles: they enter as high and low parts, the small low products summed
// apart and added last.
template <class V, class T, class Count>
ZAL_INLINE void AdvanceState(const IIRSystem<T>& system, Count n, const T* x, T* next) {
  constexpr int kLanes = V::kLanes;
  for (int w = 0; w < n; w += kLanes) {
    V sum = SumOfColumns<V>([&](int k) { return system.FromInput(k) + w; }, x, kIIRBlock);
    V low = SumOfColumns<V>([&](int k) { return system.FromInputLow(k) + w; }, x, kIIRBlock);
    for (int j = 0; j < n; ++j) {
      const V state = Broadcast(system.State()[j]);
      sum = MulAdd(Load(system.Transition(j) + w), state, sum);
      low = MulAdd(Load(system.TransitionLow(j) + w), state, low);
    }
    Store(next + w, sum + low);
  }
}

// The same for a second-order section, whose two states would fill a fraction of a register: each
// state's inputs' part as one dot product of a row with the block, the state's part in scalars.
template <class V, class T>
ZAL_INLINE void AdvanceState(const IIRSystem<T>& system, std::integral_constant<int, 2>, const T* x,
                             T* next) {
  constexpr int kLanes = V::kLanes;
  const T* state = system.State();
  for (int i = 0; i < 2; ++i) {
    V sum = Broadcast(T(0));
    for (int v = 0; v < kIIRBlock; v += kLanes) {
      const V input = Load(x + v);
      sum = MulAdd(Load(system.InputRow(i) + v), input,
                   MulAdd(Load(system.InputRowLow(i) + v), input, sum));
    }
    T total = FoldHalves(sum);
    for (int j = 0; j < 2; ++j) {
      total = total + (system.Transition(j)[i] * state[j] + system.TransitionLow(j)[i] * state[j]);
    }
    next[i] = total;
  }
}

// Outputs vector v of the block: inputs k < `inputs` (each output sees those up to its own
// index), then the block-start state. An output's lane gets the same operations in the same order
// whether the later inputs are there or not: their response at an earlier output is an exact 0.
template <class V, class T, class Count>
ZAL_INLINE V OutputsAt(const IIRSystem<T>& system, Count n, const T* x, int v, int inputs) {
  const int lane = v * V::kLanes;
  V sum = SumOfColumns<V>([&](int k) { return system.Response(k) + lane; }, x, inputs);
  for (int j = 0; j < n; ++j) {
    sum = MulAdd(Load(system.FromState(j) + lane), Broadcast(system.State()[j]), sum);
  }
  return sum;
}

// Output `at` of the block whose inputs x[0 .. at] are known.
template <class V, class T, class Count>
ZAL_INLINE T OutputOf(const IIRSystem<T>& system, Count n, const T* x, int at) {
  constexpr int kLanes = V::kLanes;
  T lanes[kLanes];
  Store(lanes, OutputsAt<V>(system, n, x, at / kLanes, at + 1));
  return lanes[at % kLanes];
}

template <class T>
ZAL_INLINE void CopyState(const IIRSystem<T>& system, const T* next, int n) {
  for (int j = 0; j < n; ++j) system.State()[j] = next[j];
}

// A whole block from x to y (which may be x). A non-finite input would turn the exact zeros of
// the earlier outputs' lanes into NaN, so such a block runs output by output.
template <class V, class T, class Count>
ZAL_INLINE void RunBlock(const IIRSystem<T>& system, Count n, const T* x, T* y) {
  constexpr int kLanes = V::kLanes;
  constexpr int kVectors = kIIRBlock / kLanes;
  T next[kIIRMaxOrder + kIIRStatePad];
  V probe = Load(x) * Broadcast(T(0));
  for (int v = 1; v < kVectors; ++v) probe = probe + Load(x + v * kLanes) * Broadcast(T(0));
  AdvanceState<V>(system, n, x, next);
  if (HasNonFinite(probe)) {
    T inputs[kIIRBlock];
    for (int k = 0; k < kIIRBlock; ++k) inputs[k] = x[k];
    for (int t = 0; t < kIIRBlock; ++t) y[t] = OutputOf<V>(system, n, inputs, t);
  } else {
    V out[kVectors];
    for (int v = 0; v < kVectors; ++v) out[v] = OutputsAt<V>(system, n, x, v, (v + 1) * kLanes);
    for (int v = 0; v < kVectors; ++v) Store(y + v * kLanes, out[v]);
  }
  CopyState(system, next, n);
}

// One sample through every system at the spec's phase; a completed block advances the states.
template <class V, class T, class Count>
ZAL_INLINE T RunSample(IIRSpec* spec, Count n, T x) {
  const int phase = spec->phase;
  for (int i = 0; i < spec->systems; ++i) {
    const IIRSystem<T> system = SystemOf<T>(spec, i);
    system.Pending()[phase] = x;
    x = OutputOf<V>(system, n, system.Pending(), phase);
  }
  if (phase + 1 < kIIRBlock) {
    spec->phase = phase + 1;
    return x;
  }
  T next[kIIRMaxOrder + kIIRStatePad];
  for (int i = 0; i < spec->systems; ++i) {
    const IIRSystem<T> system = SystemOf<T>(spec, i);
    AdvanceState<V>(system, n, system.Pending(), next);
    CopyState(system, next, n);
  }
  spec->phase = 0;
  return x;
}

// The held matrices stay in registers only if every index into them is a constant. Clang unrolls
// these constant-count loops by itself.
#if defined(__GNUC__) && !defined(__clang__)
#define ZAL_IIR_UNROLL _Pragma("GCC unroll 16")
#else
#define ZAL_IIR_UNROLL
#endif

// A section's block matrices held in registers over a run of blocks. The impulse-response
// matrix is Toeplitz: column k's lanes from v * L are its column 0 shifted by v * L - k, so its
// used columns (k < (v + 1) L) are only kIIRBlock distinct vectors, one per shift. With 32
// registers they all stay there with the zero-input responses and the sums; with 16 some spill,
// which still beats reloading every section's matrices per block. The output sums step by four
// columns, so the lanes must come in fours.
template <class V, class T>
constexpr bool kIIRSectionInRegisters = sizeof(T) * V::kLanes >= 32 && V::kLanes % 4 == 0;

template <class V, class T>
struct SectionInRegisters {
  static constexpr int kLanes = V::kLanes;
  static constexpr int kVectors = kIIRBlock / kLanes;
  // shifted[v * L - k + L - 1] = Response(k) + v * L; the columns k < L of every v give all shifts.
  V shifted[kIIRBlock];
  V from_state[2][kVectors];

  explicit SectionInRegisters(const IIRSystem<T>& system) {
    ZAL_IIR_UNROLL
    for (int v = 0; v < kVectors; ++v) {
      ZAL_IIR_UNROLL
      for (int k = 0; k < kLanes; ++k) {
        shifted[v * kLanes - k + kLanes - 1] = Load(system.Response(k) + v * kLanes);
      }
      from_state[0][v] = Load(system.FromState(0) + v * kLanes);
      from_state[1][v] = Load(system.FromState(1) + v * kLanes);
    }
  }
  V Column(int v, int k) const { return shifted[v * kLanes - k + kLanes - 1]; }
};

// RunBlock for a section whose state s0, s1 lives in registers: the same operations in the same
// order, so the same bits.
template <class V, class T>
ZAL_INLINE void RunSectionBlock(const IIRSystem<T>& system, const SectionInRegisters<V, T>& held,
                                T& s0, T& s1, const T* x, T* y) {
  constexpr int kLanes = V::kLanes;
  constexpr int kVectors = kIIRBlock / kLanes;
  V input[kVectors];
  ZAL_IIR_UNROLL
  for (int v = 0; v < kVectors; ++v) input[v] = Load(x + v * kLanes);
  V probe = input[0] * Broadcast(T(0));
  ZAL_IIR_UNROLL
  for (int v = 1; v < kVectors; ++v) probe = probe + input[v] * Broadcast(T(0));
  if (HasNonFinite(probe)) {
    system.State()[0] = s0;
    system.State()[1] = s1;
    RunBlock<V>(system, std::integral_constant<int, 2>{}, x, y);
    s0 = system.State()[0];
    s1 = system.State()[1];
    return;
  }
  const auto advance = [&](int i) {
    V sum = Broadcast(T(0));
    ZAL_IIR_UNROLL
    for (int v = 0; v < kVectors; ++v) {
      sum = MulAdd(Load(system.InputRow(i) + v * kLanes), input[v],
                   MulAdd(Load(system.InputRowLow(i) + v * kLanes), input[v], sum));
    }
    T total = FoldHalves(sum);
    total = total + (system.Transition(0)[i] * s0 + system.TransitionLow(0)[i] * s0);
    total = total + (system.Transition(1)[i] * s1 + system.TransitionLow(1)[i] * s1);
    return total;
  };
  // Both states side by side keep the next state out of memory, which shortens the recursion's
  // path at avx512; with 16 registers the extra pressure costs more than it saves (measured).
  T next[2];
  if constexpr (sizeof(T) * kLanes == 64) {
    next[0] = advance(0);
    next[1] = advance(1);
  } else {
    for (int i = 0; i < 2; ++i) next[i] = advance(i);
  }
  V out[kVectors];
  const V state0 = Broadcast(s0);
  const V state1 = Broadcast(s1);
  ZAL_IIR_UNROLL
  for (int v = 0; v < kVectors; ++v) {
    const V zero = Broadcast(T(0));
    V chain0 = zero, chain1 = zero, chain2 = zero, chain3 = zero;
    ZAL_IIR_UNROLL
    for (int k = 0; k < (v + 1) * kLanes; k += 4) {
      chain0 = MulAdd(held.Column(v, k), Broadcast(x[k]), chain0);
      chain1 = MulAdd(held.Column(v, k + 1), Broadcast(x[k + 1]), chain1);
      chain2 = MulAdd(held.Column(v, k + 2), Broadcast(x[k + 2]), chain2);
      chain3 = MulAdd(held.Column(v, k + 3), Broadcast(x[k + 3]), chain3);
    }
    V sum = (chain0 + chain1) + (chain2 + chain3);
    sum = MulAdd(held.from_state[0][v], state0, sum);
    out[v] = MulAdd(held.from_state[1][v], state1, sum);
  }
  ZAL_IIR_UNROLL
  for (int v = 0; v < kVectors; ++v) Store(y + v * kLanes, out[v]);
  s0 = next[0];
  s1 = next[1];
}

// Whole blocks of a cascade section by section: each section's matrices are loaded once per
// stretch instead of once per block. Every section still sees the blocks in order, so the order
// of the sections' work does not change a bit.
template <class V, class T>
ZAL_INLINE void RunSections(IIRSpec* spec, const T* src, T* dst, std::ptrdiff_t at, int blocks) {
  for (int s = 0; s < spec->systems; ++s) {
    const IIRSystem<T> system = SystemOf<T>(spec, s);
    const SectionInRegisters<V, T> held(system);
    T s0 = system.State()[0];
    T s1 = system.State()[1];
    const T* x = (s == 0 ? src : dst) + at;
    T* y = dst + at;
    for (int b = 0; b < blocks; ++b) {
      RunSectionBlock<V>(system, held, s0, s1, x + b * kIIRBlock, y + b * kIIRBlock);
    }
    system.State()[0] = s0;
    system.State()[1] = s1;
  }
}

// Whole blocks run as a wavefront over a stretch that stays in the first-level cache: at step t,
// system s filters block t - s, which system s - 1 finished at step t - 1. Each system's state
// is a chain from block to block; the wavefront puts the chains of all systems side by side
// instead of one after another.
constexpr std::ptrdiff_t kIIRStretch = 32 * kIIRBlock;

template <class V, class T, class Count>
ZAL_INLINE void RunStream(IIRSpec* spec, Count n, const T* src, T* dst, std::ptrdiff_t len) {
  std::ptrdiff_t i = 0;
  for (; i < len && spec->phase != 0; ++i) dst[i] = RunSample<V>(spec, n, src[i]);
  const std::ptrdiff_t whole = i + (len - i) / kIIRBlock * kIIRBlock;
  const int systems = spec->systems;
  const IIRSystem<T> first = SystemOf<T>(spec, 0);
  for (; i < whole; i += kIIRStretch) {
    const std::ptrdiff_t end = whole - i < kIIRStretch ? whole : i + kIIRStretch;
    const int blocks = static_cast<int>((end - i) / kIIRBlock);
    if constexpr (std::is_same_v<Count, std::integral_constant<int, 2>> &&
                  kIIRSectionInRegisters<V, T>) {
      RunSections<V>(spec, src, dst, i, blocks);
      continue;
    }
    for (int step = 0; step < blocks + systems - 1; ++step) {
      const int last = step < systems - 1 ? step : systems - 1;
      for (int s = step < blocks ? 0 : step - blocks + 1; s <= last; ++s) {
        IIRSystem<T> system = first;
        system.data += static_cast<std::ptrdiff_t>(s) * spec->system_stride;
        const std::ptrdiff_t at = i + static_cast<std::ptrdiff_t>(step - s) * kIIRBlock;
        RunBlock<V>(system, n, (s == 0 ? src : dst) + at, dst + at);
      }
    }
  }
  i = whole;
  for (; i < len; ++i) dst[i] = RunSample<V>(spec, n, src[i]);
}

template <class V, class T>
EngStatus RunFilter(const T* src, T* dst, int len, IIRSpec* spec, int level) {
  if (!src || !dst || !spec) return engStsNullPtrErr;
  if (len <= 0) return engStsSizeErr;
  if (spec->level != level || spec->element_bytes != static_cast<int>(sizeof(T))) {
    return engStsContextMatchErr;
  }
  // Flush-to-zero for the call only: a decaying recursion would otherwise crawl through
  // subnormal numbers at many times the cost of normal ones.
  const unsigned int caller = _mm_getcsr();
  _mm_setcsr(caller | spec->mxcsr_bits);
  if (spec->states == 2) {
    RunStream<V>(spec, std::integral_constant<int, 2>{}, src, dst, len);
  } else {
    RunStream<V>(spec, spec->states, src, dst, len);
  }
  _mm_setcsr(caller);
  return engStsNoErr;
}
