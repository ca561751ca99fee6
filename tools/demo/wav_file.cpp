#include "wav_file.h"

#include <cstring>
#include <fstream>
#include <iterator>

namespace demo {
namespace {

constexpr std::uint16_t kFormatPcm = 1;
constexpr std::uint16_t kFormatExtensible = 0xFFFE;
// A channel count that no real file exceeds; it keeps a frame's size far from overflow.
constexpr unsigned kMaxChannels = 256;

std::uint32_t Read32(const std::uint8_t* p) {
  return std::uint32_t{p[0]} | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16 |
         std::uint32_t{p[3]} << 24;
}

std::uint16_t Read16(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[0] | p[1] << 8);
}

void Append32(std::vector<std::uint8_t>& out, std::uint32_t v) {
  for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<std::uint8_t>(v >> shift));
}

void AppendTag(std::vector<std::uint8_t>& out, const char (&tag)[5]) {
  for (int i = 0; i < 4; ++i) out.push_back(static_cast<std::uint8_t>(tag[i]));
}

void Append16(std::vector<std::uint8_t>& out, std::uint16_t v) {
  out.push_back(static_cast<std::uint8_t>(v));
  out.push_back(static_cast<std::uint8_t>(v >> 8));
}

std::optional<PcmAudio> Refuse(std::string& error, const char* why) {
  error = why;
  return std::nullopt;
}

// Reads the fmt chunk's fields into `audio`; returns the reason for a refusal, or null.
const char* ReadFormat(std::span<const std::uint8_t> chunk, PcmAudio& audio) {
  if (chunk.size() < 16) return "the format chunk is shorter than 16 bytes";
  std::uint16_t format = Read16(&chunk[0]);
  if (format == kFormatExtensible) {
    if (chunk.size() < 40) return "the extensible format chunk is shorter than 40 bytes";
    format = Read16(&chunk[24]);  // the subformat GUID's first two bytes
  }
  if (format != kFormatPcm) return "not integer PCM (only 16- and 24-bit PCM are read)";
  audio.channels = Read16(&chunk[2]);
  audio.sampleRate = Read32(&chunk[4]);
  audio.bitsPerSample = Read16(&chunk[14]);
  if (audio.channels == 0) return "the file declares zero channels";
  if (audio.channels > kMaxChannels) return "the file declares more than 256 channels";
  if (audio.sampleRate == 0) return "the file declares a sample rate of 0";
  if (audio.bitsPerSample != 16 && audio.bitsPerSample != 24) {
    return "only 16- and 24-bit samples are read";
  }
  if (Read16(&chunk[12]) != audio.BytesPerFrame()) {
    return "the block alignment does not match channels and sample size";
  }
  return nullptr;
}

}  // namespace

std::optional<PcmAudio> ParseWav(std::span<const std::uint8_t> file, std::string& error) {
  if (file.size() < 12) return Refuse(error, "truncated: shorter than a RIFF header");
  if (std::memcmp(file.data(), "RIFF", 4) != 0 || std::memcmp(file.data() + 8, "WAVE", 4) != 0) {
    return Refuse(error, "not a RIFF WAVE file");
  }
  PcmAudio audio;
  bool haveFormat = false;
  std::size_t at = 12;
  while (file.size() - at >= 8) {
    const std::uint8_t* header = file.data() + at;
    const std::size_t size = Read32(header + 4);
    at += 8;
    const std::size_t present = file.size() - at;
    if (std::memcmp(header, "fmt ", 4) == 0) {
      if (size > present) return Refuse(error, "truncated: the format chunk ends past the file");
      if (const char* why = ReadFormat(file.subspan(at, size), audio)) return Refuse(error, why);
      haveFormat = true;
    } else if (std::memcmp(header, "data", 4) == 0) {
      if (!haveFormat) return Refuse(error, "the data chunk comes before the format chunk");
      if (size > present) return Refuse(error, "truncated: the data chunk ends past the file");
      if (size % audio.BytesPerFrame() != 0) {
        return Refuse(error, "the data chunk does not hold a whole number of frames");
      }
      audio.samples.assign(file.begin() + at, file.begin() + at + size);
      return audio;
    }
    if (size > present) break;
    at += size + (size & 1);  // chunks are padded to even sizes
  }
  return Refuse(error, haveFormat ? "no data chunk" : "no format chunk");
}

std::optional<PcmAudio> ReadWav(const std::string& path, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return Refuse(error, "cannot open the file");
  const std::vector<std::uint8_t> file{std::istreambuf_iterator<char>(in),
                                       std::istreambuf_iterator<char>()};
  if (in.bad()) return Refuse(error, "cannot read the file");
  return ParseWav(file, error);
}

std::vector<std::uint8_t> FormatWav(const PcmAudio& audio) {
  const auto dataBytes = static_cast<std::uint32_t>(audio.samples.size());
  const auto frameBytes = static_cast<std::uint16_t>(audio.BytesPerFrame());
  std::vector<std::uint8_t> out;
  out.reserve(44 + audio.samples.size() + 1);
  AppendTag(out, "RIFF");
  Append32(out, 36 + dataBytes + (dataBytes & 1));
  AppendTag(out, "WAVE");
  AppendTag(out, "fmt ");
  Append32(out, 16);
  Append16(out, kFormatPcm);
  Append16(out, static_cast<std::uint16_t>(audio.channels));
  Append32(out, audio.sampleRate);
  Append32(out, audio.sampleRate * frameBytes);
  Append16(out, frameBytes);
  Append16(out, static_cast<std::uint16_t>(audio.bitsPerSample));
  AppendTag(out, "data");
  Append32(out, dataBytes);
  out.insert(out.end(), audio.samples.begin(), audio.samples.end());
  if (dataBytes & 1) out.push_back(0);
  return out;
}

bool WriteWav(const std::string& path, const PcmAudio& audio, std::string& error) {
  const std::vector<std::uint8_t> file = FormatWav(audio);
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
  if (!out) error = "cannot write " + path;
  return static_cast<bool>(out);
}

}  // namespace demo
