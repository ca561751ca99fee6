// The pipeline through the library, block by block as a real-time host would run it.
#include <algorithm>
#include <cstdint>

#include "stages.h"
#include "zalaccelerate/filter.h"
#include "zalaccelerate/utility.h"
#include "zalcore/stl_allocator.h"

namespace demo {
namespace {

namespace zf = zalaccelerate::filter;
namespace zu = zalaccelerate::utility;
using zalcore::utility::int24_t;

constexpr std::size_t kBlock = 1024;
// Iterations of the resampler per call: 960 frames in, 882 out.
constexpr std::size_t kResamplerIterations = 6;

std::vector<float*> Pointers(Planar& planar) {
  std::vector<float*> pointers;
  for (auto& channel : planar.channels) pointers.push_back(channel.data());
  return pointers;
}

std::vector<const float*> Pointers(const Planar& planar) {
  std::vector<const float*> pointers;
  for (const auto& channel : planar.channels) pointers.push_back(channel.data());
  return pointers;
}

void Shape(Planar& out, unsigned rate, std::size_t channels, std::size_t frames) {
  out.rate = rate;
  out.channels.assign(channels, std::vector<float>(frames));
}

void Decode(const PcmAudio& in, Planar& out) {
  Shape(out, in.sampleRate, in.channels, in.Frames());
  const auto frames = static_cast<unsigned>(in.Frames());
  if (in.bitsPerSample == 16) {
    zu::DeinterleaveConvert(in.channels, frames, reinterpret_cast<const short*>(in.samples.data()),
                            Pointers(out).data(), 15);
  } else {
    zu::DeinterleaveConvert(in.channels, frames,
                            reinterpret_cast<const int24_t*>(in.samples.data()),
                            Pointers(out).data(), 23);
  }
}

void Lowpass(const Filters& filters, const Planar& in, Planar& out) {
  Shape(out, in.rate, in.channels.size(), in.Frames());
  for (std::size_t c = 0; c < in.channels.size(); ++c) {
    zalaccelerate::FIRState_Float* fir = nullptr;
    zf::FIRInit(&fir, filters.lowpass.data(), static_cast<unsigned>(filters.lowpass.size()),
                nullptr);
    for (std::size_t at = 0; at < in.Frames(); at += kBlock) {
      const auto len = static_cast<unsigned>(std::min(kBlock, in.Frames() - at));
      zf::FIR(fir, len, in.channels[c].data() + at, out.channels[c].data() + at);
    }
    zf::FIRFree(fir);
  }
}

void Highpass(const Filters& filters, const Planar& in, Planar& out) {
  Shape(out, in.rate, in.channels.size(), in.Frames());
  for (std::size_t c = 0; c < in.channels.size(); ++c) {
    zalaccelerate::IIRState_Float* iir = nullptr;
    zf::IIRInit_BiQuad(&iir, filters.highpass.data(), filters.highpassSections, nullptr);
    for (std::size_t at = 0; at < in.Frames(); at += kBlock) {
      const auto len = static_cast<unsigned>(std::min(kBlock, in.Frames() - at));
      zf::IIR(len, in.channels[c].data() + at, out.channels[c].data() + at, iir);
    }
    zf::IIRFree(iir);
  }
}

void Resample(const Filters& filters, const Planar& in, Planar& out) {
  const std::size_t iterations = in.Frames() / kDownFactor;
  Shape(out, ResampledRate(in.rate), in.channels.size(), iterations * kUpFactor);
  const auto tapsLen = static_cast<unsigned>(filters.resampler.size());
  const std::vector<float, zalcore::STLAllocator<float>> silence((tapsLen + kUpFactor - 1) /
                                                                 kUpFactor);
  for (std::size_t c = 0; c < in.channels.size(); ++c) {
    zalaccelerate::MRFState_Float* mrf = nullptr;
    zf::MRFInit(&mrf, kUpFactor, kDownFactor, filters.resampler.data(), tapsLen, silence, 0, 0);
    for (std::size_t done = 0; done < iterations; done += kResamplerIterations) {
      const auto count = static_cast<unsigned>(std::min(kResamplerIterations, iterations - done));
      zf::MRFProcess(in.channels[c].data() + done * kDownFactor,
                     out.channels[c].data() + done * kUpFactor, count, mrf);
    }
    zf::MRFFree(mrf);
  }
}

void Encode(const Planar& in, PcmAudio& out) {
  out = PcmAudio{.channels = static_cast<unsigned>(in.channels.size()),
                 .sampleRate = in.rate,
                 .bitsPerSample = 24,
                 .samples = {}};
  out.samples.resize(in.Frames() * out.BytesPerFrame());
  zu::InterleaveConvert(out.channels, static_cast<unsigned>(in.Frames()), Pointers(in).data(),
                        reinterpret_cast<int24_t*>(out.samples.data()), -23, true);
}

}  // namespace

std::size_t ResampledFrames(std::size_t frames) {
  return frames / kDownFactor * kUpFactor;
}

unsigned ResampledRate(unsigned rate) {
  return static_cast<unsigned>(std::uint64_t{rate} * kUpFactor / kDownFactor);
}

const Stages kLibraryStages = {"library", Decode, Lowpass, Highpass, Resample, Encode};

}  // namespace demo
