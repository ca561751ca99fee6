// The demo's WAV reader: whole files come back as written, and every malformed or truncated file
// is refused with a reason, never read past its end.
#include "wav_file.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

namespace demo {
namespace {

PcmAudio Sample(unsigned channels, unsigned bits, std::size_t frames) {
  PcmAudio audio{.channels = channels, .sampleRate = 48000, .bitsPerSample = bits, .samples = {}};
  for (std::size_t i = 0; i < frames * audio.BytesPerFrame(); ++i) {
    audio.samples.push_back(static_cast<std::uint8_t>(i * 37 + 11));
  }
  return audio;
}

void Put32(std::vector<std::uint8_t>& file, std::size_t at, std::uint32_t v) {
  for (int b = 0; b < 4; ++b) file[at + b] = static_cast<std::uint8_t>(v >> (8 * b));
}

void Put16(std::vector<std::uint8_t>& file, std::size_t at, std::uint16_t v) {
  file[at] = static_cast<std::uint8_t>(v);
  file[at + 1] = static_cast<std::uint8_t>(v >> 8);
}

// Offsets in the canonical 44-byte header that FormatWav writes.
constexpr std::size_t kFormatTag = 20, kChannels = 22, kRate = 24, kBlockAlign = 32, kBits = 34,
                      kDataId = 36, kDataSize = 40, kHeader = 44;

TEST(WavFile, WhatIsWrittenReadsBack) {
  for (unsigned channels : {1u, 2u, 6u}) {
    for (unsigned bits : {16u, 24u}) {
      for (std::size_t frames : {0u, 1u, 1001u}) {
        const PcmAudio audio = Sample(channels, bits, frames);
        std::string error;
        const auto read = ParseWav(FormatWav(audio), error);
        ASSERT_TRUE(read) << error;
        EXPECT_EQ(read->channels, channels);
        EXPECT_EQ(read->sampleRate, 48000u);
        EXPECT_EQ(read->bitsPerSample, bits);
        EXPECT_EQ(read->samples, audio.samples);
      }
    }
  }
}

TEST(WavFile, SkipsOtherChunksAndTheirPadding) {
  std::vector<std::uint8_t> file = FormatWav(Sample(2, 16, 10));
  const std::uint8_t list[] = {'L', 'I', 'S', 'T', 3, 0, 0, 0, 'a', 'b', 'c', 0};
  file.insert(file.begin() + kDataId, std::begin(list), std::end(list));
  std::string error;
  const auto read = ParseWav(file, error);
  ASSERT_TRUE(read) << error;
  EXPECT_EQ(read->Frames(), 10u);
}

TEST(WavFile, ReadsTheExtensibleHeaderWithPcmSubformat) {
  const PcmAudio audio = Sample(2, 24, 5);
  std::vector<std::uint8_t> file = FormatWav(audio);
  std::vector<std::uint8_t> format(file.begin() + kFormatTag, file.begin() + kDataId);
  format.resize(40);
  Put16(format, 0, 0xFFFE);
  Put16(format, 16, 22);
  Put16(format, 24, 1);  // the PCM subformat
  file.erase(file.begin() + kFormatTag, file.begin() + kDataId);
  file.insert(file.begin() + kFormatTag, format.begin(), format.end());
  Put32(file, 16, 40);
  std::string error;
  const auto read = ParseWav(file, error);
  ASSERT_TRUE(read) << error;
  EXPECT_EQ(read->samples, audio.samples);
}

TEST(WavFile, RefusesMalformedFiles) {
  const std::vector<std::uint8_t> good = FormatWav(Sample(2, 16, 100));
  struct Case {
    const char* name;
    std::function<void(std::vector<std::uint8_t>&)> spoil;
  };
  const Case cases[] = {
      {"empty", [](auto& f) { f.clear(); }},
      {"not RIFF", [](auto& f) { f[0] = 'X'; }},
      {"not WAVE", [](auto& f) { f[8] = 'X'; }},
      {"zero channels", [](auto& f) { Put16(f, kChannels, 0); }},
      {"too many channels", [](auto& f) { Put16(f, kChannels, 1000); }},
      {"sample rate 0", [](auto& f) { Put32(f, kRate, 0); }},
      {"8-bit", [](auto& f) { Put16(f, kBits, 8); }},
      {"32-bit", [](auto& f) { Put16(f, kBits, 32); }},
      {"float format", [](auto& f) { Put16(f, kFormatTag, 3); }},
      {"block alignment", [](auto& f) { Put16(f, kBlockAlign, 3); }},
      {"data larger than the file", [](auto& f) { Put32(f, kDataSize, 401); }},
      {"data size of 2^32 - 1", [](auto& f) { Put32(f, kDataSize, 0xFFFFFFFF); }},
      {"partial frame", [](auto& f) { Put32(f, kDataSize, 398); }},
      {"format chunk too short", [](auto& f) { Put32(f, 16, 12); }},
      {"format chunk past the end", [](auto& f) { Put32(f, 16, 0x7FFFFFFF); }},
      {"no data chunk", [](auto& f) { std::memcpy(&f[kDataId], "junk", 4); }},
      {"data before format", [](auto& f) { std::memcpy(&f[12], "junk", 4); }},
  };
  for (const Case& c : cases) {
    std::vector<std::uint8_t> file = good;
    c.spoil(file);
    std::string error;
    EXPECT_FALSE(ParseWav(file, error)) << c.name;
    EXPECT_FALSE(error.empty()) << c.name;
    EXPECT_EQ(error.find('\n'), std::string::npos) << c.name;
  }
}

// Every prefix of a valid file short of its last frame is refused; each is parsed from its own
// exactly-sized buffer, so that a read past its end shows under the address sanitizer.
TEST(WavFile, RefusesEveryTruncation) {
  const std::vector<std::uint8_t> good = FormatWav(Sample(2, 24, 3));
  for (std::size_t size = 0; size < good.size(); ++size) {
    const std::vector<std::uint8_t> prefix(good.begin(), good.begin() + size);
    std::string error;
    EXPECT_FALSE(ParseWav(prefix, error)) << size << " bytes";
  }
  EXPECT_EQ(good.size(), kHeader + 18);
}

}  // namespace
}  // namespace demo
