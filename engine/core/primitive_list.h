// Every engine primitive, declared once. Per-level declarations, dispatch tables, dispatchers and
// the cross-level tests are all generated from these rows:
//   X(family, name, shape, accuracy)
// Adding a primitive means a row here, its kernel, and its wrapper.
#pragma once

#define ZAL_MEMORY_PRIMITIVES(X)           \
  X(memory, Malloc, Allocate, kService)    \
  X(memory, MallocU8, Allocate, kService)  \
  X(memory, MallocS16, Allocate, kService) \
  X(memory, MallocF32, Allocate, kService) \
  X(memory, MallocF64, Allocate, kService) \
  X(memory, MallocC32, Allocate, kService) \
  X(memory, MallocC64, Allocate, kService) \
  X(memory, Free, Release, kService)

#define ZAL_FP_CONTROL_PRIMITIVES(X)                          \
  X(fp_control, SetFlushToZeroMode, SetFlushToZero, kService) \
  X(fp_control, SetDenormalsAreZeroMode, SetFlag, kService)

#define ZAL_VERSION_PRIMITIVES(X) X(version, LibraryVersion, VersionQuery, kService)

#define ZAL_PRIMITIVES(X)      \
  ZAL_MEMORY_PRIMITIVES(X)     \
  ZAL_FP_CONTROL_PRIMITIVES(X) \
  ZAL_VERSION_PRIMITIVES(X)
