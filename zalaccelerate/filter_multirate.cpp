#include <cstring>
#include <stdexcept>

#include "engine/core/dispatch.h"
#include "engine/primitives/multirate/multirate_spec.h"
#include "zalaccelerate/filter.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::filter {

namespace dispatch = zal::engine::dispatch;
using zal::engine::MRFSpec;

namespace {

template <class T>
struct Engine;
template <>
struct Engine<float> {
  static constexpr int kDataType = zal::engine::kMRFDataTypeF32;
  static constexpr auto& kInit = dispatch::MultirateFirInitF32;
  static constexpr auto& kFilter = dispatch::MultirateFirF32;
  static float* Allocate(unsigned int count) { return utility::Malloc_Float(count); }
};
template <>
struct Engine<double> {
  static constexpr int kDataType = zal::engine::kMRFDataTypeF64;
  static constexpr auto& kInit = dispatch::MultirateFirInitF64;
  static constexpr auto& kFilter = dispatch::MultirateFirF64;
  static double* Allocate(unsigned int count) { return utility::Malloc_Double(count); }
};

// The most elements the aligned allocator can hand out in one block.
template <class T>
constexpr std::size_t kMaxDelayLine = (0x7FFFFFFFu - 72u) / sizeof(T);

// The caller's elements in storage of at least `engine_length`, zeros after them. Throws as
// vector assignment does; nothing is left allocated when it throws.
template <class T>
MRFDelayLine<T> CopyDelayLine(const std::vector<T, zalcore::STLAllocator<T>>& source,
                              std::size_t engine_length) {
  if (source.empty()) return {nullptr, 0};
  if (source.size() > kMaxDelayLine<T>) throw std::length_error("vector too long");
  const std::size_t capacity = source.size() > engine_length ? source.size() : engine_length;
  if (capacity > kMaxDelayLine<T>) throw std::length_error("vector too long");
  T* data = Engine<T>::Allocate(static_cast<unsigned int>(capacity));
  if (!data) throw std::bad_alloc();
  std::memcpy(data, source.data(), source.size() * sizeof(T));
  std::memset(data + source.size(), 0, (capacity - source.size()) * sizeof(T));
  return {data, static_cast<std::uint32_t>(source.size())};
}

template <class State>
void Release(State* state) {
  dispatch::Free(state->workBuffer);
  state->workBuffer = nullptr;
  dispatch::Free(state->spec);
  state->spec = nullptr;
  utility::Free(state->dlyLine.data);
  delete state;
}

template <class T, class State>
void Init(State** state, unsigned int up_factor, unsigned int down_factor, const T* taps,
          unsigned int taps_len, const std::vector<T, zalcore::STLAllocator<T>>& dly_line,
          unsigned int up_phase, unsigned int down_phase) {
  const int up = static_cast<int>(up_factor);
  const int down = static_cast<int>(down_factor);
  const int length = static_cast<int>(taps_len);
  int spec_size = 0;
  int buf_size = 0;
  if (dispatch::MultirateFirGetSize(up, down, length, Engine<T>::kDataType, &spec_size,
                                    &buf_size) != engStsNoErr) {
    return;
  }
  const std::size_t engine_length =
      (taps_len + static_cast<std::size_t>(up_factor) - 1) / up_factor;
  auto* record = new State{nullptr, nullptr, {nullptr, 0}};
  try {
    record->dlyLine = CopyDelayLine(dly_line, engine_length);
  } catch (...) {
    delete record;
    throw;
  }
  if (spec_size != 0) record->spec = static_cast<unsigned char*>(dispatch::Malloc(spec_size));
  if (buf_size != 0) record->workBuffer = static_cast<unsigned char*>(dispatch::Malloc(buf_size));
  if (!record->workBuffer || !record->spec) {
    Release(record);
    return;
  }
  MRFSpec* handle = nullptr;
  if (Engine<T>::kInit(&handle, taps, length, up, static_cast<int>(up_phase), down,
                       static_cast<int>(down_phase), record->spec) != engStsNoErr) {
    Release(record);
    return;
  }
  *state = record;
}

// The prepared filter sits at the first 64-byte boundary of the prepared block.
const MRFSpec* Handle(unsigned char* spec) {
  const auto address = reinterpret_cast<std::uintptr_t>(spec);
  return reinterpret_cast<const MRFSpec*>((address + 63) & ~static_cast<std::uintptr_t>(63));
}

template <class T, class State>
void Process(const T* src, T* dst, unsigned int num_iters, State* state) {
  if (!state) return;
  T* line = state->dlyLine.size != 0 ? state->dlyLine.data : nullptr;
  Engine<T>::kFilter(src, dst, static_cast<int>(num_iters), Handle(state->spec), line, line,
                     state->workBuffer);
}

}  // namespace

void MRFInit(MRFState_Float** state, unsigned int upFactor, unsigned int downFactor,
             const float* taps, unsigned int tapsLen,
             const std::vector<float, zalcore::STLAllocator<float>>& dlyLine, unsigned int upPhase,
             unsigned int downPhase) {
  Init(state, upFactor, downFactor, taps, tapsLen, dlyLine, upPhase, downPhase);
}
void MRFInit(MRFState_Double** state, unsigned int upFactor, unsigned int downFactor,
             const double* taps, unsigned int tapsLen,
             const std::vector<double, zalcore::STLAllocator<double>>& dlyLine,
             unsigned int upPhase, unsigned int downPhase) {
  Init(state, upFactor, downFactor, taps, tapsLen, dlyLine, upPhase, downPhase);
}

void MRFProcess(const float* src, float* dst, unsigned int numIters, MRFState_Float* state) {
  Process(src, dst, numIters, state);
}
void MRFProcess(const double* src, double* dst, unsigned int numIters, MRFState_Double* state) {
  Process(src, dst, numIters, state);
}

void MRFFree(MRFState_Float* state) {
  if (state) Release(state);
}
void MRFFree(MRFState_Double* state) {
  if (state) Release(state);
}

}  // namespace zalaccelerate::filter
