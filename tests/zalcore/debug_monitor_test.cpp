#include <zalcore/debug_monitor.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using zalcore::UTF16StringStream;
using zalcore::debug::RegisterDebugMonitorCallback;
using zalcore::debug::RequestDebugReports;
using zalcore::debug::UnregisterDebugMonitorCallback;

std::u16string Reports() {
  UTF16StringStream stream;
  RequestDebugReports(stream);
  return std::move(stream).str();
}

auto Writes(std::u16string text) {
  return [text](UTF16StringStream& stream) { stream << text; };
}

TEST(DebugMonitor, ReportsInRegistrationOrderAndUnregistersTheEarliestOfAName) {
  ASSERT_EQ(Reports(), u"");
  EXPECT_FALSE(RegisterDebugMonitorCallback("empty", {}));
  EXPECT_TRUE(RegisterDebugMonitorCallback("one", Writes(u"1")));
  EXPECT_TRUE(RegisterDebugMonitorCallback("two", Writes(u"2")));
  EXPECT_TRUE(RegisterDebugMonitorCallback("one", Writes(u"3")));
  EXPECT_TRUE(RegisterDebugMonitorCallback("off", Writes(u"x"), [] { return false; }));
  EXPECT_TRUE(RegisterDebugMonitorCallback("on", Writes(u"4"), [] { return true; }));
  EXPECT_EQ(Reports(), u"1234");

  EXPECT_TRUE(UnregisterDebugMonitorCallback("one"));
  EXPECT_EQ(Reports(), u"234");
  EXPECT_TRUE(UnregisterDebugMonitorCallback("one"));
  EXPECT_FALSE(UnregisterDebugMonitorCallback("one"));
  EXPECT_FALSE(UnregisterDebugMonitorCallback("never"));
  for (const char* name : {"two", "off", "on"}) EXPECT_TRUE(UnregisterDebugMonitorCallback(name));
  EXPECT_EQ(Reports(), u"");
}

TEST(DebugMonitor, CallbacksMayUnregisterThemselvesAndUnregisteringReleasesThem) {
  auto owned = std::make_shared<int>(7);
  std::weak_ptr<int> watch = owned;
  RegisterDebugMonitorCallback("self", [owned = std::move(owned)](UTF16StringStream& stream) {
    stream << *owned;
    UnregisterDebugMonitorCallback("self");
  });
  EXPECT_EQ(Reports(), u"7");
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(Reports(), u"");
}

}  // namespace
