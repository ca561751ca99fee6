#include "zalcore/debug_monitor.h"

#include <mutex>
#include <utility>
#include <vector>

#include "zalcore/initializer_registrar.h"

namespace zalcore::debug {
namespace {

struct Registration {
  std::string name;
  DebugReportCallback report;
  DebugReportEnabledCallback enabled;
};

struct Monitor {
  std::mutex mutex;
  std::vector<Registration> registrations;
};

// Never destroyed: components unregister from their own static destructors.
Monitor& TheMonitor() {
  static Monitor* const monitor = new Monitor;
  return *monitor;
}

bool InitDebugMonitor() {
  return true;
}

// What is still registered when the monitor shuts down reports no more.
void TerminateDebugMonitor() {
  Monitor& monitor = TheMonitor();
  std::vector<Registration> released;
  {
    const std::lock_guard lock(monitor.mutex);
    released.swap(monitor.registrations);
  }
}

const config::InitializerRegistrar kRegistration("zalcore::debug", config::kAllContexts,
                                                 InitDebugMonitor, TerminateDebugMonitor, {});

}  // namespace

bool RegisterDebugMonitorCallback(const std::string& name, DebugReportCallback report,
                                  DebugReportEnabledCallback enabled) {
  if (!report) return false;
  Monitor& monitor = TheMonitor();
  const std::lock_guard lock(monitor.mutex);
  monitor.registrations.push_back({name, std::move(report), std::move(enabled)});
  return true;
}

bool UnregisterDebugMonitorCallback(const std::string& name) {
  Monitor& monitor = TheMonitor();
  Registration removed;
  {
    const std::lock_guard lock(monitor.mutex);
    auto& list = monitor.registrations;
    for (auto it = list.begin(); it != list.end(); ++it) {
      if (it->name == name) {
        removed = std::move(*it);
        list.erase(it);
        break;
      }
    }
  }
  // The callbacks are destroyed here, outside the lock: they may own what they report on.
  return static_cast<bool>(removed.report);
}

void RequestDebugReports(UTF16StringStream& stream) {
  Monitor& monitor = TheMonitor();
  std::vector<Registration> snapshot;
  {
    const std::lock_guard lock(monitor.mutex);
    snapshot = monitor.registrations;
  }
  for (const Registration& registration : snapshot) {
    if (registration.enabled && !registration.enabled()) continue;
    registration.report(stream);
  }
}

}  // namespace zalcore::debug
