// Operand memory for the cross-level cases: each vector in a heap block of exactly the size it
// needs, at a chosen byte offset from a 64-byte boundary, so that AddressSanitizer reports a
// read past the end of a source. Destinations also carry canary zones on both sides, which
// catch writes outside [0, n) in every build.
#pragma once

#include <cstddef>
#include <span>

namespace zal::test::harness {

inline constexpr std::size_t kCanaryBytes = 64;

// 64-byte aligned blocks. Large ones are kept for the next request of the same size: the long
// cases of every row ask for the same few sizes, and first touches of fresh pages would
// otherwise take most of their time.
unsigned char* AllocateBlock(std::size_t size);
void ReleaseBlock(unsigned char* block, std::size_t size);

template <class T>
class Vector {
 public:
  // `offset_bytes`, a multiple of sizeof(T) below 64, is the data's distance past a 64-byte
  // boundary.
  Vector(int n, int offset_bytes, bool guarded)
      : n_(n),
        canary_(guarded ? kCanaryBytes : 0),
        head_(static_cast<std::size_t>(offset_bytes) + canary_),
        size_(head_ + sizeof(T) * static_cast<std::size_t>(n) + canary_),
        block_(AllocateBlock(size_)) {
    for (std::size_t i = head_ - canary_; i < head_; ++i) block_[i] = Pattern(i);
    for (std::size_t i = size_ - canary_; i < size_; ++i) block_[i] = Pattern(i);
  }
  ~Vector() { ReleaseBlock(block_, size_); }
  Vector(const Vector&) = delete;
  Vector& operator=(const Vector&) = delete;

  T* Data() const { return reinterpret_cast<T*>(block_ + head_); }
  std::span<T> Elements() const { return {Data(), static_cast<std::size_t>(n_)}; }

  bool CanariesIntact() const {
    for (std::size_t i = head_ - canary_; i < head_; ++i) {
      if (block_[i] != Pattern(i)) return false;
    }
    for (std::size_t i = size_ - canary_; i < size_; ++i) {
      if (block_[i] != Pattern(i)) return false;
    }
    return true;
  }

 private:
  // Position-dependent, so that a shifted copy of a zone does not pass for it.
  static unsigned char Pattern(std::size_t position) {
    return static_cast<unsigned char>(0xA5 ^ (position * 29));
  }

  int n_;
  std::size_t canary_;
  std::size_t head_;
  std::size_t size_;
  unsigned char* block_;
};

}  // namespace zal::test::harness
