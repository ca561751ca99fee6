// Declares every primitive in each level namespace and in the portable one.
#pragma once

#include <type_traits>

#include "engine/core/level_list.h"
#include "engine/core/primitive_list.h"
#include "engine/core/shapes.h"

#define ZAL_DECLARE_PRIMITIVE(family, name, shape, accuracy) shape name;
#define ZAL_DECLARE_LEVEL(level)        \
  namespace zal::engine::level {        \
  ZAL_PRIMITIVES(ZAL_DECLARE_PRIMITIVE) \
  }
ZAL_FOR_EACH_LEVEL(ZAL_DECLARE_LEVEL)
ZAL_DECLARE_LEVEL(portable)
#undef ZAL_DECLARE_LEVEL
#undef ZAL_DECLARE_PRIMITIVE

// Placed after a family's kernels: an overload that does not match its shape fails here.
#define ZAL_CHECK_SHAPE(family, name, shape, accuracy)            \
  namespace zal::engine {                                         \
  static_assert(std::is_same_v<decltype(ZAL_LEVEL::name), shape>, \
                #name " does not match its shape");               \
  }
