// engGetCpuFreqMhz: time-stamp counter ticks over whole calendar seconds.
#include "engine/core/platform.h"
#include "zalaccelerate/core.h"

namespace {

// Ticks from now until the calendar second has changed.
std::uint64_t TicksToNextSecond() {
  namespace platform = zal::engine::platform;
  const std::uint64_t start = platform::ReadTimeStampCounter();
  const std::int64_t second = platform::CalendarSeconds();
  while (platform::CalendarSeconds() - second < 1) {
  }
  return platform::ReadTimeStampCounter() - start;
}

}  // namespace

EngStatus engGetCpuFreqMhz(int* mhz) {
  if (!mhz) return engStsNullPtrErr;
  TicksToNextSecond();  // began part-way through a second
  const float first = static_cast<float>(TicksToNextSecond());
  const float second = static_cast<float>(TicksToNextSecond());
  const float sum = first + second;
  *mhz = static_cast<int>(static_cast<double>(sum) / 1000000.0 * 0.5);
  return engStsNoErr;
}
