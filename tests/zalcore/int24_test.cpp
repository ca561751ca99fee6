#include <zalcore/int24.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace {

using zalcore::utility::int24_t;

struct Layout {
  int value;
  std::array<std::uint8_t, 3> bytes;
};

// Little-endian two's complement, sign in byte 2.
constexpr Layout kLayouts[] = {
    {0, {0x00, 0x00, 0x00}},        {1, {0x01, 0x00, 0x00}},       {-1, {0xFF, 0xFF, 0xFF}},
    {0x123456, {0x56, 0x34, 0x12}}, {8388607, {0xFF, 0xFF, 0x7F}}, {-8388608, {0x00, 0x00, 0x80}},
    {-256, {0x00, 0xFF, 0xFF}},     {65536, {0x00, 0x00, 0x01}},   {-65537, {0xFF, 0xFF, 0xFE}},
    {8388352, {0x00, 0xFF, 0x7F}},
};

TEST(Int24, BytesAreLittleEndianTwosComplement) {
  for (const Layout& layout : kLayouts) {
    const int24_t sample(layout.value);
    std::array<std::uint8_t, 3> bytes;
    std::memcpy(bytes.data(), &sample, 3);
    EXPECT_EQ(bytes, layout.bytes) << layout.value;

    int24_t read;
    std::memcpy(&read, layout.bytes.data(), 3);
    EXPECT_EQ(int{read}, layout.value) << layout.value;
  }
}

TEST(Int24, EveryValueRoundTripsAndOutsideValuesKeepTheLow24Bits) {
  for (int value = int24_t::kMin; value <= int24_t::kMax; ++value) {
    ASSERT_EQ(int{int24_t(value)}, value);
  }
  for (const int value :
       {8388608, -8388609, 0x7FFFFFFF, static_cast<int>(0x80000000u), 0x1000001}) {
    const int low = static_cast<int>(static_cast<std::uint32_t>(value) << 8) >> 8;
    EXPECT_EQ(int{int24_t(value)}, low) << value;
  }
}

TEST(Int24, ArraysPackAtThreeBytes) {
  int24_t samples[5] = {1, -2, 3, -4, 5};
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(samples);
  EXPECT_EQ(sizeof samples, 15u);
  EXPECT_EQ(bytes[3], 0xFE);  // -2 starts at byte 3
  EXPECT_EQ(bytes[12], 0x05);
}

TEST(Int24, ComparesAsIntegers) {
  const int values[] = {int24_t::kMin, -70000, -1, 0, 1, 255, 256, 70000, int24_t::kMax};
  for (const int a : values) {
    for (const int b : values) {
      EXPECT_EQ(int24_t(a) == int24_t(b), a == b);
      EXPECT_EQ(int24_t(a) < int24_t(b), a < b);
      EXPECT_EQ(int24_t(a) >= int24_t(b), a >= b);
    }
  }
}

}  // namespace
