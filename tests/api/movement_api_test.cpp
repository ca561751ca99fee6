// The exported data movement through the shared library: overlapping moves against a copy through
// a temporary, reversal and byte swaps against element-by-element oracles, the interleaving loops
// against their definition, the zero-length guards and the 32-bit byte-count quirk. Every
// destination sits between canary zones.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "zalaccelerate/utility.h"

namespace {

namespace u = zalaccelerate::utility;
using zalcore::utility::int24_t;

constexpr std::size_t kCanary = 32;
constexpr unsigned char kCanaryByte = 0xC3;

// Elements of T with canary bytes on both sides, at a chosen byte offset from a 64-byte boundary.
template <class T>
class Guarded {
 public:
  Guarded(std::size_t n, std::size_t offset = 0)
      : n_(n), offset_(kCanary + offset), bytes_(offset_ + n * sizeof(T) + kCanary + 64) {
    std::memset(bytes_.data(), kCanaryByte, bytes_.size());
  }
  T* data() { return reinterpret_cast<T*>(Base() + offset_); }
  T& operator[](std::size_t i) { return data()[i]; }
  bool CanariesIntact() {
    for (std::size_t i = 0; i < offset_; ++i) {
      if (Base()[i] != kCanaryByte) return false;
    }
    for (std::size_t i = offset_ + n_ * sizeof(T); i < bytes_.size() - 64; ++i) {
      if (Base()[i] != kCanaryByte) return false;
    }
    return true;
  }

 private:
  unsigned char* Base() {
    const auto address = reinterpret_cast<std::uintptr_t>(bytes_.data());
    return bytes_.data() + (64 - address % 64) % 64;
  }
  std::size_t n_;
  std::size_t offset_;
  std::vector<unsigned char> bytes_;
};

template <class T>
void FillRandom(T* p, std::size_t n, std::mt19937_64& rng) {
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint64_t bits = rng();
    std::memcpy(p + i, &bits, sizeof(T));
  }
}

bool SameBytes(const void* a, const void* b, std::size_t n) {
  return n == 0 || std::memcmp(a, b, n) == 0;
}

// ---- Zero-length guards -------------------------------------------------------------------------

TEST(Movement, ZeroLengthCallsWithNullPointersDoNothing) {
  u::Copy(0, static_cast<const signed char*>(nullptr), static_cast<signed char*>(nullptr));
  u::Copy(0, static_cast<const unsigned char*>(nullptr), static_cast<unsigned char*>(nullptr));
  u::Copy(0, static_cast<const short*>(nullptr), static_cast<short*>(nullptr));
  u::Copy(0, static_cast<const int*>(nullptr), static_cast<int*>(nullptr));
  u::Copy(0, static_cast<const unsigned*>(nullptr), static_cast<unsigned*>(nullptr));
  u::Copy(0, static_cast<const float*>(nullptr), static_cast<float*>(nullptr));
  u::Copy(0, static_cast<const double*>(nullptr), static_cast<double*>(nullptr));
  u::Move(0, static_cast<const unsigned char*>(nullptr), static_cast<unsigned char*>(nullptr));
  u::Move(0, static_cast<const short*>(nullptr), static_cast<short*>(nullptr));
  u::Move(0, static_cast<const unsigned*>(nullptr), static_cast<unsigned*>(nullptr));
  u::Move(0, static_cast<const float*>(nullptr), static_cast<float*>(nullptr));
  u::Move(0, static_cast<const double*>(nullptr), static_cast<double*>(nullptr));
  u::Set(0, static_cast<unsigned char*>(nullptr), 1);
  u::Set(0, static_cast<short*>(nullptr), 1);
  u::Set(0, static_cast<int*>(nullptr), 1);
  u::Set(0, static_cast<unsigned*>(nullptr), 1u);
  u::Set(0, static_cast<float*>(nullptr), 1.0f);
  u::Set(0, static_cast<double*>(nullptr), 1.0);
  u::Zero(0, static_cast<unsigned char*>(nullptr));
  u::Zero(0, static_cast<short*>(nullptr));
  u::Zero(0, static_cast<int*>(nullptr));
  u::Zero(0, static_cast<unsigned*>(nullptr));
  u::Zero(0, static_cast<float*>(nullptr));
  u::Zero(0, static_cast<double*>(nullptr));
  u::Flip(0, static_cast<const float*>(nullptr), static_cast<float*>(nullptr));
  u::Flip_InPlace(0, static_cast<double*>(nullptr));
  u::SwapBytes(0, static_cast<int24_t*>(nullptr));
  u::SwapBytes(0, static_cast<const std::uint64_t*>(nullptr), static_cast<std::uint64_t*>(nullptr));
  u::Interleave(0, static_cast<const float*>(nullptr), nullptr, static_cast<float*>(nullptr));
  u::Deinterleave(2, 0, static_cast<const double*>(nullptr), static_cast<double* const*>(nullptr));
}

