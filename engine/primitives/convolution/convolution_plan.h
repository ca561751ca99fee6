// How a convolution runs: the method the lengths call for, the transform's block length, and where
// its parts lie in the work buffer. Plain baseline code shared by every level and the portable
// variant, so that the size query and the convolution always agree.
#pragma once

namespace zal::engine {

inline constexpr int kConvolutionAuto = 0;
inline constexpr int kConvolutionDirect = 1;
inline constexpr int kConvolutionTransform = 2;
inline constexpr int kConvolutionDataF32 = 13;
inline constexpr int kConvolutionDataF64 = 19;

// The longest transform block: 2^20 points keeps every work buffer below 2^31 bytes.
inline constexpr int kConvolutionMaxOrder = 20;

struct ConvolutionPlan {
  int method;  // kConvolutionDirect or kConvolutionTransform
  int order;   // transform block of 2^order points; 0 for the direct method
  int step;    // inputs of the longer operand per block: 2^order - shorter + 1
};

// The method for lengths of at least 1. Automatic: the transform once the shorter operand has 64
// elements and the model below prices it under direct summation. A transform that no block of at
// most 2^kConvolutionMaxOrder points can hold runs directly.
ConvolutionPlan PlanConvolution(long long len_a, long long len_b, int method);

// Byte offsets into a 64-byte aligned work area: a header that tags the prepared tables, the
// transform's prepared block, its scratch, the shorter operand's spectrum and one block's spectrum.
struct ConvolutionLayout {
  long long spec;
  long long scratch;
  long long filter;
  long long block;
  long long bytes;  // the whole work buffer, slack for aligning it included
};

ConvolutionLayout LayOutConvolution(int order, int spec_bytes, int scratch_bytes,
                                    int element_bytes);

// The tag of a prepared transform and a checksum of its prepared block: tables that are still
// intact serve the next call with the same block length, so that a caller who keeps its work
// buffer pays for the unit roots once.
struct ConvolutionTag {
  unsigned long long magic;
  int level;
  int element_bytes;
  int order;
  int spec_bytes;
  unsigned long long checksum;
};

unsigned long long ConvolutionChecksum(const unsigned char* bytes, long long count);

}  // namespace zal::engine
