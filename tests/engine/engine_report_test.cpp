// The diagnostics report: its exact text for recorded facts, the request state machine, and the
// registration's life through init, terminate and a build still running.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "zalaccelerate/core.h"
#include "zalaccelerate/engine/engine.h"
#include "zalaccelerate/engine/engine_report.h"
#include "zalcore/debug_monitor.h"
#include "zalcore/initializer_registrar.h"
#include "zalcore/string_conversion.h"

namespace zalaccelerate::engine {
namespace {

using zalcore::UTF16StringStream;

const EngLibraryVersion kFullVersion = {
    0, 1, 0, 7, {'A', 'V', 'X', '2'}, "zalaccelerate engine", "0.1.0 (abc1234)", "Nov 25 2026"};
const EngLibraryVersion kBareVersion = {3,       14,      15,     92, {'S', 'S', 'E', '2'},
                                        nullptr, nullptr, nullptr};

// The lines every report shares after the features, for registers 00A00F11 00000800 7FFAF3FF
// 178BFBFF.
constexpr char16_t kCpuidLines[] =
    u"CPUID:  \n"
    u"\tEAX:  0x00A00F11\n"
    u"\tEBX:  0x00000800\n"
    u"\tECX:  0x7FFAF3FF\n"
    u"\tEDX:  0x178BFBFF\n";

EngineFacts Facts(const EngLibraryVersion* version, std::uint64_t features) {
  EngineFacts facts;
  facts.version = version;
  facts.cpuMhz = 2450;
  facts.maxCacheBytes = 32 << 20;
  facts.features = features;
  facts.cpuid[0] = 0x00A00F11;
  facts.cpuid[1] = 0x800;
  facts.cpuid[2] = 0x7FFAF3FF;
  facts.cpuid[3] = 0x178BFBFF;
  return facts;
}

std::u16string Report(const EngineFacts& facts) {
  UTF16StringStream stream;
  WriteEngineReport(facts, stream);
  return std::move(stream).str();
}

TEST(EngineReport, TextForRecordedFacts) {
  struct Case {
    const char* what;
    EngineFacts facts;
    std::u16string head;  // everything before the CPUID lines
  };
  const Case cases[] = {
      {"the six lowest features", Facts(&kFullVersion, 0x3F),
       u"Engine Target CPU:  AVX2\n"
       u"Engine Name:  zalaccelerate engine\n"
       u"Engine Version:  0.1.0 (abc1234)\n"
       u"Engine Build Date:  Nov 25 2026\n"
       u"CPU Frequency:  2450 MHz\n"
       u"Max L2/L3 Cache Size:  32 MB\n"
       u"CPU Features:  0x0000003F\n"
       u"\tMMX  \t\tMMX technology supported\n"
       u"\tSSE   \t\tStreaming SIMD Extensions\n"
       u"\tSSE2 \t\tStreaming SIMD Extensions 2\n"
       u"\tSSE3 \t\tStreaming SIMD Extensions 3\n"
       u"\tSSSE3\t\tSupplemental Streaming SIMD\n"
       u"\tMOVBE\t\tThe processor supports MOVBE instruction\n"},
      {"only bit 31, and no name, version text or date", Facts(&kBareVersion, 0x80000000),
       u"Engine Target CPU:  SSE2\n"
       u"Engine Version:  3.14.15.92\n"
       u"CPU Frequency:  2450 MHz\n"
       u"Max L2/L3 Cache Size:  32 MB\n"
       u"CPU Features:  0x80000000\n"
       u"\tKNC  \t\tMany-core coprocessor\n"},
      {"bits without a line, and no version record", Facts(nullptr, 0xFFFFFFFF78000000),
       u"CPU Frequency:  2450 MHz\n"
       u"Max L2/L3 Cache Size:  32 MB\n"
       u"CPU Features:  0xFFFFFFFF78000000\n"},
      {"a processor with AVX2 and no AVX-512",
       Facts(&kBareVersion, 0xFEFFF & ~std::uint64_t{0x1000}),
       u"Engine Target CPU:  SSE2\n"
       u"Engine Version:  3.14.15.92\n"
       u"CPU Frequency:  2450 MHz\n"
       u"Max L2/L3 Cache Size:  32 MB\n"
       u"CPU Features:  0x000FEFFF\n"
       u"\tMMX  \t\tMMX technology supported\n"
       u"\tSSE   \t\tStreaming SIMD Extensions\n"
       u"\tSSE2 \t\tStreaming SIMD Extensions 2\n"
       u"\tSSE3 \t\tStreaming SIMD Extensions 3\n"
       u"\tSSSE3\t\tSupplemental Streaming SIMD\n"
       u"\tMOVBE\t\tThe processor supports MOVBE instruction\n"
       u"\tSSE41\t\tStreaming SIMD Extensions 4.1\n"
       u"\tSSE42\t\tStreaming SIMD Extensions 4.2\n"
       u"\tAVX  \t\tAdvanced Vector Extensions instruction set\n"
       u"\tENABLEDBYOS\tThe operating system supports AVX\n"
       u"\tAES   \t\tAES instruction\n"
       u"\tCLMUL\t\tPCLMULQDQ instruction\n"
       u"\tRDRAND\tRead Random Number instructions\n"
       u"\tF16C \t\tFloat16 instructions\n"
       u"\tAVX2 \t\tAdvanced Vector Extensions 2 instruction set\n"
       u"\tADCOX\t\tADCX and ADOX instructions\n"
       u"\tRDSEED\tThe RDSEED instruction\n"
       u"\tPREFETCHW\tThe PREFETCHW instruction\n"
       u"\tSHA  \t\tSHA Extensions\n"},
      {"every bit that has a line", Facts(&kBareVersion, 0x87FFFFFF),
       u"Engine Target CPU:  SSE2\n"
       u"Engine Version:  3.14.15.92\n"
       u"CPU Frequency:  2450 MHz\n"
       u"Max L2/L3 Cache Size:  32 MB\n"
       u"CPU Features:  0x87FFFFFF\n"
       u"\tMMX  \t\tMMX technology supported\n"
       u"\tSSE   \t\tStreaming SIMD Extensions\n"
       u"\tSSE2 \t\tStreaming SIMD Extensions 2\n"
       u"\tSSE3 \t\tStreaming SIMD Extensions 3\n"
       u"\tSSSE3\t\tSupplemental Streaming SIMD\n"
       u"\tMOVBE\t\tThe processor supports MOVBE instruction\n"
       u"\tSSE41\t\tStreaming SIMD Extensions 4.1\n"
       u"\tSSE42\t\tStreaming SIMD Extensions 4.2\n"
       u"\tAVX  \t\tAdvanced Vector Extensions instruction set\n"
       u"\tENABLEDBYOS\tThe operating system supports AVX\n"
       u"\tAES   \t\tAES instruction\n"
       u"\tCLMUL\t\tPCLMULQDQ instruction\n"
       u"\tABR  \t\t(Reserved)\n"
       u"\tRDRAND\tRead Random Number instructions\n"
       u"\tF16C \t\tFloat16 instructions\n"
       u"\tAVX2 \t\tAdvanced Vector Extensions 2 instruction set\n"
       u"\tADCOX\t\tADCX and ADOX instructions\n"
       u"\tRDSEED\tThe RDSEED instruction\n"
       u"\tPREFETCHW\tThe PREFETCHW instruction\n"
       u"\tSHA  \t\tSHA Extensions\n"
       u"\tAVX512F\tAVX-512 Foundation instructions\n"
       u"\tAVX512CD\tAVX-512 Conflict Detection instructions\n"
       u"\tAVX512ER\tAVX-512 Exponential & Reciprocal instructions\n"
       u"\tAVX512PF\tAVX-512 Prefetch instructions\n"
       u"\tAVX512BW\tAVX-512 Byte & Word instructions\n"
       u"\tAVX512DQ\tAVX-512 DWord & QWord instructions\n"
       u"\tAVX512VL\tAVX-512 Vector Length extensions\n"
       u"\tKNC  \t\tMany-core coprocessor\n"},
  };
  for (const Case& c : cases) EXPECT_EQ(Report(c.facts), c.head + kCpuidLines) << c.what;
}

// What the queries leave when they write nothing (the cache size of a processor of another
// vendor is -1).
TEST(EngineReport, ZeroAndNegativeValuesAsTheQueriesLeftThem) {
  EngineFacts facts;
  facts.maxCacheBytes = -1;
  EXPECT_EQ(Report(facts),
            u"CPU Frequency:  0 MHz\n"
            u"Max L2/L3 Cache Size:  -1 B\n"
            u"CPU Features:  0x00000000\n"
            u"CPUID:  \n"
            u"\tEAX:  0x00000000\n"
            u"\tEBX:  0x00000000\n"
            u"\tECX:  0x00000000\n"
            u"\tEDX:  0x00000000\n");
}

// This processor, through the real queries: the fields agree with the engine's own answers.
// Takes the two to three seconds of the clock measurement.
TEST(EngineReport, ThisProcessorMatchesTheEngineQueries) {
  EngineFacts facts;
  GatherEngineFacts(&facts);
  ASSERT_EQ(facts.version, engLibraryVersion());
  std::uint64_t features = 0;
  std::uint32_t cpuid[4] = {};
  engGetCpuFeatures(&features, cpuid);
  int cache = 0;
  engGetMaxCacheSizeB(&cache);
  EXPECT_NE(engGetDispatchIndex(), -1);
  EXPECT_EQ(facts.features, features);
  EXPECT_TRUE(std::equal(cpuid, cpuid + 4, facts.cpuid));
  EXPECT_EQ(facts.maxCacheBytes, cache);
  EXPECT_GT(facts.cpuMhz, 0);

  const std::u16string text = Report(facts);
  const std::u16string target(facts.version->targetCpu, facts.version->targetCpu + 4);
  EXPECT_EQ(text.rfind(u"Engine Target CPU:  " + target + u"\n", 0), 0u);
  EXPECT_NE(text.find(u"Max L2/L3 Cache Size:  " +
                      zalcore::string::NumberToMemoryString(cache, 2, false) + u"\n"),
            std::u16string::npos);
}

// A facts source that counts its builds, can hold the builder until released, and is owned by
// the callbacks object: the probe's use count tells whether the object still exists.
struct Probe {
  std::atomic<int> builds{0};
  std::atomic<bool> hold{false};
  std::atomic<bool> building{false};
};

EngineFactsSource ProbeSource(const std::shared_ptr<Probe>& probe) {
  return [probe](EngineFacts* facts) {
    ++probe->builds;
    probe->building = true;
    while (probe->hold) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    *facts = Facts(&kFullVersion, 0x3F);
  };
}

const std::u16string& ExpectedProbeReport() {
  static const std::u16string text = Report(Facts(&kFullVersion, 0x3F));
  return text;
}

std::u16string Request(EngineDebugMonitorCallbacks& callbacks) {
  UTF16StringStream stream;
  callbacks.RequestReport(stream);
  return std::move(stream).str();
}

std::u16string MonitorReports() {
  UTF16StringStream stream;
  zalcore::debug::RequestDebugReports(stream);
  return std::move(stream).str();
}

template <typename Condition>
bool WaitFor(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

TEST(EngineReportStates, FirstRequestStartsTheBuildLaterOnesGetTheText) {
  auto probe = std::make_shared<Probe>();
  probe->hold = true;
  auto callbacks = std::make_shared<EngineDebugMonitorCallbacks>(ProbeSource(probe));
  EXPECT_EQ(callbacks->state(), EngineDebugMonitorCallbacks::kNotRequested);
  EXPECT_EQ(Request(*callbacks), u"");
  ASSERT_TRUE(WaitFor([&] { return probe->building.load(); }));
  EXPECT_EQ(callbacks->state(), EngineDebugMonitorCallbacks::kBuilding);
  EXPECT_EQ(Request(*callbacks), u"");
  probe->hold = false;
  ASSERT_TRUE(WaitFor([&] { return callbacks->state() == EngineDebugMonitorCallbacks::kReady; }));
  EXPECT_EQ(Request(*callbacks), ExpectedProbeReport());
  EXPECT_EQ(Request(*callbacks), ExpectedProbeReport());
  EXPECT_EQ(probe->builds.load(), 1);
}

TEST(EngineReportThreads, ManyRequestersPostExactlyOneBuild) {
  for (int round = 0; round < 20; ++round) {
    auto probe = std::make_shared<Probe>();
    auto callbacks = std::make_shared<EngineDebugMonitorCallbacks>(ProbeSource(probe));
    std::atomic<int> full{0};
    std::atomic<int> wrong{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> requesters;
    for (int t = 0; t < 8; ++t) {
      requesters.emplace_back([&] {
        while (!go) std::this_thread::yield();
        for (int i = 0; i < 200; ++i) {
          const std::u16string text = Request(*callbacks);
          if (text == ExpectedProbeReport()) {
            ++full;
          } else if (!text.empty()) {
            ++wrong;
          }
        }
      });
    }
    go = true;
    for (std::thread& requester : requesters) requester.join();
    ASSERT_TRUE(WaitFor([&] { return callbacks->state() == EngineDebugMonitorCallbacks::kReady; }));
    EXPECT_EQ(Request(*callbacks), ExpectedProbeReport());
    EXPECT_EQ(probe->builds.load(), 1);
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_LE(full.load(), 8 * 200 - 1);  // the first request contributed nothing
  }
}

// The registration through the start-up facility and the monitor, with a fast facts source.
class EngineRegistration : public ::testing::Test {
 protected:
  void SetUp() override {
    probe_ = std::make_shared<Probe>();
    replaced_ = ReplaceEngineFactsSource(ProbeSource(probe_));
  }
  void TearDown() override {
    TerminateEngine();
    probe_->hold = false;
    ReplaceEngineFactsSource(replaced_);
    EXPECT_TRUE(WaitFor([&] { return probe_.use_count() == 1; }));
  }
  // Requests until the finished text arrives.
  std::u16string AwaitReport() {
    std::u16string text;
    WaitFor([&] {
      text = MonitorReports();
      return !text.empty();
    });
    return text;
  }

  // Holds on the probe with no callbacks object alive: the test's and the replaced source's.
  static constexpr long kIdle = 2;
  std::shared_ptr<Probe> probe_;
  EngineFactsSource replaced_;
};

TEST_F(EngineRegistration, StartsAfterTheDebugMonitorInItsContextOnly) {
  auto& registry = zalcore::config::InitializerRegistry::Global();
  const auto other_context = registry.InitializeAll(2);
  EXPECT_FALSE(std::ranges::count(other_context.initialized, kEngineInitializerName));
  registry.TerminateAll();

  const auto outcome = registry.InitializeAll(4);
  EXPECT_TRUE(outcome.problems.empty());
  const auto& started = outcome.initialized;
  const auto engine = std::ranges::find(started, kEngineInitializerName);
  ASSERT_NE(engine, started.end());
  EXPECT_LT(std::ranges::find(started, "zalcore::debug"), engine);
  EXPECT_EQ(MonitorReports(), u"");
  EXPECT_EQ(AwaitReport(), ExpectedProbeReport());
  registry.TerminateAll();
  EXPECT_EQ(MonitorReports(), u"");
}

TEST_F(EngineRegistration, InitTwiceReplacesAndReleasesTheFirstObject) {
  ASSERT_TRUE(InitEngine());
  EXPECT_EQ(MonitorReports(), u"");
  EXPECT_EQ(AwaitReport(), ExpectedProbeReport());
  ASSERT_TRUE(InitEngine());
  // The first object is gone and no longer reports; the new one starts its own build.
  EXPECT_TRUE(WaitFor([&] { return probe_.use_count() == kIdle + 1; }));
  EXPECT_EQ(MonitorReports(), u"");
  EXPECT_EQ(AwaitReport(), ExpectedProbeReport());
  EXPECT_EQ(probe_->builds.load(), 2);
}

TEST_F(EngineRegistration, TerminateTwiceAndWithoutInitIsHarmless) {
  TerminateEngine();
  ASSERT_TRUE(InitEngine());
  TerminateEngine();
  TerminateEngine();
  EXPECT_EQ(MonitorReports(), u"");
  EXPECT_EQ(probe_.use_count(), kIdle);
}

TEST_F(EngineRegistration, TerminateDuringABuildLetsTheBuildFinishThenReleases) {
  probe_->hold = true;
  ASSERT_TRUE(InitEngine());
  EXPECT_EQ(MonitorReports(), u"");
  ASSERT_TRUE(WaitFor([&] { return probe_->building.load(); }));
  TerminateEngine();
  EXPECT_EQ(MonitorReports(), u"");
  // The running build still holds its object.
  EXPECT_EQ(probe_.use_count(), kIdle + 1);
  probe_->hold = false;
  EXPECT_TRUE(WaitFor([&] { return probe_.use_count() == kIdle; }));
  EXPECT_EQ(MonitorReports(), u"");
  EXPECT_EQ(probe_->builds.load(), 1);
}

}  // namespace
}  // namespace zalaccelerate::engine
