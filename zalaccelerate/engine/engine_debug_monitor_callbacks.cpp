#include <utility>

#include "zalaccelerate/engine/engine.h"
#include "zalaccelerate/engine/engine_report.h"
#include "zalcore/thread_pool.h"

namespace zalaccelerate::engine {

EngineDebugMonitorCallbacks::EngineDebugMonitorCallbacks(EngineFactsSource source)
    : source_(std::move(source)) {}

EngineDebugMonitorCallbacks::~EngineDebugMonitorCallbacks() = default;

void EngineDebugMonitorCallbacks::RequestReport(zalcore::UTF16StringStream& stream) {
  std::int64_t expected = kNotRequested;
  if (state_.compare_exchange_strong(expected, kBuilding, std::memory_order_acq_rel)) {
    // The task's hold keeps the object alive through a terminate during the build.
    const bool posted = zalcore::threads::GetCPUBoundExecutor().Post(
        [self = shared_from_this()] { self->BuildReport(); });
    // An executor that has shut down runs nothing: the next request may try again.
    if (!posted) state_.store(kNotRequested, std::memory_order_release);
    return;
  }
  if (expected == kReady) stream << report_;
}

void EngineDebugMonitorCallbacks::BuildReport() {
  EngineFacts facts;
  if (source_) source_(&facts);
  zalcore::UTF16StringStream text;
  WriteEngineReport(facts, text);
  report_ = std::move(text).str();
  state_.exchange(kReady, std::memory_order_acq_rel);
}

}  // namespace zalaccelerate::engine
