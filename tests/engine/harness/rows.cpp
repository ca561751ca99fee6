#include "tests/engine/harness/rows.h"

#include <string_view>

#include "engine/core/cpu_features.h"
#include "engine/core/dispatch.h"
#include "engine/core/level.h"
#include "tests/engine/harness/conversion_runner.h"
#include "tests/engine/harness/row_runner.h"
#include "tests/support/forced_level.h"

namespace zal::test::harness {
namespace {

using engine::Accuracy;

template <class Shape, auto kTable>
Shape* Kernel(int level) {
  return (engine::g_dispatch_tables.*kTable)[1 + level];
}

// Conversion drivers name a source type of their own; the others share one element type.
template <class Driver>
constexpr bool kConverts = requires {
  typename Driver::Source;
};

template <class Driver, class Shape, auto kTable, Shape* kPortableVariant>
void MatchPortableAt(const Row& row, int level) {
  if constexpr (kConverts<Driver>) {
    ConversionRunner<Driver>::MatchPortable(Kernel<Shape, kTable>(level), kPortableVariant,
                                            row.name);
  } else {
    RowRunner<Driver>::MatchPortable(row.accuracy, row.rounding, Kernel<Shape, kTable>(level),
                                     kPortableVariant, RowRunner<Driver>::Grid(row.name));
  }
}

// By name: the families whose every result is exact (absolute values, rounding, extremes,
// thresholds and elementwise selections, and the scaled integer product, which rounds to nearest
// by its own rule), and those that approximate transcendental functions.
Rounding RoundingOf(std::string_view name) {
  constexpr std::string_view kIndependent[] = {"Abs", "Round",     "Min",
                                               "Max", "Threshold", "MulConstantScaled"};
  constexpr std::string_view kNearestOnly[] = {
      "Exp", "Ln", "PowF", "InverseF64Prec26", "CartToPolar", "PolarToCart", "Window"};
  for (std::string_view prefix : kIndependent) {
    if (name.starts_with(prefix)) return Rounding::kIndependent;
  }
  for (std::string_view prefix : kNearestOnly) {
    if (name.starts_with(prefix)) return Rounding::kNearestOnly;
  }
  return Rounding::kFollowsMode;
}

template <class Driver, class Shape, auto kTable, Shape* kPortableVariant>
void RefuseBadArgumentsAt(int level) {
  Shape* const kernel = level == kPortable ? kPortableVariant : Kernel<Shape, kTable>(level);
  if constexpr (kConverts<Driver>) {
    ConversionRunner<Driver>::RefuseBadArguments(kernel);
  } else {
    RowRunner<Driver>::RefuseBadArguments(kernel);
  }
}

// Service rows have no driver: only compared rows instantiate one.
template <Accuracy kAccuracy, class Driver, class Shape, auto kTable, Shape* kPortableVariant>
Row MakeRow(const char* family, const char* name) {
  if constexpr (kAccuracy == Accuracy::kService) {
    return {family, name, kAccuracy, Rounding::kFollowsMode, nullptr, nullptr};
  } else {
    return {family,
            name,
            kAccuracy,
            RoundingOf(name),
            &MatchPortableAt<Driver, Shape, kTable, kPortableVariant>,
            &RefuseBadArgumentsAt<Driver, Shape, kTable, kPortableVariant>};
  }
}

}  // namespace

std::vector<Row> ComparedRows() {
  const Row all[] = {
#define ZAL_HARNESS_ROW(family, name, shape, accuracy)                                      \
  MakeRow<Accuracy::accuracy, drivers::shape, engine::shape, &engine::DispatchTables::name, \
          &engine::portable::name>(#family, #name),
      ZAL_PRIMITIVES(ZAL_HARNESS_ROW)
#undef ZAL_HARNESS_ROW
  };
  std::vector<Row> compared;
  for (const Row& row : all) {
    if (row.accuracy != Accuracy::kService) compared.push_back(row);
  }
  return compared;
}

std::vector<int> LevelsUnderTest() {
  if (ForcedLevel() >= 0) return {ForcedLevel()};
  std::uint64_t features = 0;
  engine::DetectFeatures(engine::ThisProcessor(), &features);
  std::vector<int> levels;
  for (int level = 0; level < engine::kLevelCount; ++level) {
    if ((features & engine::kLevelNeeds[level]) == engine::kLevelNeeds[level]) {
      levels.push_back(level);
    }
  }
  return levels;
}

const char* LevelName(int level) {
  return level == kPortable ? "portable" : engine::kLevelNames[level];
}

}  // namespace zal::test::harness
