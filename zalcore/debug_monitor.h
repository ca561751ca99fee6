// The host framework's debug monitor: components register report callbacks by name, and a
// diagnostics request collects every report into one stream.
#pragma once

#include <functional>
#include <string>

#include "zalcore/utf16_string_stream.h"

namespace zalcore::debug {

// Appends the component's report (or nothing) to the stream.
using DebugReportCallback = std::function<void(UTF16StringStream&)>;
// Asked before each report; false skips the component this time. Empty means always.
using DebugReportEnabledCallback = std::function<bool()>;

// Adds a report callback under `name`. A name may be registered more than once; each
// registration reports on its own. False (nothing registered) for an empty report callback.
bool RegisterDebugMonitorCallback(const std::string& name, DebugReportCallback report,
                                  DebugReportEnabledCallback enabled = {});

// Removes the earliest registration still under `name`; false if there is none. A report that
// has already started may still be running on another thread when this returns: callbacks keep
// alive what they use (the monitor holds a copy of each callback until it has called it).
bool UnregisterDebugMonitorCallback(const std::string& name);

// Calls every enabled report callback, in registration order, with `stream`. Callbacks run on
// the calling thread and outside the monitor's lock, so they may register and unregister.
void RequestDebugReports(UTF16StringStream& stream);

}  // namespace zalcore::debug