// Null pointers with a non-zero length reach the engine, which refuses them; huge lengths too.
TEST(Movement, RefusedCallsWriteNothing) {
  Guarded<float> dst(8);
  const std::vector<float> src(8, 1.0f);
  u::Copy(8, static_cast<const float*>(nullptr), dst.data());
  u::Copy(0x80000000u, src.data(), dst.data());
  u::Move(0xFFFFFFFFu, src.data(), dst.data());
  u::Set(0x80000000u, dst.data(), 2.0f);
  u::Zero(0x80000000u, dst.data());
  u::Flip(0x80000000u, src.data(), dst.data());
  u::Interleave(0x80000000u, src.data(), src.data(), dst.data());
  EXPECT_TRUE(dst.CanariesIntact());
}

// ---- Copy, Set and Zero
// ---------------------------------------------------------------------------

// Lengths around every register width and unroll, at every byte offset of the destination, and
// one length past the streaming threshold.
template <class T>
void CheckCopySetZero() {
  std::mt19937_64 rng(sizeof(T));
  std::vector<std::size_t> lengths;
  for (std::size_t n = 1; n <= 300; n += (n < 80 ? 1 : 37)) lengths.push_back(n);
  lengths.push_back((std::size_t{3} << 20) / sizeof(T) + 5);
  for (std::size_t n : lengths) {
    for (std::size_t offset : {std::size_t{0}, sizeof(T), 64 - sizeof(T), std::size_t{3}}) {
      SCOPED_TRACE(testing::Message() << "n " << n << ", offset " << offset);
      std::vector<T> src(n);
      FillRandom(src.data(), n, rng);
      Guarded<T> dst(n, offset);
      u::Copy(static_cast<unsigned>(n), src.data(), dst.data());
      EXPECT_TRUE(SameBytes(dst.data(), src.data(), n * sizeof(T)));
      T value;
      FillRandom(&value, 1, rng);
      u::Set(static_cast<unsigned>(n), dst.data(), value);
      for (std::size_t i = 0; i < n; ++i) {
        if (!SameBytes(dst.data() + i, &value, sizeof(T))) {
          ADD_FAILURE() << "Set: element " << i;
          break;
        }
      }
      u::Zero(static_cast<unsigned>(n), dst.data());
      const std::vector<T> zeros(n, T{});
      EXPECT_TRUE(SameBytes(dst.data(), zeros.data(), n * sizeof(T)));
      EXPECT_TRUE(dst.CanariesIntact());
      if (n > 4096) break;  // one offset suffices for the long vector
    }
  }
}

TEST(Movement, CopySetZeroUnsignedChar) {
  CheckCopySetZero<unsigned char>();
}
TEST(Movement, CopySetZeroShort) {
  CheckCopySetZero<short>();
}
TEST(Movement, CopySetZeroInt) {
  CheckCopySetZero<int>();
}
TEST(Movement, CopySetZeroUnsignedInt) {
  CheckCopySetZero<unsigned int>();
}
TEST(Movement, CopySetZeroFloat) {
  CheckCopySetZero<float>();
}
TEST(Movement, CopySetZeroDouble) {
  CheckCopySetZero<double>();
}

TEST(Movement, CopySignedCharIsAByteCopy) {
  const signed char src[5] = {-128, -1, 0, 1, 127};
  Guarded<signed char> dst(5, 1);
  u::Copy(5, src, dst.data());
  EXPECT_TRUE(SameBytes(src, dst.data(), 5));
  EXPECT_TRUE(dst.CanariesIntact());
}

