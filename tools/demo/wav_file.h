// The demo's WAV files: integer PCM, 16 or 24 bits, interleaved, little-endian, as most audio
// tools write them (plain PCM or the extensible header with the PCM subformat). Anything else,
// and every malformed or truncated file, is refused with a one-line reason; reading never trusts
// a size field beyond the bytes actually present.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace demo {

struct PcmAudio {
  unsigned channels = 0;
  unsigned sampleRate = 0;
  unsigned bitsPerSample = 0;         // 16 or 24
  std::vector<std::uint8_t> samples;  // frames * channels * bitsPerSample / 8 bytes, interleaved

  std::size_t BytesPerFrame() const { return std::size_t{channels} * bitsPerSample / 8; }
  std::size_t Frames() const { return samples.size() / BytesPerFrame(); }
};

// The file's audio, or nothing with `error` saying why.
std::optional<PcmAudio> ParseWav(std::span<const std::uint8_t> file, std::string& error);
std::optional<PcmAudio> ReadWav(const std::string& path, std::string& error);

std::vector<std::uint8_t> FormatWav(const PcmAudio& audio);
bool WriteWav(const std::string& path, const PcmAudio& audio, std::string& error);

}  // namespace demo
