// The prepared recursive filter the initialisation primitives build in a caller's block, and the
// baseline code that builds it and reads or writes its delay line. Plain data with one layout for
// every level and the portable variant; a state is only ever run by the level that built it.
//
// Each system (the one direct form, or one second-order section of a cascade) runs in the
// transposed direct form II, whose n states are the delay line. Whole blocks of kIIRBlock samples
// run in state-space form: the block's outputs are its inputs through the impulse response plus the
// block-start state through the zero-input responses, and the state advances by the block's
// transition matrices. So the recursion is one step per block, not per sample. Samples of a block
// that is not yet complete are kept, and each output of a partial block is computed by exactly the
// arithmetic of its lane in a whole block: any split of a stream gives the same bits.
#pragma once

#include "zalaccelerate/engine_status.h"

namespace zal::engine {

inline constexpr int kIIRBlock = 16;
// States are padded to whole vectors of the widest level.
inline constexpr int kIIRStatePad = 16;
inline constexpr int kIIRMaxOrder = 32;
inline constexpr int kIIRMaxBiquads = 1024;

struct IIRSpec {
  int level;
  int element_bytes;
  int systems;
  // States per system (the order of the direct form, 2 per section), and padded.
  int states;
  int padded_states;
  // Elements of T from one system's arrays to the next's.
  int system_stride;
  // Samples of the current block already filtered, 0 .. kIIRBlock - 1; shared by all systems.
  int phase;
  // MXCSR bits the filter runs under: flush-to-zero, and denormals-are-zero where supported.
  unsigned int mxcsr_bits;
  // Bytes from the start of this block to system 0's arrays.
  int data_offset;
};

// One system's arrays, in elements of T from its start (see IIRSystemLayout).
//   response  kIIRBlock columns of kIIRBlock: column k is the outputs' response to input k
//   from_state  n columns of kIIRBlock: the outputs' response to a unit state j
//   transition  n columns of P: the state after a block from a unit state j
//   from_input  kIIRBlock columns of P: the state after a block from a unit input k
//   transition_low, from_input_low  what the rounding to T left of those two: the state's
//     recursion runs on the matrices to twice the precision of T
//   input_rows, input_rows_low  from_input and its low part by rows: n rows of kIIRBlock
//   state  P values: the state at the start of the current block
//   pending  kIIRBlock inputs of the current block
//   taps  b0..bn, a0..an as given
struct IIRSystemLayout {
  int response;
  int from_state;
  int transition;
  int from_input;
  int transition_low;
  int from_input_low;
  int input_rows;
  int input_rows_low;
  int state;
  int pending;
  int taps;
  int stride;
};
IIRSystemLayout IIRLayout(int states);

// Bytes of the block for `systems` systems of `states` states each, elements of `element_bytes`.
EngStatus IIRBlockSize(int systems, int states, int element_bytes, int* size);

// Builds a spec in `block` (IIRBlockSize bytes). taps: per system b0..bn, a0..an; dly_line: n
// states per system, or null for zero.
EngStatus IIRPrepare(IIRSpec** spec, int level, int systems, int states, const float* taps,
                     const float* dly_line, unsigned char* block);
EngStatus IIRPrepare(IIRSpec** spec, int level, int systems, int states, const double* taps,
                     const double* dly_line, unsigned char* block);

// The delay line where the stream stands: the block-start state advanced over the pending samples.
EngStatus IIRReadDelayLine(const IIRSpec* spec, float* dly_line);
EngStatus IIRReadDelayLine(const IIRSpec* spec, double* dly_line);
// Sets the delay line and starts a new block there.
EngStatus IIRWriteDelayLine(IIRSpec* spec, const float* dly_line);
EngStatus IIRWriteDelayLine(IIRSpec* spec, const double* dly_line);

}  // namespace zal::engine
