#include <cstdint>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "zalaccelerate/core.h"

namespace {

struct QuotedText {
  EngStatus code;
  const char* text;
};

// The texts fixed for the codes the library produces or that mark special entries.
constexpr QuotedText kQuotedTexts[] = {
    {-9999, "engStsCpuNotSupportedErr: The target CPU is not supported"},
    {-9998, "engStsInplaceModeNotSupportedErr: The inplace operation is currently not supported"},
    {-9702, "No shared libraries were found in the Waterfall procedure"},
    {-9701, "No DLLs were found in the Waterfall procedure"},
    {-9700, "Error at loading of %s library"},
    {-216, "engStsUnknownStatusCodeErr: Unknown status code"},
    {-10, "engStsDivByZeroErr: An attempt to divide by zero"},
    {-9, "engStsMemAllocErr: Memory allocated for the operation is not enough"},
    {-8, "engStsNullPtrErr: Null pointer error"},
    {-7,
     "engStsRangeErr: Incorrect values for bounds: the lower bound is greater than the upper "
     "bound"},
    {-6, "engStsSizeErr: Incorrect value for data size"},
    {-5, "engStsBadArgErr: Incorrect arg/param of the function"},
    {-4, "engStsNoMemErr: Not enough memory for the operation"},
    {-2, "engStsErr: Unknown/unspecified error, -2"},
    {0, "engStsNoErr: No errors"},
    {1, "engStsNoOperation: No operation has been executed"},
    {2, "engStsDivByZero: Zero value(s) for the divisor in the Div function"},
    {3, "engStsSqrtNegArg: Negative value(s) for the argument in the Sqrt function"},
    {4, "engStsInvZero: INF result. Zero value was met by InvThresh with zero level"},
    {7, "engStsLnZeroArg: Zero value(s) for the argument in the Ln function"},
    {8, "engStsLnNegArg: Negative value(s) for the argument in the Ln function"},
    {9, "engStsNanArg: Argument value is not a number"},
    {20, "engStsNonReferenceVendorCpu: The target CPU is not of the reference vendor"},
    {36, "engStsNotSupportedCpu: The CPU is not supported"},
    {37, "engStsUnknownCacheSize: The CPU is supported, but the size of the cache is unknown"},
    {49,
     "engStsFeatureNotSupported: Current CPU doesn't support at least 1 of the desired features"},
    {50, "engStsUnknownFeature: At least one of the desired features is unknown"},
    {51, "engStsFeaturesCombination: Wrong combination of features"},
    {52, "engStsAccurateModeNotSupported: Accurate mode is not supported"},
    {53, "The function is inefficient due to the combination of input parameters"},
};

TEST(StatusMessagesTest, FixedTextsAreExact) {
  for (const QuotedText& q : kQuotedTexts) {
    SCOPED_TRACE(q.code);
    EXPECT_STREQ(engStatusMessage(q.code), q.text);
  }
}

TEST(StatusMessagesTest, UnknownCodesGiveUnknownStatusText) {
  constexpr EngStatus kUnknown[] = {12345, -3, 6, 54, -10000, INT32_MIN, INT32_MAX};
  for (EngStatus code : kUnknown) {
    SCOPED_TRACE(code);
    EXPECT_STREQ(engStatusMessage(code), "engStsUnknownStatusCodeErr: Unknown status code");
  }
}

struct NamedCode {
  const char* name;  // empty for the codes whose text is a bare description
  EngStatus code;
};

// Every table entry, in table order.
constexpr NamedCode kNamedCodes[] = {
    {"engStsCpuNotSupportedErr", -9999},
    {"engStsInplaceModeNotSupportedErr", -9998},
    {"", -9702},
    {"", -9701},
    {"", -9700},
    {"engStsIIRIIRLengthErr", -234},
    {"engStsWarpTransformTypeErr", -233},
    {"engStsExceededSizeErr", -232},
    {"engStsWarpDirectionErr", -231},
    {"engStsFilterTypeErr", -230},
    {"engStsNormErr", -229},
    {"engStsAlgTypeErr", -228},
    {"engStsMisalignedOffsetErr", -227},
    {"engStsBorderErr", -225},
    {"engStsDitherTypeErr", -224},
    {"engStsLoadDynErr", -221},
    {"engStsUnknownStatusCodeErr", -216},
    {"engStsLzoBrokenStreamErr", -214},
    {"engStsRoundModeNotSupportedErr", -213},
    {"engStsDecimateFractionErr", -212},
    {"engStsWeightErr", -211},
    {"engStsQualityIndexErr", -210},
    {"engStsIIRPassbandRippleErr", -209},
    {"engStsFilterFrequencyErr", -208},
    {"engStsIIRGenOrderErr", -206},
    {"engStsConvergeErr", -205},
    {"engStsSizeMatchMatrixErr", -204},
    {"engStsCountMatrixErr", -203},
    {"engStsRoiShiftMatrixErr", -202},
    {"engStsSrcDataErr", -200},
    {"engStsSingularErr", -195},
    {"engStsSparseErr", -194},
    {"engStsRegExpOptionsErr", -190},
    {"engStsRegExpErr", -189},
    {"engStsRegExpMatchLimitErr", -188},
    {"engStsRegExpQuantifierErr", -187},
    {"engStsRegExpGroupingErr", -186},
    {"engStsRegExpBackRefErr", -185},
    {"engStsRegExpChClassErr", -184},
    {"engStsRegExpMetaChErr", -183},
    {"engStsStrideMatrixErr", -182},
    {"engStsNoiseRangeErr", -125},
    {"engStsNotEvenStepErr", -108},
    {"engStsHistoNofLevelsErr", -107},
    {"engStsLUTNofLevelsErr", -106},
    {"engStsChannelOrderErr", -60},
    {"engStsDataTypeErr", -59},
    {"engStsQuadErr", -58},
    {"engStsRectErr", -57},
    {"engStsCoeffErr", -56},
    {"engStsNoiseValErr", -55},
    {"engStsDitherLevelsErr", -54},
    {"engStsNumChannelsErr", -53},
    {"engStsCOIErr", -52},
    {"engStsDivisorErr", -51},
    {"engStsAlphaTypeErr", -50},
    {"engStsGammaRangeErr", -49},
    {"engStsChannelErr", -47},
    {"engStsToneMagnErr", -46},
    {"engStsToneFreqErr", -45},
    {"engStsTonePhaseErr", -44},
    {"engStsTrnglMagnErr", -43},
    {"engStsTrnglFreqErr", -42},
    {"engStsTrnglPhaseErr", -41},
    {"engStsTrnglAsymErr", -40},
    {"engStsHugeWinErr", -39},
    {"engStsJaehneErr", -38},
    {"engStsStrideErr", -37},
    {"engStsEpsValErr", -36},
    {"engStsWtOffsetErr", -35},
    {"engStsAnchorErr", -34},
    {"engStsMaskSizeErr", -33},
    {"engStsShiftErr", -32},
    {"engStsSampleFactorErr", -31},
    {"engStsSamplePhaseErr", -30},
    {"engStsFIRMRFactorErr", -29},
    {"engStsFIRMRPhaseErr", -28},
    {"engStsRelFreqErr", -27},
    {"engStsFIRLenErr", -26},
    {"engStsIIROrderErr", -25},
    {"engStsResizeFactorErr", -24},
    {"engStsInterpolationErr", -23},
    {"engStsMirrorFlipErr", -22},
    {"engStsMoment00ZeroErr", -21},
    {"engStsThreshNegLevelErr", -20},
    {"engStsThresholdErr", -19},
    {"engStsFftFlagErr", -18},
    {"engStsFftOrderErr", -17},
    {"engStsStepErr", -16},
    {"engStsLengthErr", -15},
    {"engStsNotSupportedModeErr", -14},
    {"engStsContextMatchErr", -13},
    {"engStsScaleRangeErr", -12},
    {"engStsOutOfRangeErr", -11},
    {"engStsDivByZeroErr", -10},
    {"engStsMemAllocErr", -9},
    {"engStsNullPtrErr", -8},
    {"engStsRangeErr", -7},
    {"engStsSizeErr", -6},
    {"engStsBadArgErr", -5},
    {"engStsNoMemErr", -4},
    {"engStsErr", -2},
    {"engStsNoErr", 0},
    {"engStsNoOperation", 1},
    {"engStsDivByZero", 2},
    {"engStsSqrtNegArg", 3},
    {"engStsInvZero", 4},
    {"engStsEvenMedianMaskSize", 5},
    {"engStsLnZeroArg", 7},
    {"engStsLnNegArg", 8},
    {"engStsNanArg", 9},
    {"engStsOverflow", 12},
    {"engStsUnderflow", 17},
    {"engStsSingularity", 18},
    {"engStsDomain", 19},
    {"engStsNonReferenceVendorCpu", 20},
    {"engStsCpuMismatch", 21},
    {"engStsOvermuchStrings", 26},
    {"engStsOverlongString", 27},
    {"engStsAffineQuadChanged", 28},
    {"engStsWrongIntersectROI", 29},
    {"engStsWrongIntersectQuad", 30},
    {"engStsSrcSizeLessExpected", 32},
    {"engStsDstSizeLessExpected", 33},
    {"engStsDoubleSize", 35},
    {"engStsNotSupportedCpu", 36},
    {"engStsUnknownCacheSize", 37},
    {"engStsSymKernelExpected", 38},
    {"engStsEvenMedianWeight", 39},
    {"engStsWrongIntersectVOI", 40},
    {"engStsWaterfall", 43},
    {"engStsNoAntialiasing", 46},
    {"engStsRepetitiveSrcData", 47},
    {"engStsSizeWrn", 48},
    {"engStsFeatureNotSupported", 49},
    {"engStsUnknownFeature", 50},
    {"engStsFeaturesCombination", 51},
    {"engStsAccurateModeNotSupported", 52},
    {"", 53},
};

TEST(StatusMessagesTest, NamedCodesCoverTheTable) {
  ASSERT_EQ(std::size(kNamedCodes), 139u);
  std::set<EngStatus> codes;
  for (const NamedCode& n : kNamedCodes) codes.insert(n.code);
  EXPECT_EQ(codes.size(), std::size(kNamedCodes));
}

TEST(StatusMessagesTest, EveryTextStartsWithItsName) {
  for (const NamedCode& n : kNamedCodes) {
    SCOPED_TRACE(n.code);
    const std::string_view text = engStatusMessage(n.code);
    const std::string_view name = n.name;
    if (name.empty()) {
      EXPECT_FALSE(text.starts_with("engSts")) << text;
    } else {
      EXPECT_TRUE(text.starts_with(std::string(name) + ": ")) << text;
    }
  }
}

}  // namespace
