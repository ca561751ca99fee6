#include <iterator>

#include "zalaccelerate/core.h"

namespace {

struct StatusText {
  EngStatus code;
  const char* text;
};

// Ascending by code; the lookup scans linearly and does not rely on the order.
constexpr StatusText kStatusTexts[] = {
    {-9999, "engStsCpuNotSupportedErr: The target CPU is not supported"},
    {-9998, "engStsInplaceModeNotSupportedErr: The inplace operation is currently not supported"},
    {-9702, "No shared libraries were found in the Waterfall procedure"},
    {-9701, "No DLLs were found in the Waterfall procedure"},
    {-9700, "Error at loading of %s library"},
    {-234, "engStsIIRIIRLengthErr: Vector length is too small for the IIR-IIR filter"},
    {-233, "engStsWarpTransformTypeErr: Invalid warp transform type"},
    {-232, "engStsExceededSizeErr: Requested size exceeds the supported maximum"},
    {-231, "engStsWarpDirectionErr: Invalid warp direction"},
    {-230, "engStsFilterTypeErr: Invalid filter type"},
    {-229, "engStsNormErr: Invalid norm type"},
    {-228, "engStsAlgTypeErr: Invalid algorithm type"},
    {-227, "engStsMisalignedOffsetErr: Offset is not aligned to the element size"},
    {-225, "engStsBorderErr: Invalid border type"},
    {-224, "engStsDitherTypeErr: Invalid dithering type"},
    {-221, "engStsLoadDynErr: Failed to load the dynamic library"},
    {-216, "engStsUnknownStatusCodeErr: Unknown status code"},
    {-214, "engStsLzoBrokenStreamErr: Compressed stream is broken"},
    {-213, "engStsRoundModeNotSupportedErr: Rounding mode is not supported"},
    {-212, "engStsDecimateFractionErr: Invalid decimation fraction"},
    {-211, "engStsWeightErr: Invalid weight value"},
    {-210, "engStsQualityIndexErr: Quality index cannot be computed: an image is constant"},
    {-209, "engStsIIRPassbandRippleErr: Passband ripple of the IIR filter is out of range"},
    {-208, "engStsFilterFrequencyErr: Cutoff frequency of the filter is out of range"},
    {-206, "engStsIIRGenOrderErr: Order of the generated IIR filter is out of range"},
    {-205, "engStsConvergeErr: Algorithm did not converge"},
    {-204, "engStsSizeMatchMatrixErr: Matrix sizes do not match the operation"},
    {-203, "engStsCountMatrixErr: Invalid number of matrices"},
    {-202, "engStsRoiShiftMatrixErr: Invalid ROI shift of a matrix"},
    {-200, "engStsSrcDataErr: Source data are invalid"},
    {-195, "engStsSingularErr: Matrix is singular"},
    {-194, "engStsSparseErr: Tap positions of the sparse filter are not strictly ascending"},
    {-190, "engStsRegExpOptionsErr: Invalid regular expression options"},
    {-189, "engStsRegExpErr: Invalid regular expression"},
    {-188, "engStsRegExpMatchLimitErr: Match limit of the regular expression was exceeded"},
    {-187, "engStsRegExpQuantifierErr: Invalid quantifier in the regular expression"},
    {-186, "engStsRegExpGroupingErr: Invalid grouping in the regular expression"},
    {-185, "engStsRegExpBackRefErr: Invalid back reference in the regular expression"},
    {-184, "engStsRegExpChClassErr: Invalid character class in the regular expression"},
    {-183, "engStsRegExpMetaChErr: Invalid metacharacter in the regular expression"},
    {-182, "engStsStrideMatrixErr: Invalid stride of a matrix"},
    {-125, "engStsNoiseRangeErr: Noise value is out of range"},
    {-108, "engStsNotEvenStepErr: Step is not a multiple of the element size"},
    {-107, "engStsHistoNofLevelsErr: Number of histogram levels is less than 2"},
    {-106, "engStsLUTNofLevelsErr: Number of lookup table levels is less than 2"},
    {-60, "engStsChannelOrderErr: Invalid channel order"},
    {-59, "engStsDataTypeErr: Data type is not supported"},
    {-58, "engStsQuadErr: Quadrangle is degenerate"},
    {-57, "engStsRectErr: Width or height of the rectangle is less than 1"},
    {-56, "engStsCoeffErr: Invalid transform coefficients"},
    {-55, "engStsNoiseValErr: Invalid noise value"},
    {-54, "engStsDitherLevelsErr: Number of dithering levels is out of range"},
    {-53, "engStsNumChannelsErr: Invalid number of channels"},
    {-52, "engStsCOIErr: Channel of interest is out of range"},
    {-51, "engStsDivisorErr: Divisor is zero"},
    {-50, "engStsAlphaTypeErr: Invalid alpha composition type"},
    {-49, "engStsGammaRangeErr: Bounds of the gamma range are invalid"},
    {-47, "engStsChannelErr: Invalid channel number"},
    {-46, "engStsToneMagnErr: Tone magnitude is less than or equal to zero"},
    {-45, "engStsToneFreqErr: Tone frequency is out of the range [0, 0.5)"},
    {-44, "engStsTonePhaseErr: Tone phase is out of the range [0, 2*PI)"},
    {-43, "engStsTrnglMagnErr: Triangle magnitude is less than or equal to zero"},
    {-42, "engStsTrnglFreqErr: Triangle frequency is out of the range [0, 0.5)"},
    {-41, "engStsTrnglPhaseErr: Triangle phase is out of the range [0, 2*PI)"},
    {-40, "engStsTrnglAsymErr: Triangle asymmetry is out of the range [-PI, PI)"},
    {-39, "engStsHugeWinErr: Kaiser window is too big"},
    {-38, "engStsJaehneErr: Invalid magnitude of the Jaehne test pattern"},
    {-37, "engStsStrideErr: Stride is less than the row length"},
    {-36, "engStsEpsValErr: Epsilon value is negative"},
    {-35, "engStsWtOffsetErr: Invalid offset of the wavelet filter"},
    {-34, "engStsAnchorErr: Anchor point is outside the mask"},
    {-33, "engStsMaskSizeErr: Invalid mask size"},
    {-32, "engStsShiftErr: Shift value is out of range"},
    {-31, "engStsSampleFactorErr: Sampling factor is less than 1"},
    {-30, "engStsSamplePhaseErr: Sampling phase is out of the range [0, factor)"},
    {-29, "engStsFIRMRFactorErr: Multi-rate FIR factor is less than 1"},
    {-28, "engStsFIRMRPhaseErr: Multi-rate FIR phase is out of the range [0, factor)"},
    {-27, "engStsRelFreqErr: Relative frequency is out of the range [0, 0.5]"},
    {-26, "engStsFIRLenErr: Length of a FIR filter is less than 1"},
    {-25, "engStsIIROrderErr: Order of an IIR filter is out of range"},
    {-24, "engStsResizeFactorErr: Resize factor is less than or equal to zero"},
    {-23, "engStsInterpolationErr: Invalid interpolation mode"},
    {-22, "engStsMirrorFlipErr: Invalid flip mode"},
    {-21, "engStsMoment00ZeroErr: Zero-order moment is zero"},
    {-20, "engStsThreshNegLevelErr: Negative level value for the threshold"},
    {-19, "engStsThresholdErr: Invalid threshold bounds"},
    {-18, "engStsFftFlagErr: Invalid FFT flag value"},
    {-17, "engStsFftOrderErr: FFT order is out of range"},
    {-16, "engStsStepErr: Step value is not valid"},
    {-15, "engStsLengthErr: Length is less than or equal to zero"},
    {-14, "engStsNotSupportedModeErr: Mode is not supported"},
    {-13, "engStsContextMatchErr: Context does not match the operation"},
    {-12, "engStsScaleRangeErr: Scale bounds are out of range"},
    {-11, "engStsOutOfRangeErr: Argument is out of range, or a point is outside the image"},
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
    {5,
     "engStsEvenMedianMaskSize: Even mask size of the median filter was replaced by the next odd "
     "size"},
    {7, "engStsLnZeroArg: Zero value(s) for the argument in the Ln function"},
    {8, "engStsLnNegArg: Negative value(s) for the argument in the Ln function"},
    {9, "engStsNanArg: Argument value is not a number"},
    {12, "engStsOverflow: Overflow in the operation"},
    {17, "engStsUnderflow: Underflow in the operation"},
    {18, "engStsSingularity: Singularity in the operation"},
    {19, "engStsDomain: Argument is out of the function domain"},
    {20, "engStsNonReferenceVendorCpu: The target CPU is not of the reference vendor"},
    {21, "engStsCpuMismatch: The requested features do not match the CPU"},
    {26, "engStsOvermuchStrings: Number of strings exceeds the limit; the excess is ignored"},
    {27, "engStsOverlongString: Length of a string exceeds the limit; the excess is ignored"},
    {28, "engStsAffineQuadChanged: Fourth vertex of the quadrangle was changed to make it affine"},
    {29, "engStsWrongIntersectROI: ROI does not intersect the source or destination image"},
    {30, "engStsWrongIntersectQuad: Quadrangle does not intersect the source or destination image"},
    {32, "engStsSrcSizeLessExpected: Source buffer is smaller than expected"},
    {33, "engStsDstSizeLessExpected: Destination buffer is smaller than expected"},
    {35, "engStsDoubleSize: Image size is odd; the last row or column is ignored"},
    {36, "engStsNotSupportedCpu: The CPU is not supported"},
    {37, "engStsUnknownCacheSize: The CPU is supported, but the size of the cache is unknown"},
    {38, "engStsSymKernelExpected: Kernel is not symmetric"},
    {39, "engStsEvenMedianWeight: Sum of the median weights is even"},
    {40, "engStsWrongIntersectVOI: VOI does not intersect the source or destination volume"},
    {43,
     "engStsWaterfall: Library for the best CPU level could not be loaded; a lower level is used"},
    {46, "engStsNoAntialiasing: Antialiasing is not supported for this mode"},
    {47, "engStsRepetitiveSrcData: Source data are repetitive"},
    {48, "engStsSizeWrn: Size of the result was adjusted"},
    {49,
     "engStsFeatureNotSupported: Current CPU doesn't support at least 1 of the desired features"},
    {50, "engStsUnknownFeature: At least one of the desired features is unknown"},
    {51, "engStsFeaturesCombination: Wrong combination of features"},
    {52, "engStsAccurateModeNotSupported: Accurate mode is not supported"},
    {53, "The function is inefficient due to the combination of input parameters"},
};

static_assert(std::size(kStatusTexts) == 139);

constexpr EngStatus kUnknownStatusCode = -216;

constexpr const StatusText* findEntry(EngStatus code) {
  for (const StatusText& entry : kStatusTexts) {
    if (entry.code == code) return &entry;
  }
  return nullptr;
}

// The fallback lookup below dereferences this entry unchecked; a missing one fails here instead.
static_assert(findEntry(kUnknownStatusCode)->code == kUnknownStatusCode);

}  // namespace

const char* engStatusMessage(EngStatus status) {
  const StatusText* entry = findEntry(status);
  if (entry == nullptr) entry = findEntry(kUnknownStatusCode);
  return entry->text;
}
