// The library at work: its engine report, then a real audio pipeline — 16- or 24-bit WAV in,
// planar float, lowpass FIR, high-pass biquads, 48 kHz -> 44.1 kHz, 24-bit WAV out — timed
// stage by stage against plain loops and checked against a long-double reference.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "engine_report.h"
#include "filter_design.h"
#include "reference.h"
#include "spectrum.h"
#include "stages.h"
#include "svg_plot.h"
#include "test_signal.h"
#include "wav_file.h"

namespace {

using namespace demo;

constexpr double kSignalSeconds = 3.0;
constexpr int kRepetitions = 5;

struct Options {
  std::string input;  // empty: the built-in signal
  std::string outDir = "build/demo";
};

bool ParseOptions(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--out") == 0 && i + 1 < argc) {
      options.outDir = argv[++i];
    } else if (argv[i][0] != '-' && options.input.empty()) {
      options.input = argv[i];
    } else {
      return false;
    }
  }
  return true;
}

struct Outputs {
  Planar decoded, lowpassed, highpassed, resampled;
  PcmAudio encoded;
};

// Best of kRepetitions runs, in microseconds.
template <typename Run>
double TimeUs(Run run) {
  double best = INFINITY;
  for (int r = 0; r < kRepetitions; ++r) {
    const auto start = std::chrono::steady_clock::now();
    run();
    const std::chrono::duration<double, std::micro> elapsed =
        std::chrono::steady_clock::now() - start;
    best = std::min(best, elapsed.count());
  }
  return best;
}

struct StageTimes {
  double us[5];
};

constexpr const char* kStageNames[5] = {"decode to planar float", "lowpass FIR (63 taps)",
                                        "high-pass biquads (2)", "resample 147/160",
                                        "encode to 24-bit"};

StageTimes RunPipeline(const Stages& stages, const Filters& filters, const PcmAudio& input,
                       Outputs& out) {
  return {{TimeUs([&] { stages.decode(input, out.decoded); }),
           TimeUs([&] { stages.lowpass(filters, out.decoded, out.lowpassed); }),
           TimeUs([&] { stages.highpass(filters, out.lowpassed, out.highpassed); }),
           TimeUs([&] { stages.resample(filters, out.highpassed, out.resampled); }),
           TimeUs([&] { stages.encode(out.resampled, out.encoded); })}};
}

void PrintTimes(const StageTimes& ours, const StageTimes& plain, std::size_t frames,
                unsigned channels) {
  std::printf("\n%-26s %12s %12s %9s\n", "stage", "library µs", "plain µs", "speed-up");
  double ourTotal = 0, plainTotal = 0;
  for (int s = 0; s < 5; ++s) {
    std::printf("%-26s %12.1f %12.1f %8.1f×\n", kStageNames[s], ours.us[s], plain.us[s],
                plain.us[s] / ours.us[s]);
    ourTotal += ours.us[s];
    plainTotal += plain.us[s];
  }
  const double audioUs = 1e6 * static_cast<double>(frames) / kInputRate;
  std::printf("%-26s %12.1f %12.1f %8.1f×   (%.0f× faster than real time, %u channels)\n",
              "whole pipeline", ourTotal, plainTotal, plainTotal / ourTotal, audioUs / ourTotal,
              channels);
}

struct Error {
  long double worst = 0;   // before the 24-bit conversion, full scale 1
  long long worstLsb = 0;  // after it
};

// The worst difference of a pipeline's output from the long-double one.
Error ErrorAgainst(const std::vector<std::vector<long double>>& reference, const Outputs& out) {
  Error error;
  for (std::size_t c = 0; c < reference.size(); ++c) {
    for (std::size_t n = 0; n < reference[c].size(); ++n) {
      const long double exact = reference[c][n];
      error.worst = std::max(error.worst, std::fabs(exact - out.resampled.channels[c][n]));
      const std::uint8_t* p = &out.encoded.samples[(n * reference.size() + c) * 3];
      const auto bits =
          static_cast<std::int32_t>(std::uint32_t{p[0]} << 8 | std::uint32_t{p[1]} << 16 |
                                    std::uint32_t{p[2]} << 24) >>
          8;
      const auto rounded = static_cast<long long>(
          std::clamp(std::roundl(exact * 8388608.0L), -8388608.0L, 8388607.0L));
      error.worstLsb = std::max(error.worstLsb, std::llabs(rounded - bits));
    }
  }
  return error;
}

