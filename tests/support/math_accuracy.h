// Accuracy of the math kernels against MPFR: random arguments over each function's whole domain,
// the exact result at 160 bits, and the error in ulps and in correct bits. Shared by the accuracy
// test (CI-sized samples) and tools/math_accuracy (large samples, exhaustive float scans).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/core/shapes.h"

namespace zal::test::math {

// One function of the family, by its primitive.
struct Function {
  const char* name;
  engine::Accuracy accuracy;
  bool is_double;
  bool binary;  // Pow: two arguments
};

// Every compared primitive of the math family.
std::span<const Function> Functions();

// Worst error seen over a sample.
struct Errors {
  double max_ulps = 0;        // over every finite exact result
  double min_bits = 99;       // correct bits, 1 - log2(relative error), over normal results
  std::string worst;          // the argument(s), exact and got value of the largest ulp error
  std::string worst_special;  // a special case that went wrong, if any
  std::uint64_t inexact = 0;  // finite results other than the correctly rounded one
  std::uint64_t count = 0;
};

// Arguments of a function with their exact results, drawn from `seed`.
class Sample {
 public:
  Sample(const Function& function, std::uint64_t count, std::uint64_t seed);
  // Chosen arguments (y ignored, and may be empty, for functions of one argument).
  Sample(const Function& function, std::vector<double> x, std::vector<double> y);
  // The kernel of `function` at `level` (0..5) over the sample.
  Errors Measure(int level) const;

 private:
  const Function* function_;
  std::vector<double> x_;
  std::vector<double> y_;
  std::vector<double> exact_;       // rounded to the result type, for special cases and ulp size
  std::vector<double> error_base_;  // exact - rounded, to 2^-100 relative: keeps the error exact

  void ComputeExact();
};

// Whether the errors stay within the function's accuracy class.
bool WithinClass(const Function& function, const Errors& errors);

// The class's bound as text: "1 ulp", ">= 21 bits", "exact".
std::string Bound(const Function& function);

}  // namespace zal::test::math
