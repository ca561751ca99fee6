#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <cfloat>
#include <thread>

#include "zalaccelerate/core.h"
#include "zalaccelerate/utility.h"

namespace {

namespace utility = zalaccelerate::utility;

constexpr unsigned kDaz = 0x40;
constexpr unsigned kFtz = 0x8000;
constexpr unsigned kDefaultCsr = 0x1F80;  // all exceptions masked, round to nearest

// Every test starts from the default register and leaves the thread as it found it.
class DenormalModes : public testing::Test {
 protected:
  void SetUp() override {
    saved_ = _mm_getcsr();
    _mm_setcsr(kDefaultCsr);
  }
  void TearDown() override { _mm_setcsr(saved_); }

 private:
  unsigned saved_ = 0;
};

// Through volatile so the compiler cannot fold the arithmetic at build time.
float Product(float a, float b) {
  volatile float x = a;
  volatile float y = b;
  return x * y;
}

TEST_F(DenormalModes, FlushToZeroFlushesDenormalResults) {
  EXPECT_NE(Product(FLT_MIN, 0.5f), 0.0f);
  utility::SetFlushDenormalsToZero(true);
  EXPECT_EQ(Product(FLT_MIN, 0.5f), 0.0f);
  EXPECT_EQ(Product(FLT_MIN, 2.0f), 2 * FLT_MIN);
  EXPECT_FALSE(utility::GetFlushDenormalsToZero());
  utility::SetFlushDenormalsToZero(false);
  EXPECT_EQ(Product(FLT_MIN, 0.5f), FLT_MIN / 2);
}

TEST_F(DenormalModes, DenormalsAreZeroReadsDenormalOperandsAsZero) {
  const float denormal = FLT_MIN / 4;
  utility::SetDenormalsAreZero(true);
  EXPECT_EQ(Product(denormal, 4.0f), 0.0f);
  EXPECT_FALSE(utility::GetDenormalsAreZero());
  utility::SetDenormalsAreZero(false);
  EXPECT_EQ(Product(denormal, 4.0f), FLT_MIN);
}

TEST_F(DenormalModes, ExceptionSetterAndGettersTouchNothing) {
  for (unsigned start : {kDefaultCsr, kDefaultCsr | kFtz | kDaz, 0x1780u}) {
    _mm_setcsr(start);
    utility::SetDenormalExceptionsEnabled(true);
    utility::SetDenormalExceptionsEnabled(false);
    EXPECT_FALSE(utility::GetDenormalExceptionsEnabled());
    EXPECT_FALSE(utility::GetFlushDenormalsToZero());
    EXPECT_FALSE(utility::GetDenormalsAreZero());
    EXPECT_EQ(_mm_getcsr(), start);
  }
}

// The engine operation on concrete registers: whether the underflow exception ends masked, and
// what the caller's saved word receives.
struct FlushCase {
  unsigned before;
  int flag;
  bool pass_saved;
  unsigned saved_in;
  unsigned after;
  unsigned saved_out;
};

const FlushCase kFlushCases[] = {
    // On: FTZ set, underflow masked whatever it was; the old mask bit handed back.
    {0x1F80, 1, true, 0xDEAD, 0x9F80, 0x800},
    {0x1780, 1, true, 0xDEAD, 0x9F80, 0x0},
    {0x1780, 1, false, 0, 0x9F80, 0},
    {0x1F80 | kDaz, 1, true, 7, 0x9F80 | kDaz, 0x800},
    // Off: FTZ cleared; the masks change only for a saved word of 0, which unmasks underflow.
    {0x9F80, 0, false, 0, 0x1F80, 0},
    {0x9F80, 0, true, 0x800, 0x1F80, 0x800},
    {0x9F80, 0, true, 0, 0x1780, 0},
    {0x9780 | kDaz, 0, true, 0, 0x1780 | kDaz, 0},
    {0x1F80, 0, true, 0, 0x1780, 0},
};

TEST_F(DenormalModes, FlushToZeroModeOnConcreteRegisters) {
  for (const FlushCase& c : kFlushCases) {
    SCOPED_TRACE(testing::Message() << std::hex << "before 0x" << c.before << " flag " << c.flag
                                    << " saved 0x" << c.saved_in);
    _mm_setcsr(c.before);
    unsigned saved = c.saved_in;
    EXPECT_EQ(engSetFlushToZeroMode(c.flag, c.pass_saved ? &saved : nullptr), engStsNoErr);
    const unsigned after = _mm_getcsr();
    _mm_setcsr(kDefaultCsr);
    EXPECT_EQ(after, c.after);
    if (c.pass_saved) {
      EXPECT_EQ(saved, c.saved_out);
    }
  }
}

TEST_F(DenormalModes, DenormalsAreZeroModeTouchesOnlyItsBit) {
  for (unsigned start : {kDefaultCsr, kDefaultCsr | kFtz, 0x1780u | kFtz}) {
    _mm_setcsr(start);
    EXPECT_EQ(engSetDenormalsAreZeroMode(1), engStsNoErr);
    EXPECT_EQ(_mm_getcsr(), start | kDaz);
    EXPECT_EQ(engSetDenormalsAreZeroMode(0), engStsNoErr);
    EXPECT_EQ(_mm_getcsr(), start);
  }
}

TEST_F(DenormalModes, ModesBelongToTheCallingThread) {
  unsigned other_thread_csr = 0;
  std::thread([&] {
    utility::SetFlushDenormalsToZero(true);
    utility::SetDenormalsAreZero(true);
    other_thread_csr = _mm_getcsr();
  }).join();
  EXPECT_EQ(other_thread_csr & (kFtz | kDaz), kFtz | kDaz);
  EXPECT_EQ(_mm_getcsr(), kDefaultCsr);
}

}  // namespace
