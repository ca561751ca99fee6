// The feature word put in force by the last selection.
#pragma once

#include <cstdint>

namespace zal::engine {

std::uint64_t SelectedFeatures();
void PutInForce(std::uint64_t features);

}  // namespace zal::engine
