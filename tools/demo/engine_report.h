// The engine's report as the host framework shows it: started through the engine's
// registration, collected through the debug monitor.
#pragma once

namespace demo {

void PrintEngineReport();

}  // namespace demo
