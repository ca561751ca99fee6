// The few calls that differ between platforms and compilers; each platform implements them in
// one file of its own.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/core/cpuid_source.h"

namespace zal::engine::platform {

CpuidRegisters Cpuid(std::uint32_t leaf, std::uint32_t subleaf);
std::uint64_t Xgetbv0();
std::uint64_t ReadTimeStampCounter();
// Calendar time in whole seconds.
std::int64_t CalendarSeconds();
// The MXCSR mask field of the FXSAVE image: which MXCSR bits the processor supports (0: default).
std::uint32_t FxsaveMxcsrMask();
// Writes `count` copies of `pattern` from dst on with the string-store instruction, which fills
// whole cache lines without reading them first and leaves them in the cache.
void StoreRepeatedQwords(void* dst, std::uint64_t pattern, std::size_t count);

}  // namespace zal::engine::platform