TEST(Movement, SetKeepsTheBitsOfNaNsAndNegativeZero) {
  const float signalling = std::numeric_limits<float>::signaling_NaN();
  for (float value : {signalling, -0.0f, -std::numeric_limits<float>::quiet_NaN()}) {
    Guarded<float> p(19, 4);
    u::Set(19, p.data(), value);
    for (int i = 0; i < 19; ++i) EXPECT_TRUE(SameBytes(&p[i], &value, 4)) << i;
    EXPECT_TRUE(p.CanariesIntact());
  }
}

// Fills long enough to stream: the head that aligns the stores and the tail after them.
TEST(Movement, LongFills) {
  const std::size_t n = (std::size_t{5} << 20) / sizeof(float) + 3;
  Guarded<float> p(n, 4);
  const float value = -1.5f;
  u::Set(static_cast<unsigned>(n), p.data(), value);
  std::size_t wrong = 0;
  for (std::size_t i = 0; i < n; ++i) wrong += p.data()[i] != value;
  EXPECT_EQ(wrong, 0u);
  u::Zero(static_cast<unsigned>(n), p.data());
  for (std::size_t i = 0; i < n; ++i) wrong += p.data()[i] != 0.0f;
  EXPECT_EQ(wrong, 0u);
  EXPECT_TRUE(p.CanariesIntact());
}

// ---- The 32-bit byte count of Copy(int), Zero(int) and Zero(unsigned int) -----------------------

// 2^30 + k elements are 4 k bytes in 32 bits: only k elements are touched; 2^30 touches none; and
// 2^29 gives 2^31 bytes, which the engine refuses.
TEST(Movement, IntCountsWrapTheirByteCountIn32Bits) {
  struct Case {
    unsigned len;
    std::size_t touched;
  };
  for (const Case c : {Case{1u << 30, 0}, Case{(1u << 30) + 3, 3}, Case{3u << 30, 0},
                       Case{(3u << 30) + 5, 5}, Case{1u << 29, 0}}) {
    SCOPED_TRACE(testing::Message() << "len " << c.len);
    const std::vector<int> src = {1, 2, 3, 4, 5, 6, 7, 8};
    Guarded<int> dst(8);
    for (int i = 0; i < 8; ++i) dst[i] = -1;
    u::Copy(c.len, src.data(), dst.data());
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(dst[i], i < c.touched ? src[i] : -1) << i;
    u::Zero(c.len, dst.data());
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(dst[i], i < c.touched ? 0 : dst[i]) << i;
    Guarded<unsigned> udst(8);
    for (int i = 0; i < 8; ++i) udst[i] = 7;
    u::Zero(c.len, udst.data());
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(udst[i], i < c.touched ? 0u : 7u) << i;
    EXPECT_TRUE(dst.CanariesIntact());
    EXPECT_TRUE(udst.CanariesIntact());
  }
}

// ---- Move
// ----------------------------------------------------------------------------------------

// Source and destination inside one buffer at every distance up to a few registers, both ways,
// against the copy through a temporary.
template <class T>
void CheckOverlappingMoves() {
  std::mt19937_64 rng(7 * sizeof(T));
  for (std::size_t n : {1, 2, 3, 7, 15, 16, 17, 31, 63, 64, 65, 130, 257, 1000, 5003}) {
    for (std::size_t shift = 0; shift <= 140; shift += (shift < 70 ? 1 : 23)) {
      for (bool up : {false, true}) {
        SCOPED_TRACE(testing::Message()
                     << "n " << n << ", shift " << shift << (up ? " up" : " down"));
        Guarded<T> buffer(n + shift, 3 * sizeof(T) % 64);
        FillRandom(buffer.data(), n + shift, rng);
        T* src = up ? buffer.data() : buffer.data() + shift;
        T* dst = up ? buffer.data() + shift : buffer.data();
        std::vector<T> expected(buffer.data(), buffer.data() + n + shift);
        const std::vector<T> temporary(src, src + n);
        std::memcpy(expected.data() + (dst - buffer.data()), temporary.data(), n * sizeof(T));
        u::Move(static_cast<unsigned>(n), src, dst);
        EXPECT_TRUE(SameBytes(buffer.data(), expected.data(), (n + shift) * sizeof(T)));
        EXPECT_TRUE(buffer.CanariesIntact());
      }
    }
  }
}

