// The primitive engine's own API: processor detection, variant selection and dispatch,
// processor information, the library version record and the floating-point modes.
//
// Every primitive of the library exists in six variants, one per x86-64 level:
//   0 SSE2 (SSE3 where present)   1 SSSE3   2 SSE4.2   3 AVX   4 AVX2+FMA+BMI1/2   5 AVX-512
//   F/CD/BW/DQ/VL
// The level is chosen once per process, at the first call of any primitive (from any thread),
// by detecting the processor; no environment variable or setting overrides it.
#pragma once

#include <cstdint>

#include "zalaccelerate/engine_status.h"
#include "zalaccelerate/export.h"

// Processor feature word: one bit per feature, as detected from CPUID and XGETBV.
enum : std::uint64_t {
  engCpuMMX = 0x1,
  engCpuSSE = 0x2,
  engCpuSSE2 = 0x4,
  engCpuSSE3 = 0x8,
  engCpuSSSE3 = 0x10,
  engCpuMOVBE = 0x20,
  engCpuSSE41 = 0x40,
  engCpuSSE42 = 0x80,
  engCpuAVX = 0x100,
  engCpuEnabledByOS = 0x200,  // OSXSAVE, and the OS saves the SSE and AVX state
  engCpuAES = 0x400,
  engCpuCLMUL = 0x800,
  engCpuABR = 0x1000,  // reserved, never detected
  engCpuRDRAND = 0x2000,
  engCpuF16C = 0x4000,
  engCpuAVX2 = 0x8000,  // AVX2 together with FMA, BMI1 and BMI2
  engCpuADCOX = 0x10000,
  engCpuRDSEED = 0x20000,
  engCpuPREFETCHW = 0x40000,
  engCpuSHA = 0x80000,
  engCpuAVX512F = 0x100000,
  engCpuAVX512CD = 0x200000,
  engCpuAVX512ER = 0x400000,
  engCpuAVX512PF = 0x800000,
  engCpuAVX512BW = 0x1000000,
  engCpuAVX512DQ = 0x2000000,
  engCpuAVX512VL = 0x4000000,
  engCpuAVX512VBMI = 0x8000000,
  engCpuMPX = 0x10000000,
  engCpuAVX512_4FMAPS = 0x20000000,
  engCpuAVX512_4VNNIW = 0x40000000,
  engCpuKNC = 0x80000000,
  engCpuAVX512IFMA = 0x100000000,
  engCpuAVX512EnabledByOS = 0x200000000,  // OSXSAVE, and the OS saves opmask and ZMM state
  engCpuAVX512VPOPCNTDQ = 0x400000000,
  engCpuAVX512BITALG = 0x800000000,
  // Not a feature: passed to engSelectCpuFeatures, it skips every check against the processor.
  engCpuBypassChecks = 0x8000000000000000,
};

struct EngLibraryVersion {
  int major;
  int minor;
  int majorBuild;
  int build;
  char targetCpu[4];      // the selected level's code: "SSE2" "SSS3" "SE42" "AVX " "AVX2" "A512"
  const char* name;       // "zalaccelerate engine"
  const char* version;    // "<major>.<minor>.<patch> (<source revision>)"
  const char* buildDate;  // the compiler's __DATE__
};

// Text of a status code, never null; an unknown code gives the engStsUnknownStatusCodeErr text.
ZAL_API const char* engStatusMessage(EngStatus status);

// Writes the detected feature word (memoised after the first detection). When cpuidInfo is not
// null it receives EAX, EBX, ECX, EDX of leaf 1; but when *features holds the eight bytes
// "getinfoa" on entry, cpuidInfo[0] names the leaf and cpuidInfo[2] the sub-leaf to read.
// Returns -8 for a null features pointer, 36 when the processor cannot be identified.
ZAL_API EngStatus engGetCpuFeatures(std::uint64_t* features, std::uint32_t cpuidInfo[4]);

// Detects the processor, selects the level and stores it as the dispatch index. Returns the
// selection's warning (36, 49, 50, 51), or 20 when the vendor is not the reference vendor; the
// level never depends on the vendor. Runs on its own at the first call of any primitive.
ZAL_API EngStatus engStartDispatch();

// Chooses the level for a requested feature word and puts the word (with the level's required
// features) in force; does not store the dispatch index (see engSetDispatchIndex). Requested
// features the processor lacks give warning 49 (AVX and AVX-512 ones are dropped first when the OS
// does not save their state), unknown bits 36..62 give 50, an incomplete level mask gives 51,
// no SSE2 gives 36. With engCpuBypassChecks the word is taken as it is, and the detected-feature
// cache is replaced by the feature word in force before this call.
ZAL_API EngStatus engSelectCpuFeatures(std::uint64_t features, int* level);

// The feature word put in force by the last selection (0 before any).
ZAL_API std::uint64_t engGetSelectedCpuFeatures();

// Measured clock rate in whole MHz, over two full calendar seconds: takes 2 to 3 s.
ZAL_API EngStatus engGetCpuFreqMhz(int* mhz);

// Size in bytes of the largest data or unified cache (memoised). 36 and -1 on a processor that
// is not of the reference vendor; 37 and 0 when the processor does not describe its caches.
ZAL_API EngStatus engGetMaxCacheSizeB(int* bytes);

// The version record of the selected level; never null.
ZAL_API const EngLibraryVersion* engLibraryVersion();

// Flush-to-zero for the calling thread. Switching it on also masks the underflow exception and,
// when savedUnderflowMask is not null, stores there the underflow mask bit as it was (0x800 or 0).
// Switching it off leaves the exception masks alone, unless savedUnderflowMask points at 0: then
// the underflow exception is unmasked. -9999 on a processor without SSE.
ZAL_API EngStatus engSetFlushToZeroMode(int flag, unsigned int* savedUnderflowMask);

// Denormals-are-zero for the calling thread; -9999 when the processor does not support it.
ZAL_API EngStatus engSetDenormalsAreZeroMode(int flag);

// The dispatch index: -1 before the first selection, then the level 0..5.
ZAL_API int engGetDispatchIndex();

// Stores a level chosen with engSelectCpuFeatures; values outside -1..5 are ignored.
ZAL_API void engSetDispatchIndex(int level);

// Called by the math kernels for each element that has no finite result in its domain: code 18
// (engStsSingularity, a pole such as ln 0) or 19 (engStsDomain, such as ln of a negative number),
// with the element's index and the function's tag ("Ln64", "Pow64"). The element still gets its
// IEEE result and every other element is computed. Process-wide; the default does nothing.
using EngErrorHook = void (*)(int index, EngStatus code, const char* tag);

// Installs hook (null restores the default) and returns the one it replaces.
ZAL_API EngErrorHook engSetErrorHook(EngErrorHook hook);