void PrintAccuracy(const Filters& filters, const PcmAudio& input, const Outputs& ours,
                   const Outputs& plain) {
  const auto reference = ReferencePipeline(filters, input);
  std::printf("\nworst error against the same pipeline in long double (full scale 1):\n");
  for (const auto& [name, out] : {std::pair{"library", &ours}, std::pair{"plain loops", &plain}}) {
    const Error error = ErrorAgainst(reference, *out);
    std::printf("  %-12s %.3Lg (%.1Lf dB below full scale), %lld LSB after the 24-bit conversion\n",
                name, error.worst, -20 * std::log10(std::max(error.worst, 1e-30L)), error.worstLsb);
  }
}

std::vector<Point> Response(const Filters& filters, double (*gainDb)(const Filters&, double)) {
  std::vector<Point> points;
  for (double hz = 10; hz <= 24000; hz *= 1.01) points.push_back({hz, gainDb(filters, hz)});
  return points;
}

std::string WritePlot(const Filters& filters, const Outputs& out, const std::string& dir) {
  const Panel panels[] = {
      {"Spectrum, left channel (dB relative to a full-scale sine)",
       10,
       24000,
       -160,
       0,
       {{"input, 48 kHz", "#1f77b4", PowerSpectrumDb(out.decoded.channels[0], kInputRate)},
        {"output, 44.1 kHz", "#d62728",
         PowerSpectrumDb(out.resampled.channels[0], out.resampled.rate)}}},
      {"Filter responses (dB)",
       10,
       24000,
       -120,
       5,
       {{"lowpass FIR", "#2ca02c", Response(filters, LowpassGainDb)},
        {"high-pass biquads", "#9467bd", Response(filters, HighpassGainDb)},
        {"resampler anti-alias", "#ff7f0e", Response(filters, ResamplerGainDb)}}},
  };
  const std::string path = dir + "/spectra.svg";
  std::ofstream(path) << RenderSvg(panels);
  return path;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!ParseOptions(argc, argv, options)) {
    std::fprintf(stderr, "usage: zal_demo [input.wav] [--out DIR]\n");
    return 2;
  }
  PcmAudio input;
  std::string error;
  if (options.input.empty()) {
    input = MakeTestSignal(kSignalSeconds);
  } else if (auto read = ReadWav(options.input, error)) {
    input = std::move(*read);
  } else {
    std::fprintf(stderr, "zal_demo: %s: %s\n", options.input.c_str(), error.c_str());
    return 1;
  }

  PrintEngineReport();
  if (options.input.empty()) {
    std::printf(
        "\ninput: %.0f s of a built-in chord with rumble, a 21 kHz whistle and noise, "
        "48 kHz, stereo, 24-bit\n",
        kSignalSeconds);
  } else {
    std::printf("\ninput: %s, %u Hz, %u channels, %u-bit, %zu frames\n", options.input.c_str(),
                input.sampleRate, input.channels, input.bitsPerSample, input.Frames());
    if (input.sampleRate != kInputRate) {
      std::printf(
          "(the filters are designed for 48 kHz; this file is resampled by the same "
          "147/160)\n");
    }
  }
  const Filters filters = DesignFilters();
  Outputs ours, plain;
  const StageTimes ourTimes = RunPipeline(kLibraryStages, filters, input, ours);
  const StageTimes plainTimes = RunPipeline(kPlainStages, filters, input, plain);
  PrintTimes(ourTimes, plainTimes, input.Frames(), input.channels);
  PrintAccuracy(filters, input, ours, plain);

  std::error_code ignored;
  std::filesystem::create_directories(options.outDir, ignored);
  const std::string inPath = options.outDir + "/input.wav";
  const std::string outPath = options.outDir + "/output.wav";
  if ((options.input.empty() && !WriteWav(inPath, input, error)) ||
      !WriteWav(outPath, ours.encoded, error)) {
    std::fprintf(stderr, "zal_demo: %s\n", error.c_str());
    return 1;
  }
  const std::string plot = WritePlot(filters, ours, options.outDir);
  const std::string written = (options.input.empty() ? inPath + ", " : "") + outPath + ", " + plot;
  std::printf("\nwritten: %s\n", written.c_str());
  return 0;
}
