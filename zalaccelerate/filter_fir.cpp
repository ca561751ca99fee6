// The FIR filter fronts: the state record's allocations and the delay-line bookkeeping around the
// engine's direct-form FIR, reached through the dispatch.
#include <new>

#include "engine/core/dispatch.h"
#include "engine/primitives/fir/fir_spec.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/filter.h"

namespace zalaccelerate::filter {
namespace {

namespace dispatch = zal::engine::dispatch;
using engine_arguments::Length;

// The sample slot: five floats, the first the single-sample input.
constexpr unsigned int kSampleSlotLen = 5;

void Release(FIRState_Float* record) {
  if (record->sampleSlot) utility::Free(record->sampleSlot);
  if (record->delayLine) utility::Free(record->delayLine);
  if (record->spec) utility::Free(record->spec);
  if (record->workBuffer) utility::Free(record->workBuffer);
  delete record;
}

}  // namespace

void FIRInit(FIRState_Float** state, const float* taps, unsigned int tapsLen,
             const float* dlyLine) {
  *state = nullptr;
  int spec_size = 0;
  int work_size = 0;
  if (dispatch::FIRGetSizeF32(Length(tapsLen), zal::engine::kFIRDataTypeF32, &spec_size,
                              &work_size) != engStsNoErr) {
    return;
  }
  auto* record =
      new (std::nothrow) FIRState_Float{nullptr, nullptr, nullptr, tapsLen, tapsLen - 1, nullptr};
  if (!record) return;
  record->workBuffer = utility::Malloc_Byte(static_cast<unsigned int>(work_size));
  record->spec = utility::Malloc_Byte(static_cast<unsigned int>(spec_size));
  record->delayLine = utility::Malloc_Float(tapsLen - 1);
  utility::Zero(tapsLen - 1, record->delayLine);
  record->sampleSlot = utility::Malloc_Float(kSampleSlotLen);
  utility::Zero(kSampleSlotLen, record->sampleSlot);
  if (!record->spec || dispatch::FIRInitF32(taps, Length(tapsLen), zal::engine::kFIRAlgorithmDirect,
                                            record->spec) != engStsNoErr) {
    Release(record);
    return;
  }
  record->delayLineLen = tapsLen - 1;
  if (dlyLine && record->delayLineLen != 0) {
    utility::Copy(record->delayLineLen, dlyLine, record->delayLine);
  }
  *state = record;
}

// A record whose sample slot could not be had (its allocation is used as it came) gives 0, the
// output the engine leaves when it refuses.
float FIR(FIRState_Float* state, float x) {
  if (!state->sampleSlot) return 0.0f;
  state->sampleSlot[0] = x;
  float y = 0.0f;
  dispatch::FIRF32(state->sampleSlot, &y, 1, state->spec, state->delayLine, nullptr,
                   state->workBuffer);
  return y;
}

void FIR(FIRState_Float* state, unsigned int len, const float* src, float* dst) {
  dispatch::FIRF32(src, dst, Length(len), state->spec, state->delayLine, state->delayLine,
                   state->workBuffer);
}

void FIRSetTaps(FIRState_Float* state, const float* taps) {
  dispatch::FIRInitF32(taps, Length(state->tapsLen), zal::engine::kFIRAlgorithmDirect, state->spec);
}

void FIRSetDlyLine(FIRState_Float* state, const float* dlyLine) {
  if (state->delayLineLen == 0) return;
  if (dlyLine) {
    utility::Copy(state->delayLineLen, dlyLine, state->delayLine);
  } else {
    utility::Zero(state->delayLineLen, state->delayLine);
  }
}

void FIRGetDlyLine(const FIRState_Float* state, float* dlyLine) {
  if (state->delayLineLen == 0) return;
  utility::Copy(state->delayLineLen, state->delayLine, dlyLine);
}

unsigned int FIRGetWorkBufferSize(unsigned int tapsLen) {
  int size = 0;
  if (dispatch::FIRGenLowpassGetBufferSize(Length(tapsLen), &size) != engStsNoErr) return 0;
  return static_cast<unsigned int>(size);
}

void FIRFree(FIRState_Float* state) {
  if (state) Release(state);
}

}  // namespace zalaccelerate::filter
