#include "zalaccelerate/engine/engine_report.h"

#include <cinttypes>
#include <cstdio>
#include <string_view>

#include "zalcore/string_conversion.h"

namespace zalaccelerate::engine {
namespace {

using zalcore::EndLine;
using zalcore::UTF16StringStream;
using zalcore::string::AsciiToUTF16;
using zalcore::string::Std8ToUTF16String;

struct FeatureLine {
  int bit;
  std::u16string_view text;
};

// The labels' uneven blanks and tabs are the report's own; keep them.
constexpr FeatureLine kFeatureLines[] = {
    {0, u"\tMMX  \t\tMMX technology supported"},
    {1, u"\tSSE   \t\tStreaming SIMD Extensions"},
    {2, u"\tSSE2 \t\tStreaming SIMD Extensions 2"},
    {3, u"\tSSE3 \t\tStreaming SIMD Extensions 3"},
    {4, u"\tSSSE3\t\tSupplemental Streaming SIMD"},
    {5, u"\tMOVBE\t\tThe processor supports MOVBE instruction"},
    {6, u"\tSSE41\t\tStreaming SIMD Extensions 4.1"},
    {7, u"\tSSE42\t\tStreaming SIMD Extensions 4.2"},
    {8, u"\tAVX  \t\tAdvanced Vector Extensions instruction set"},
    {9, u"\tENABLEDBYOS\tThe operating system supports AVX"},
    {10, u"\tAES   \t\tAES instruction"},
    {11, u"\tCLMUL\t\tPCLMULQDQ instruction"},
    {12, u"\tABR  \t\t(Reserved)"},
    {13, u"\tRDRAND\tRead Random Number instructions"},
    {14, u"\tF16C \t\tFloat16 instructions"},
    {15, u"\tAVX2 \t\tAdvanced Vector Extensions 2 instruction set"},
    {16, u"\tADCOX\t\tADCX and ADOX instructions"},
    {17, u"\tRDSEED\tThe RDSEED instruction"},
    {18, u"\tPREFETCHW\tThe PREFETCHW instruction"},
    {19, u"\tSHA  \t\tSHA Extensions"},
    {20, u"\tAVX512F\tAVX-512 Foundation instructions"},
    {21, u"\tAVX512CD\tAVX-512 Conflict Detection instructions"},
    {22, u"\tAVX512ER\tAVX-512 Exponential & Reciprocal instructions"},
    {23, u"\tAVX512PF\tAVX-512 Prefetch instructions"},
    {24, u"\tAVX512BW\tAVX-512 Byte & Word instructions"},
    {25, u"\tAVX512DQ\tAVX-512 DWord & QWord instructions"},
    {26, u"\tAVX512VL\tAVX-512 Vector Length extensions"},
    {31, u"\tKNC  \t\tMany-core coprocessor"},
};

// Zero-filled upper-case hexadecimal of at least `width` digits. The conversion is put together
// at run time, the way the report has always printed it.
std::u16string Hexadecimal(std::uint64_t value, bool sixty_four_bits, unsigned width,
                           bool lower_case) {
  const char* conversion =
      sixty_four_bits ? (lower_case ? PRIx64 : PRIX64) : (lower_case ? PRIx32 : PRIX32);
  char format[16];
  std::snprintf(format, sizeof format, "%%0%u%s", width, conversion);
  char digits[24];
  if (sixty_four_bits) {
    std::snprintf(digits, sizeof digits, format, value);
  } else {
    std::snprintf(digits, sizeof digits, format, static_cast<std::uint32_t>(value));
  }
  return AsciiToUTF16(digits);
}

void WriteVersion(const EngLibraryVersion& version, UTF16StringStream& stream) {
  stream << u"Engine Target CPU:  "
         << AsciiToUTF16(std::string_view(version.targetCpu, sizeof version.targetCpu)) << EndLine;
  if (version.name) stream << u"Engine Name:  " << Std8ToUTF16String(version.name) << EndLine;
  stream << u"Engine Version:  ";
  if (version.version) {
    stream << Std8ToUTF16String(version.version);
  } else {
    stream << version.major << u'.' << version.minor << u'.' << version.majorBuild << u'.'
           << version.build;
  }
  stream << EndLine;
  if (version.buildDate) {
    stream << u"Engine Build Date:  " << Std8ToUTF16String(version.buildDate) << EndLine;
  }
}

EngineFactsSource& CurrentSource() {
  static EngineFactsSource source = GatherEngineFacts;
  return source;
}

}  // namespace

void GatherEngineFacts(EngineFacts* facts) {
  *facts = EngineFacts{};
  engStartDispatch();
  facts->version = engLibraryVersion();
  engGetCpuFreqMhz(&facts->cpuMhz);
  engGetMaxCacheSizeB(&facts->maxCacheBytes);
  engGetCpuFeatures(&facts->features, facts->cpuid);
}

void WriteEngineReport(const EngineFacts& facts, UTF16StringStream& stream) {
  if (facts.version) WriteVersion(*facts.version, stream);
  stream << u"CPU Frequency:  " << facts.cpuMhz << u" MHz" << EndLine;
  stream << u"Max L2/L3 Cache Size:  "
         << zalcore::string::NumberToMemoryString(facts.maxCacheBytes, 2, false) << EndLine;
  stream << u"CPU Features:  0x" << Hexadecimal(facts.features, true, 8, false) << EndLine;
  for (const FeatureLine& line : kFeatureLines) {
    if (facts.features >> line.bit & 1) stream << line.text << EndLine;
  }
  stream << u"CPUID:  " << EndLine;
  static constexpr std::u16string_view kRegisterLabels[] = {u"\tEAX:  0x", u"\tEBX:  0x",
                                                            u"\tECX:  0x", u"\tEDX:  0x"};
  for (int i = 0; i < 4; ++i) {
    stream << kRegisterLabels[i] << Hexadecimal(facts.cpuid[i], false, 8, false) << EndLine;
  }
}

EngineFactsSource ReplaceEngineFactsSource(EngineFactsSource source) {
  EngineFactsSource replaced = std::move(CurrentSource());
  CurrentSource() = source ? std::move(source) : EngineFactsSource(GatherEngineFacts);
  return replaced;
}

// Read by InitEngine.
EngineFactsSource EngineFactsSourceForInit() {
  return CurrentSource();
}

}  // namespace zalaccelerate::engine
