// The diagnostics report's text, apart from when and where it is built: gathering the facts and
// writing them are separate so that tests can write reports of processors this is not.
#pragma once

#include <cstdint>

#include "zalaccelerate/core.h"
#include "zalaccelerate/engine/engine.h"
#include "zalcore/utf16_string_stream.h"

namespace zalaccelerate::engine {

struct EngineFacts {
  const EngLibraryVersion* version = nullptr;  // no version lines when null
  int cpuMhz = 0;
  int maxCacheBytes = 0;
  std::uint64_t features = 0;
  std::uint32_t cpuid[4] = {};  // EAX, EBX, ECX, EDX of leaf 1
};

// Starts dispatch, then asks the engine; what a query leaves unwritten stays zero.
void GatherEngineFacts(EngineFacts* facts);

void WriteEngineReport(const EngineFacts& facts, zalcore::UTF16StringStream& stream);

// The source that InitEngine gives its objects (GatherEngineFacts unless replaced); returns the
// one replaced. For tests, before InitEngine.
EngineFactsSource ReplaceEngineFactsSource(EngineFactsSource source);

// The source a new registration gets.
EngineFactsSource EngineFactsSourceForInit();

}  // namespace zalaccelerate::engine
