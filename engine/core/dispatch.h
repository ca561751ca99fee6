// Dispatch: one process-wide index and one table per primitive. A dispatched call is a load of
// the index, an address computation and an indirect tail jump into the selected level's kernel.
// While the index is -1 the entry reached is the primitive's initialisation stub, which selects
// the level and calls again.
//
// Baseline code only: level translation units never include this header.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "engine/core/primitive_declarations.h"

namespace zal::engine {

// Relaxed atomic accesses: plain 32-bit loads and stores, which racing first calls may issue
// freely because every thread stores the same level.
extern std::atomic<std::int32_t> g_dispatch_index;

// Entries: initialisation stub, levels 0..5, null. Indexed by dispatch index + 1.
inline constexpr int kDispatchTableEntries = 8;
template <class Shape>
using DispatchTable = Shape* [kDispatchTableEntries];

// All tables back to back, in one writable area.
struct DispatchTables {
#define ZAL_DISPATCH_TABLE(family, name, shape, accuracy) DispatchTable<shape> name;
  ZAL_PRIMITIVES(ZAL_DISPATCH_TABLE)
#undef ZAL_DISPATCH_TABLE
};
extern DispatchTables g_dispatch_tables;

template <auto kTable, class Shape>
struct Dispatcher;

template <auto kTable, class Result, class... Args>
struct Dispatcher<kTable, Result(Args...)> {
  static Result Call(Args... args) {
    const std::ptrdiff_t level = g_dispatch_index.load(std::memory_order_relaxed);
    const auto* levels = (g_dispatch_tables.*kTable) + 1;
    return levels[level](args...);
  }
  static Result Initialise(Args... args) {
    engStartDispatch();
    return Call(args...);
  }
};

// dispatch::Name(args...) calls the primitive Name at the selected level.
namespace dispatch {
#define ZAL_DISPATCHER(family, name, shape, accuracy) \
  inline constexpr shape& name = Dispatcher<&DispatchTables::name, shape>::Call;
ZAL_PRIMITIVES(ZAL_DISPATCHER)
#undef ZAL_DISPATCHER
}  // namespace dispatch

}  // namespace zal::engine
