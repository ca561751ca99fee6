#include "engine/core/error_hook.h"

#include <atomic>

namespace zal::engine {
namespace {

void IgnoreMathError(int, EngStatus, const char*) {}

// A plain pointer swap: a report racing an installation reaches either hook.
std::atomic<EngErrorHook> g_error_hook{&IgnoreMathError};

}  // namespace

void ReportMathError(int index, EngStatus code, const char* tag) {
  g_error_hook.load(std::memory_order_relaxed)(index, code, tag);
}

}  // namespace zal::engine

EngErrorHook engSetErrorHook(EngErrorHook hook) {
  return zal::engine::g_error_hook.exchange(hook ? hook : &zal::engine::IgnoreMathError,
                                            std::memory_order_relaxed);
}