TEST(Movement, MoveOverlappingUnsignedChar) {
  CheckOverlappingMoves<unsigned char>();
}
TEST(Movement, MoveOverlappingShort) {
  CheckOverlappingMoves<short>();
}
TEST(Movement, MoveOverlappingUnsignedInt) {
  CheckOverlappingMoves<unsigned int>();
}
TEST(Movement, MoveOverlappingFloat) {
  CheckOverlappingMoves<float>();
}
TEST(Movement, MoveOverlappingDouble) {
  CheckOverlappingMoves<double>();
}

TEST(Movement, MoveOfSeparateLargeArraysCopies) {
  const std::size_t n = (std::size_t{4} << 20) / sizeof(float) + 3;
  std::mt19937_64 rng(11);
  std::vector<float> src(n);
  FillRandom(src.data(), n, rng);
  Guarded<float> dst(n, 4);
  u::Move(static_cast<unsigned>(n), src.data(), dst.data());
  EXPECT_TRUE(SameBytes(src.data(), dst.data(), n * sizeof(float)));
  EXPECT_TRUE(dst.CanariesIntact());
}

// ---- Flip
// ------------------------------------------------------------------------------------------

template <class T>
void CheckFlip() {
  for (std::size_t n = 1; n <= 70; ++n) {
    SCOPED_TRACE(testing::Message() << "n " << n);
    std::vector<T> src(n);
    for (std::size_t i = 0; i < n; ++i) src[i] = static_cast<T>(i + 1);
    Guarded<T> out(n, sizeof(T));
    u::Flip(static_cast<unsigned>(n), src.data(), out.data());
    Guarded<T> in_place(n);
    std::memcpy(in_place.data(), src.data(), n * sizeof(T));
    u::Flip_InPlace(static_cast<unsigned>(n), in_place.data());
    for (std::size_t i = 0; i < n; ++i) {
      EXPECT_EQ(out[i], src[n - 1 - i]) << i;
      EXPECT_EQ(in_place[i], src[n - 1 - i]) << i;
    }
    if (n % 2) {
      EXPECT_EQ(in_place[n / 2], src[n / 2]);  // the middle stays
    }
    EXPECT_TRUE(out.CanariesIntact());
    EXPECT_TRUE(in_place.CanariesIntact());
  }
}

TEST(Movement, FlipFloatOddAndEvenLengths) {
  CheckFlip<float>();
}
TEST(Movement, FlipDoubleOddAndEvenLengths) {
  CheckFlip<double>();
}

// ---- SwapBytes
// -----------------------------------------------------------------------------------

TEST(Movement, SwapBytesOfInt24ExchangesTheOuterBytes) {
  int24_t x[1] = {int24_t(0x123456)};
  const unsigned char before[3] = {0x56, 0x34, 0x12};
  ASSERT_TRUE(SameBytes(x, before, 3));
  u::SwapBytes(1, x);
  const unsigned char after[3] = {0x12, 0x34, 0x56};
  EXPECT_TRUE(SameBytes(x, after, 3));
  EXPECT_EQ(int{x[0]}, 0x563412);
}

template <class T>
void ReverseEachElement(const unsigned char* src, unsigned char* dst, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t b = 0; b < sizeof(T); ++b) {
      dst[i * sizeof(T) + b] = src[i * sizeof(T) + sizeof(T) - 1 - b];
    }
  }
}

// Both forms, at lengths around every register width and at odd byte offsets.
template <class T>
void CheckSwapBytes() {
  std::mt19937_64 rng(17 * sizeof(T));
  for (std::size_t n = 1; n <= 260; n += (n < 100 ? 1 : 13)) {
    for (std::size_t offset : {std::size_t{0}, std::size_t{1}, std::size_t{5}}) {
      SCOPED_TRACE(testing::Message() << "n " << n << ", offset " << offset);
      std::vector<unsigned char> bytes(n * sizeof(T));
      FillRandom(bytes.data(), bytes.size(), rng);
      std::vector<unsigned char> expected(bytes.size());
      ReverseEachElement<T>(bytes.data(), expected.data(), n);
      Guarded<T> src(n, offset);
      std::memcpy(src.data(), bytes.data(), bytes.size());
      Guarded<T> dst(n, 3 - offset % 3);
      u::SwapBytes(static_cast<unsigned>(n), static_cast<const T*>(src.data()), dst.data());
      EXPECT_TRUE(SameBytes(dst.data(), expected.data(), bytes.size()));
      EXPECT_TRUE(SameBytes(src.data(), bytes.data(), bytes.size()));
      u::SwapBytes(static_cast<unsigned>(n), src.data());
      EXPECT_TRUE(SameBytes(src.data(), expected.data(), bytes.size()));
      EXPECT_TRUE(src.CanariesIntact());
      EXPECT_TRUE(dst.CanariesIntact());
    }
  }
}

