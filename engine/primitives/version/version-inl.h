// The version record, one per level: its target code names the level the record belongs to.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include "engine/core/primitive_declarations.h"
#include "engine/core/version_info.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

constexpr const char* kTargetCodes[] = {"SSE2", "SSS3", "SE42", "AVX ", "AVX2", "A512"};
constexpr const char* kTargetCode = kTargetCodes[ZAL_LEVEL_INDEX];

const EngLibraryVersion kVersion = {
    ZAL_VERSION_MAJOR,
    ZAL_VERSION_MINOR,
    ZAL_VERSION_PATCH,
    ZAL_VERSION_BUILD,
    {kTargetCode[0], kTargetCode[1], kTargetCode[2], kTargetCode[3]},
    "zalaccelerate engine",
    ZAL_VERSION_TEXT,
    __DATE__,
};

}  // namespace

const EngLibraryVersion* LibraryVersion() {
  return &kVersion;
}

}  // namespace zal::engine::ZAL_LEVEL

ZAL_VERSION_PRIMITIVES(ZAL_CHECK_SHAPE)
