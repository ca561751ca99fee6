// The shared library in a host's start-up: one registry, one debug monitor and one executor for
// the host and the library, the report built on this processor and withdrawn at shutdown.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <string>
#include <thread>

#include "zalaccelerate/core.h"
#include "zalaccelerate/engine/engine.h"
#include "zalcore/debug_monitor.h"
#include "zalcore/initializer_registrar.h"
#include "zalcore/string_conversion.h"

namespace {

std::u16string Reports() {
  zalcore::UTF16StringStream stream;
  zalcore::debug::RequestDebugReports(stream);
  return std::move(stream).str();
}

TEST(EngineStart, HostStartsTheEngineAndCollectsItsReport) {
  auto& registry = zalcore::config::InitializerRegistry::Global();
  const auto outcome = registry.InitializeAll(4);
  EXPECT_TRUE(outcome.problems.empty());
  ASSERT_TRUE(
      std::ranges::count(outcome.initialized, zalaccelerate::engine::kEngineInitializerName));

  EXPECT_EQ(Reports(), u"");
  std::u16string report;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while ((report = Reports()).empty() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }

  std::uint64_t features = 0;
  engGetCpuFeatures(&features, nullptr);
  char line[64];
  std::snprintf(line, sizeof line, "\nCPU Features:  0x%08" PRIX64 "\n", features);
  EXPECT_NE(report.find(zalcore::string::AsciiToUTF16(line)), std::u16string::npos);
  const EngLibraryVersion* version = engLibraryVersion();
  const std::u16string target(version->targetCpu, version->targetCpu + 4);
  EXPECT_EQ(report.rfind(u"Engine Target CPU:  " + target + u"\n", 0), 0u);

  registry.TerminateAll();
  EXPECT_EQ(Reports(), u"");
}

}  // namespace