TEST(Movement, SwapBytes16) {
  CheckSwapBytes<unsigned short>();
}
TEST(Movement, SwapBytes24) {
  CheckSwapBytes<int24_t>();
}
TEST(Movement, SwapBytes32) {
  CheckSwapBytes<unsigned int>();
}
TEST(Movement, SwapBytes64) {
  CheckSwapBytes<std::uint64_t>();
}

// ---- Interleaving
// --------------------------------------------------------------------------------

template <class T>
void CheckInterleaving() {
  for (unsigned channels : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u}) {
    for (unsigned frames : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 31u, 33u, 1001u}) {
      SCOPED_TRACE(testing::Message() << channels << " channels, " << frames << " frames");
      std::vector<T> interleaved(std::size_t{channels} * frames);
      for (std::size_t i = 0; i < interleaved.size(); ++i) interleaved[i] = static_cast<T>(i + 1);
      std::vector<Guarded<T>> planar;
      std::vector<T*> planes;
      for (unsigned c = 0; c < channels; ++c) planar.emplace_back(frames, sizeof(T) * c % 64);
      for (Guarded<T>& plane : planar) planes.push_back(plane.data());
      u::Deinterleave(channels, frames, interleaved.data(), planes.data());
      for (unsigned c = 0; c < channels; ++c) {
        for (unsigned f = 0; f < frames; ++f) {
          ASSERT_EQ(planar[c][f], interleaved[std::size_t{f} * channels + c]) << c << " " << f;
        }
        EXPECT_TRUE(planar[c].CanariesIntact());
      }
      Guarded<T> back(interleaved.size(), sizeof(T));
      std::vector<const T*> sources(planes.begin(), planes.end());
      u::Interleave(channels, frames, sources.data(), back.data());
      EXPECT_TRUE(SameBytes(back.data(), interleaved.data(), interleaved.size() * sizeof(T)));
      EXPECT_TRUE(back.CanariesIntact());
      if (channels == 2) {
        Guarded<T> a(frames, 0);
        Guarded<T> b(frames, sizeof(T));
        u::Deinterleave(frames, interleaved.data(), a.data(), b.data());
        for (unsigned f = 0; f < frames; ++f) {
          EXPECT_EQ(a[f], interleaved[2 * f]);
          EXPECT_EQ(b[f], interleaved[2 * f + 1]);
        }
        Guarded<T> two(2 * frames, 3 * sizeof(T) % 64);
        u::Interleave(frames, a.data(), b.data(), two.data());
        EXPECT_TRUE(SameBytes(two.data(), interleaved.data(), interleaved.size() * sizeof(T)));
        EXPECT_TRUE(a.CanariesIntact() && b.CanariesIntact() && two.CanariesIntact());
      }
    }
  }
}

TEST(Movement, InterleavingFloat) {
  CheckInterleaving<float>();
}
TEST(Movement, InterleavingDouble) {
  CheckInterleaving<double>();
}

// A null channel pointer anywhere makes the call do nothing, before any frame is written.
TEST(Movement, NullChannelPointerWritesNothing) {
  std::vector<float> interleaved(5 * 9, 1.0f);
  Guarded<float> plane(9);
  for (int f = 0; f < 9; ++f) plane[f] = 0.0f;
  float* planes[5] = {plane.data(), plane.data(), plane.data(), plane.data(), nullptr};
  u::Deinterleave(5, 9, interleaved.data(), planes);
  const float* sources[5] = {plane.data(), plane.data(), nullptr, plane.data(), plane.data()};
  u::Interleave(5, 9, sources, interleaved.data());
  for (int f = 0; f < 9; ++f) EXPECT_EQ(plane[f], 0.0f);
  for (float x : interleaved) EXPECT_EQ(x, 1.0f);
  EXPECT_TRUE(plane.CanariesIntact());
}

}  // namespace
