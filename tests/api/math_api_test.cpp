// The exported math functions: argument order, the in-place forms against the out-of-place ones,
// and len 0 touching nothing.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "zalaccelerate/utility.h"

namespace {

namespace u = zalaccelerate::utility;

template <class T>
std::vector<T> Arguments() {
  std::vector<T> x(37);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = static_cast<T>(0.25 + 0.37 * i);
  return x;
}

template <class T>
bool SameBytes(const std::vector<T>& a, const std::vector<T>& b) {
  return std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

template <class T>
void InPlaceMatchesOutOfPlace() {
  const std::vector<T> x = Arguments<T>();
  const auto n = static_cast<unsigned>(x.size());
  using OutOfPlace = void (*)(unsigned, const T*, T*);
  using InPlace = void (*)(unsigned, T*);
  const std::pair<OutOfPlace, InPlace> forms[] = {{u::Abs, u::Abs_InPlace},
                                                  {u::Sqr, u::Sqr_InPlace},
                                                  {u::Sqrt, u::Sqrt_InPlace},
                                                  {u::Exp, u::Exp_InPlace}};
  for (const auto& [out_of_place, in_place] : forms) {
    std::vector<T> expected(x.size());
    out_of_place(n, x.data(), expected.data());
    std::vector<T> got = x;
    in_place(n, got.data());
    EXPECT_TRUE(SameBytes(expected, got));
  }
}

TEST(MathApi, InPlaceFormsMatchOutOfPlace) {
  InPlaceMatchesOutOfPlace<float>();
  InPlaceMatchesOutOfPlace<double>();
  const std::vector<float> x = Arguments<float>();
  std::vector<float> expected(x.size());
  u::Ln(static_cast<unsigned>(x.size()), x.data(), expected.data());
  std::vector<float> got = x;
  u::Ln_InPlace(static_cast<unsigned>(x.size()), got.data());
  EXPECT_TRUE(SameBytes(expected, got));
}

TEST(MathApi, PowTakesBaseThenExponent) {
  const float base[] = {2.0f, 9.0f};
  const float exponent[] = {3.0f, 0.5f};
  float r[2];
  u::Pow(2, base, exponent, r);
  EXPECT_EQ(r[0], 8.0f);
  EXPECT_EQ(r[1], 3.0f);
  const double dbase[] = {2.0, 10.0};
  const double dexponent[] = {-1.0, 2.0};
  double dr[2];
  u::Pow(2, dbase, dexponent, dr);
  EXPECT_EQ(dr[0], 0.5);
  EXPECT_EQ(dr[1], 100.0);
  u::Pow_Prec26(2, dbase, dexponent, dr);
  EXPECT_NEAR(dr[1], 100.0, 1e-5);
}

TEST(MathApi, ZeroLengthTouchesNothing) {
  const std::vector<double> x = Arguments<double>();
  std::vector<double> dst(x.size(), -7.0);
  const std::vector<double> before = dst;
  u::Exp(0, x.data(), dst.data());
  u::Ln(0, x.data(), dst.data());
  u::Round(0, x.data(), dst.data());
  u::Inverse_Prec26(0, x.data(), dst.data());
  u::Pow(0, x.data(), x.data(), dst.data());
  u::Sqrt_InPlace(0, dst.data());
  EXPECT_TRUE(SameBytes(before, dst));
}

}  // namespace
