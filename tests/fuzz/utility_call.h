// One fuzzed call of a vector utility: the function's operands as the input draws them, the
// call made once per level on fresh copies, and the checks of every promise that does not depend
// on the function's arithmetic.
#pragma once

#include <complex>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/fuzz/fuzz_support.h"
#include "zalaccelerate/engine_status.h"

namespace zal::fuzz {

enum class Role { kSource, kDestination, kSourceDestination };

struct Operand {
  Lane lane;
  int lanes_per_element;  // 2 for complex elements
  Role role;
};

template <class T>
struct Element;
template <>
struct Element<float> {
  static constexpr Lane kLane = Lane::kFloat;
  static constexpr int kLanes = 1;
};
template <>
struct Element<double> {
  static constexpr Lane kLane = Lane::kDouble;
  static constexpr int kLanes = 1;
};
template <>
struct Element<std::complex<float>> {
  static constexpr Lane kLane = Lane::kFloat;
  static constexpr int kLanes = 2;
};
template <>
struct Element<std::complex<double>> {
  static constexpr Lane kLane = Lane::kDouble;
  static constexpr int kLanes = 2;
};
template <>
struct Element<short> {
  static constexpr Lane kLane = Lane::kShort;
  static constexpr int kLanes = 1;
};
template <>
struct Element<unsigned char> {
  static constexpr Lane kLane = Lane::kByte;
  static constexpr int kLanes = 1;
};

template <class T>
constexpr Operand In() {
  return {Element<T>::kLane, Element<T>::kLanes, Role::kSource};
}
template <class T>
constexpr Operand Out() {
  return {Element<T>::kLane, Element<T>::kLanes, Role::kDestination};
}
template <class T>
constexpr Operand InOut() {
  return {Element<T>::kLane, Element<T>::kLanes, Role::kSourceDestination};
}

// The math kernels' reports that a call must make (double Ln and Pow).
enum class Reports { kNone, kLn64, kPow64 };

class Call;

// One function of the table: its operands in argument order and what its header promises.
struct Entry {
  std::string name;
  std::vector<Operand> operands;
  void (*invoke)(Call&);
  unsigned alias_sources = 0;  // bit i: source operand i may be the destination buffer itself
  Agreement agreement = Agreement::kBits;
  NanRule nan = NanRule::kComputed;
  Reports reports = Reports::kNone;
  bool sets_modes = false;  // changes the register on purpose: checks its own result
};

// The scalar parameters of a call, the same at every level.
struct Scalars {
  float f[4];
  double d[4];
  short s;
  int scale;
  bool flag;
};

struct MathReport {
  int index;
  EngStatus code;
  std::string_view tag;
  auto operator<=>(const MathReport&) const = default;
};

class Call {
 public:
  Call(const Entry& entry, FuzzedDataProvider& input);

  // Runs the call at every supported level and checks it.
  void Run();

  // For the entries' invoke functions.
  std::uint32_t len() const { return length_.len; }
  template <class T>
  T* P(int operand) const {
    return reinterpret_cast<T*>(pointers_[operand]);
  }
  template <class T>
  T S(int i) const;
  bool flag() const { return scalars_.flag; }
  int scale() const { return scalars_.scale; }
  // A null pointer, a len of 0 or of 2^31 and more: the promise is a no-op.
  bool Refused() const;
  // A refusal by the function's own rule (a bad parameter): destinations stay untouched.
  void NoOpIf(bool refused) { no_op_ = no_op_ || refused; }
  template <class T>
  void Return(T value);

 private:
  void RunAt(int level);
  void CheckReports(int level) const;
  bool IsDestination(int operand) const;

  const Entry& entry_;
  FpMode mode_;
  Length length_;
  std::vector<int> offsets_;
  std::vector<std::vector<unsigned char>> contents_;
  int null_operand_ = -1;
  int alias_source_ = -1;
  Scalars scalars_{};

  // The level being run.
  std::vector<std::unique_ptr<Buffer>> buffers_;
  std::vector<unsigned char*> pointers_;
  std::vector<Output> outputs_;
  bool no_op_ = false;

  std::vector<Output> reference_;
};

template <class T>
T Call::S(int i) const {
  if constexpr (std::is_same_v<T, float>) {
    return scalars_.f[i];
  } else if constexpr (std::is_same_v<T, double>) {
    return scalars_.d[i];
  } else if constexpr (std::is_same_v<T, std::complex<float>>) {
    return {scalars_.f[2 * i], scalars_.f[2 * i + 1]};
  } else if constexpr (std::is_same_v<T, std::complex<double>>) {
    return {scalars_.d[2 * i], scalars_.d[2 * i + 1]};
  } else {
    return scalars_.s;
  }
}

template <class T>
void Call::Return(T value) {
  Output output{std::is_same_v<T, float>    ? Lane::kFloat
                : std::is_same_v<T, double> ? Lane::kDouble
                                            : Lane::kInt,
                {}};
  if constexpr (std::is_same_v<T, bool>) {
    const int as_int = value ? 1 : 0;
    output.bytes.assign(reinterpret_cast<const unsigned char*>(&as_int),
                        reinterpret_cast<const unsigned char*>(&as_int) + sizeof(int));
  } else {
    output.bytes.assign(reinterpret_cast<const unsigned char*>(&value),
                        reinterpret_cast<const unsigned char*>(&value) + sizeof(T));
  }
  outputs_.push_back(std::move(output));
}

}  // namespace zal::fuzz
