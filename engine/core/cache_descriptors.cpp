#include "engine/core/cache_size.h"

namespace zal::engine {

CacheSize MaxCacheFromDescriptors(const CpuidRegisters&) { return {-1, engStsNoErr, 0}; }

}  // namespace zal::engine
