// engStartDispatch, engSelectCpuFeatures and the dispatch index accessors.
#include "engine/core/cpu_features.h"
#include "engine/core/dispatch.h"
#include "engine/core/feature_selection.h"
#include "engine/core/level.h"
#include "engine/core/selected_features.h"

namespace zal::engine {
namespace {

std::atomic<std::uint64_t> g_selected_features{0};

constexpr std::uint64_t kBaselineFeatures = engCpuMMX | engCpuSSE | engCpuSSE2;

}  // namespace

std::uint64_t SelectedFeatures() {
  return g_selected_features.load(std::memory_order_relaxed);
}

void PutInForce(std::uint64_t features) {
  g_selected_features.store(features, std::memory_order_relaxed);
}

}  // namespace zal::engine

using namespace zal::engine;

EngStatus engSelectCpuFeatures(std::uint64_t features, int* level) {
  Selection selection{};
  if (features & engCpuBypassChecks) {
    ReplaceDetectedFeatures(SelectedFeatures());
    selection = SelectUnchecked(features & ~engCpuBypassChecks);
  } else {
    std::uint64_t actual = 0;
    DetectedFeatures(&actual);
    selection = SelectFeatures(features, actual);
  }
  if (level) *level = selection.level;
  PutInForce(selection.in_force);
  return selection.status;
}

EngStatus engStartDispatch() {
  std::uint64_t features = 0;
  if (!DetectedFeatures(&features)) {
    g_dispatch_index.store(0, std::memory_order_relaxed);
    PutInForce(kBaselineFeatures);
  }
  int level = 0;
  const EngStatus status = engSelectCpuFeatures(features, &level);
  g_dispatch_index.store(level, std::memory_order_relaxed);
  return IsReferenceVendor(ThisProcessor()) ? status : engStsNonReferenceVendorCpu;
}

std::uint64_t engGetSelectedCpuFeatures() {
  return SelectedFeatures();
}

int engGetDispatchIndex() {
  return g_dispatch_index.load(std::memory_order_relaxed);
}

void engSetDispatchIndex(int level) {
  if (level < -1 || level >= kLevelCount) return;
  g_dispatch_index.store(level, std::memory_order_relaxed);
}
