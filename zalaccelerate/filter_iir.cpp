#include <algorithm>
#include <new>

#include "engine/core/dispatch.h"
#include "engine/primitives/iir/iir_spec.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/filter.h"

namespace zalaccelerate::filter {

namespace dispatch = zal::engine::dispatch;
using zal::engine::IIRSpec;
using zalaccelerate::engine_arguments::Length;

namespace {

// The engine's entry points for one element type.
template <class T>
struct Engine {
  zal::engine::IIRGetSize& get_size;
  zal::engine::IIRGetSize& get_size_biquad;
  zal::engine::IIRInit<T>& init;
  zal::engine::IIRInit<T>& init_biquad;
  zal::engine::IIRFilter<T>& run;
  zal::engine::IIRGetDlyLine<T>& get_dly_line;
  zal::engine::IIRSetDlyLine<T>& set_dly_line;
};

const Engine<float> kFloat{dispatch::IIRGetSizeF32,   dispatch::IIRGetSizeBiQuadF32,
                           dispatch::IIRInitF32,      dispatch::IIRInitBiQuadF32,
                           dispatch::IIRF32,          dispatch::IIRGetDlyLineF32,
                           dispatch::IIRSetDlyLineF32};
const Engine<double> kDouble{dispatch::IIRGetSizeF64,   dispatch::IIRGetSizeBiQuadF64,
                             dispatch::IIRInitF64,      dispatch::IIRInitBiQuadF64,
                             dispatch::IIRF64,          dispatch::IIRGetDlyLineF64,
                             dispatch::IIRSetDlyLineF64};

const Engine<float>& EngineOf(const float*) {
  return kFloat;
}
const Engine<double>& EngineOf(const double*) {
  return kDouble;
}

IIRSpec* SpecOf(const void* engine_state) {
  return static_cast<IIRSpec*>(const_cast<void*>(engine_state));
}

template <class State>
void Undo(State* record) {
  dispatch::Free(record->dlyScratch);
  dispatch::Free(record->workBuffer);
  delete record;
}

// numBiquads of 0 builds a direct form of `order`; otherwise a cascade.
template <class State, class T>
void Build(State** state, const T* taps, unsigned int order, unsigned int num_biquads,
           const T* dly_line) {
  const Engine<T>& engine = EngineOf(taps);
  const bool cascade = num_biquads != 0;
  int buf_size = 0;
  const EngStatus sized = cascade ? engine.get_size_biquad(Length(num_biquads), &buf_size)
                                  : engine.get_size(Length(order), &buf_size);
  if (sized != engStsNoErr) return;
  auto* record = new (std::nothrow) State{};
  if (!record) return;
  record->bufSize = static_cast<std::uint32_t>(buf_size);
  record->order = order;
  record->numBiquads = num_biquads;
  record->dlyScratchBytes =
      static_cast<std::uint32_t>((cascade ? std::max(num_biquads, 1u) * 2 : order) * sizeof(T));
  if (buf_size != 0) record->workBuffer = static_cast<unsigned char*>(dispatch::Malloc(buf_size));
  if (cascade || order != 0) {
    record->dlyScratch =
        static_cast<unsigned char*>(dispatch::Malloc(static_cast<int>(record->dlyScratchBytes)));
  }
  if (!record->workBuffer || ((cascade || order != 0) && !record->dlyScratch)) {
    Undo(record);
    return;
  }
  auto** spec = reinterpret_cast<IIRSpec**>(&record->engineState);
  const EngStatus built =
      cascade ? engine.init_biquad(spec, taps, Length(num_biquads), dly_line, record->workBuffer)
              : engine.init(spec, taps, Length(order), dly_line, record->workBuffer);
  if (built != engStsNoErr) {
    Undo(record);
    return;
  }
  *state = record;
}

template <class State, class T>
T Filter(T x, State* state) {
  T input = x;
  T output = 0;
  if (state) EngineOf(&input).run(&input, &output, 1, SpecOf(state->engineState));
  return output;
}

template <class State, class T>
void Filter(unsigned int len, const T* src, T* dst, State* state) {
  if (!state) return;
  EngineOf(src).run(src, dst, Length(len), SpecOf(state->engineState));
}

template <class State, class T>
void SetTaps(State* state, const T* taps) {
  if (!state) return;
  const Engine<T>& engine = EngineOf(taps);
  IIRSpec* spec = SpecOf(state->engineState);
  T* scratch = reinterpret_cast<T*>(state->dlyScratch);
  // A direct form of order 0 has no delay line to carry.
  if (scratch) engine.get_dly_line(spec, scratch);
  auto** handle = reinterpret_cast<IIRSpec**>(&state->engineState);
  if (state->numBiquads != 0) {
    engine.init_biquad(handle, taps, Length(state->numBiquads), scratch, state->workBuffer);
  } else {
    engine.init(handle, taps, Length(state->order), scratch, state->workBuffer);
  }
}

template <class State, class T>
void GetDlyLine(const State* state, T* dly_line) {
  if (!state) return;
  EngineOf(dly_line).get_dly_line(SpecOf(state->engineState), dly_line);
}

template <class State, class T>
void SetDlyLine(State* state, const T* dly_line) {
  if (!state) return;
  EngineOf(dly_line).set_dly_line(SpecOf(state->engineState), dly_line);
}

}  // namespace

#define ZAL_IIR_WRAPPERS(State, T)                                                               \
  void IIRInit(State** state, const T* taps, unsigned int order, const T* dlyLine) {             \
    Build(state, taps, order, 0, dlyLine);                                                       \
  }                                                                                              \
  void IIRInit_BiQuad(State** state, const T* taps, unsigned int numBiquads, const T* dlyLine) { \
    if (numBiquads == 0) return;                                                                 \
    Build(state, taps, 2, numBiquads, dlyLine);                                                  \
  }                                                                                              \
  T IIR(T x, State* state) {                                                                     \
    return Filter(x, state);                                                                     \
  }                                                                                              \
  void IIR(unsigned int len, const T* src, T* dst, State* state) {                               \
    Filter(len, src, dst, state);                                                                \
  }                                                                                              \
  void IIR_InPlace(unsigned int len, T* srcDst, State* state) {                                  \
    Filter(len, static_cast<const T*>(srcDst), srcDst, state);                                   \
  }                                                                                              \
  void IIRSetTaps(State* state, const T* taps) {                                                 \
    SetTaps(state, taps);                                                                        \
  }                                                                                              \
  void IIRGetDlyLine(const State* state, T* dlyLine) {                                           \
    GetDlyLine(state, dlyLine);                                                                  \
  }                                                                                              \
  void IIRSetDlyLine(State* state, const T* dlyLine) {                                           \
    SetDlyLine(state, dlyLine);                                                                  \
  }                                                                                              \
  void IIRFree(State* state) {                                                                   \
    if (!state) return;                                                                          \
    Undo(state);                                                                                 \
  }

ZAL_IIR_WRAPPERS(IIRState_Float, float)
ZAL_IIR_WRAPPERS(IIRState_Double, double)

}  // namespace zalaccelerate::filter
