// Choosing the variant level for a requested feature word.
#pragma once

#include <cstdint>

#include "zalaccelerate/core.h"

namespace zal::engine {

struct Selection {
  int level;
  std::uint64_t in_force;  // the word put in force: the request with the level's required mask
  EngStatus status;
};

// The level rules alone: what a word is given when nothing is checked against the processor.
Selection SelectUnchecked(std::uint64_t requested);

// The full selection for a request on a processor whose detected word is `actual`.
Selection SelectFeatures(std::uint64_t requested, std::uint64_t actual);

}  // namespace zal::engine
