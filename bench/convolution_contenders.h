// The convolution benchmark's peers, each in a translation unit built its own way.
#pragma once

namespace zal::bench {

// dst (len_a + len_b - 1 elements) = a convolved with b, by a plain double loop.
void PlainConvolve(const float* a, int len_a, const float* b, int len_b, float* dst);

// The resamplers as a user writes them: dst[k] = src[k factor] over `outputs` samples, and
// src[k] at dst[k factor] with zeros between, over `len` inputs.
template <class T>
void PlainDownSample(const T* src, T* dst, int outputs, int factor);
template <class T>
void PlainUpSample(const T* src, T* dst, int len, int factor);

// Overlap-add over FFTW's real transforms, planned with FFTW_MEASURE when made (outside any
// timing), for one pair of lengths; the block length minimises the same cost estimate ours does.
class FftwOverlapAdd {
 public:
  FftwOverlapAdd(int len_a, int len_b, bool measure);
  ~FftwOverlapAdd();
  FftwOverlapAdd(const FftwOverlapAdd&) = delete;
  FftwOverlapAdd& operator=(const FftwOverlapAdd&) = delete;
  void Run(const float* a, const float* b, float* dst);
  int block() const { return n_; }

 private:
  int len_a_;
  int len_b_;
  int n_;
  float* time_;
  float* filter_;
  float* spectrum_;
  void* forward_;
  void* filter_forward_;
  void* inverse_;
};

}  // namespace zal::bench
