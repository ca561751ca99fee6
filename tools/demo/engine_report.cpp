#include "engine_report.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>

#include "zalcore/debug_monitor.h"
#include "zalcore/initializer_registrar.h"
#include "zalcore/utf16_string_stream.h"

namespace demo {
namespace {

// The context flags the engine's initializer asks for.
constexpr std::uint32_t kHostContext = 4;

// The report's text is ASCII but for a few symbols; those of the basic plane are enough here.
std::string ToUtf8(const std::u16string& text) {
  std::string out;
  for (char16_t c : text) {
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | c >> 6);
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xE0 | c >> 12);
      out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

}  // namespace

// As the host does it: start every registered initializer (the engine's among them), ask the
// debug monitor for its reports until the engine's, built on a worker thread because it measures
// the clock rate, is there, and shut down.
void PrintEngineReport() {
  auto& registry = zalcore::config::InitializerRegistry::Global();
  registry.InitializeAll(kHostContext);
  std::u16string text;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (text.empty() && std::chrono::steady_clock::now() < deadline) {
    zalcore::UTF16StringStream stream;
    zalcore::debug::RequestDebugReports(stream);
    text = std::move(stream).str();
    if (text.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  std::printf("%s", text.empty() ? "(the engine report did not arrive)\n" : ToUtf8(text).c_str());
  registry.TerminateAll();
}

}  // namespace demo
