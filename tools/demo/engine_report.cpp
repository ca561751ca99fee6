#include "engine_report.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "zalaccelerate/engine/engine.h"
#include "zalcore/debug_monitor.h"
#include "zalcore/utf16_string_stream.h"

namespace demo {
namespace {

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

// The first request only starts the report's build on a worker thread, as it does in the host;
// ask again until the text is there.
void PrintEngineReport() {
  zalaccelerate::engine::InitEngine();
  std::u16string text;
  for (int attempt = 0; attempt < 200 && text.empty(); ++attempt) {
    zalcore::UTF16StringStream stream;
    zalcore::debug::RequestDebugReports(stream);
    text = stream.str();
    if (text.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  std::printf("%s", text.empty() ? "(the engine report did not arrive)\n" : ToUtf8(text).c_str());
  zalaccelerate::engine::TerminateEngine();
}

}  // namespace demo
