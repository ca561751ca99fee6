#include <atomic>
#include <memory>

#include "zalaccelerate/engine/engine.h"
#include "zalaccelerate/engine/engine_report.h"
#include "zalcore/debug_monitor.h"
#include "zalcore/initializer_registrar.h"

namespace zalaccelerate::engine {
namespace {

using Registered = std::shared_ptr<EngineDebugMonitorCallbacks>;

// The registered object's owning handle; null while not registered. A plain pointer swapped
// atomically, so that init and terminate take no lock.
std::atomic<Registered*> g_registered{nullptr};

void Release(Registered* registered) {
  if (!registered) return;
  zalcore::debug::UnregisterDebugMonitorCallback(kEngineDebugMonitorName);
  delete registered;
}

constexpr std::uint32_t kEngineContextFlags = 4;

const zalcore::config::InitializerRegistrar kRegistration(kEngineInitializerName,
                                                          kEngineContextFlags, InitEngine,
                                                          TerminateEngine, {"zalcore::debug"});

}  // namespace

bool InitEngine() {
  auto* registered =
      new Registered(std::make_shared<EngineDebugMonitorCallbacks>(EngineFactsSourceForInit()));
  // The monitor's callback holds the object too, so a report being collected on another thread
  // while terminate runs never reaches a destroyed object.
  zalcore::debug::RegisterDebugMonitorCallback(
      kEngineDebugMonitorName, [callbacks = *registered](zalcore::UTF16StringStream& stream) {
        callbacks->RequestReport(stream);
      });
  // The monitor unregisters the earliest registration under the name: the previous object's.
  Release(g_registered.exchange(registered, std::memory_order_acq_rel));
  return true;
}

void TerminateEngine() {
  Release(g_registered.exchange(nullptr, std::memory_order_acq_rel));
}

}  // namespace zalaccelerate::engine
