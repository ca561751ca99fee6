// The engine's part in the host framework's start-up and its diagnostics report.
//
// Loading the library registers the start-up initializer "zalaccelerate::engine" (context flags
// 4, depending on "zalcore::debug") with zalcore::config. Its init function, InitEngine, offers
// the debug monitor a report named "zalaccelerate.Engine"; its terminate function,
// TerminateEngine, withdraws it. The primitives need neither: dispatch starts itself at first use.
//
// The report is built once per registration, on the framework's CPU-bound executor, because
// measuring the clock rate takes two to three seconds:
//   - the first request starts the build and contributes nothing;
//   - a request while the build runs contributes nothing;
//   - every later request contributes the finished text.
// The text (each line ends with the stream's end of line, u'\n'):
//   Engine Target CPU:  <4-character code of the selected level>
//   Engine Name:  <name>
//   Engine Version:  <version text>
//   Engine Build Date:  <date>
//   CPU Frequency:  <whole MHz> MHz
//   Max L2/L3 Cache Size:  <bytes, by zalcore::string::NumberToMemoryString(bytes, 2, false)>
//   CPU Features:  0x<feature word, upper-case hexadecimal, at least 8 digits>
//   <one line per known feature bit that is set: a tab, the label, one or two tabs, a description>
//   CPUID:  (the label's two blanks end the line)
//   \tEAX:  0x<leaf 1 EAX, 8 upper-case hexadecimal digits>   (then EBX, ECX, EDX alike)
// A missing name or build date leaves its line out; without a version text the version is the
// four version numbers joined by dots. Bits 27-30 and 32-63 of the feature word have no line.
// Values a query could not give are shown as the query left them (zero, or -1 bytes of cache on a
// processor of another vendor).
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "zalaccelerate/export.h"
#include "zalcore/utf16_string_stream.h"

namespace zalaccelerate::engine {

inline constexpr const char* kEngineInitializerName = "zalaccelerate::engine";
inline constexpr const char* kEngineDebugMonitorName = "zalaccelerate.Engine";

struct EngineFacts;
// Fills in what the report shows; the default measures this processor.
using EngineFactsSource = std::function<void(EngineFacts*)>;

// The report's state and text for one registration.
//
// A running build is protected against TerminateEngine by shared ownership: the posted build task
// holds the object (as the monitor's copy of the report callback does while a report is being
// collected), so terminating only drops the registration's hold, and the object is destroyed by
// whichever of them lets go last. A build that outlives its registration finishes into an object
// nobody can ask any more, and touches nothing else.
class ZAL_API EngineDebugMonitorCallbacks
    : public std::enable_shared_from_this<EngineDebugMonitorCallbacks> {
 public:
  enum State : std::int64_t { kNotRequested = 0, kBuilding = 1, kReady = 2 };

  explicit EngineDebugMonitorCallbacks(EngineFactsSource source);
  ~EngineDebugMonitorCallbacks();

  // The debug monitor's callback. Any thread; the state word alone orders requesters and the
  // builder, so exactly one build is posted. Needs the object to be owned by a shared_ptr.
  void RequestReport(zalcore::UTF16StringStream& stream);

  State state() const { return static_cast<State>(state_.load(std::memory_order_acquire)); }

  EngineDebugMonitorCallbacks(const EngineDebugMonitorCallbacks&) = delete;
  EngineDebugMonitorCallbacks& operator=(const EngineDebugMonitorCallbacks&) = delete;

 private:
  void BuildReport();

  std::atomic<std::int64_t> state_{kNotRequested};
  std::u16string report_;
  EngineFactsSource source_;
};

// Creates a callbacks object and registers its report with the debug monitor; an object
// registered before is unregistered and released (after the new one is registered, so that a
// report requested meanwhile still finds the engine). Always true. Init and terminate are called
// by the start-up facility, one at a time.
ZAL_API bool InitEngine();

// Unregisters the report and releases the object; nothing when not initialised, so calling it
// twice is harmless.
ZAL_API void TerminateEngine();

}  // namespace zalaccelerate::engine
