#include "tests/fuzz/utility_call.h"

#include <algorithm>
#include <cmath>

#include "zalaccelerate/core.h"

namespace zal::fuzz {
namespace {

// Elements of a long call: past the 1 MiB streaming-store threshold for doubles.
constexpr std::size_t kLongBytes = std::size_t{3} << 19;

std::vector<MathReport> g_reports;

void Record(int index, EngStatus code, const char* tag) {
  // The tags are the kernels' string literals: they outlive the report.
  g_reports.push_back({index, code, tag ? std::string_view(tag) : "(null)"});
}

std::size_t ElementBytes(const Operand& operand) {
  return LaneBytes(operand.lane) * static_cast<std::size_t>(operand.lanes_per_element);
}

template <class F>
F LaneAt(const std::vector<unsigned char>& bytes, std::size_t i) {
  F value;
  std::memcpy(&value, bytes.data() + i * sizeof(F), sizeof(F));
  return value;
}

// The reports the header promises for double Ln and Pow, in index order.
std::vector<MathReport> ExpectedReports(Reports reports, std::size_t n,
                                        const std::vector<unsigned char>& first,
                                        const std::vector<unsigned char>* second) {
  std::vector<MathReport> expected;
  for (std::size_t i = 0; i < n; ++i) {
    const double x = LaneAt<double>(first, i);
    const int index = static_cast<int>(i);
    if (reports == Reports::kLn64) {
      if (x == 0) expected.push_back({index, engStsSingularity, "Ln64"});
      if (x < 0) expected.push_back({index, engStsDomain, "Ln64"});
      continue;
    }
    const double y = LaneAt<double>(*second, i);
    if (y == 0 || x == 1) continue;
    if (x == 0 && y < 0) expected.push_back({index, engStsSingularity, "Pow64"});
    if (x < 0 && std::isfinite(x) && std::isfinite(y) && std::nearbyint(y) != y) {
      expected.push_back({index, engStsDomain, "Pow64"});
    }
  }
  return expected;
}

}  // namespace

Call::Call(const Entry& entry, FuzzedDataProvider& input) : entry_(entry) {
  static const bool hooked = (engSetErrorHook(&Record), true);
  static_cast<void>(hooked);

  mode_ = DrawMode(input);
  const Operand& widest = *std::max_element(
      entry.operands.begin(), entry.operands.end(),
      [](const Operand& a, const Operand& b) { return ElementBytes(a) < ElementBytes(b); });
  length_ = DrawLength(input, kLongBytes / ElementBytes(widest));

  const auto null_choice = input.ConsumeIntegral<std::uint8_t>();
  if (null_choice < 24) null_operand_ = null_choice % static_cast<int>(entry.operands.size());
  if (entry.alias_sources != 0 && input.ConsumeBool()) {
    const int source = input.ConsumeIntegralInRange<int>(0, 31);
    if (entry.alias_sources & (1u << source)) alias_source_ = source;
  }
  for (const Operand& operand : entry.operands) {
    offsets_.push_back(DrawOffset(input, ElementBytes(operand)));
    contents_.push_back(
        DrawContents(input, operand.lane,
                     length_.elements * static_cast<std::size_t>(operand.lanes_per_element)));
  }
  for (float& f : scalars_.f) f = DrawFloat(input);
  for (double& d : scalars_.d) d = DrawDouble(input);
  scalars_.s = input.ConsumeIntegral<short>();
  static constexpr int kScales[] = {
      0, 1, -1, 3, -3, 15, 16, 17, 31, 32, -40, 0x7FFFFFFF, -0x7FFFFFFF - 1};
  scalars_.scale = input.ConsumeBool() ? kScales[input.ConsumeIntegralInRange<int>(0, 12)]
                                       : input.ConsumeIntegral<int>();
  scalars_.flag = input.ConsumeBool();
}

bool Call::IsDestination(int operand) const {
  return entry_.operands[operand].role != Role::kSource;
}

bool Call::Refused() const {
  return length_.len == 0 || length_.huge || null_operand_ >= 0;
}

void Call::Run() {
  for (int level : SupportedLevels()) RunAt(level);
}

void Call::RunAt(int level) {
  DescribeCall(
      entry_.name + " at level " + std::to_string(level) + ", " + mode_.Name() + ", len " +
      std::to_string(length_.len) +
      (null_operand_ >= 0 ? ", operand " + std::to_string(null_operand_) + " null" : "") +
      (alias_source_ >= 0 ? ", source " + std::to_string(alias_source_) + " in place" : ""));
  ForceLevel(level);

  const int operands = static_cast<int>(entry_.operands.size());
  int destination = -1;
  for (int i = 0; i < operands; ++i) {
    if (IsDestination(i) && destination < 0) destination = i;
  }
  buffers_.clear();
  buffers_.resize(operands);
  pointers_.assign(operands, nullptr);
  for (int i = 0; i < operands; ++i) {
    if (i == alias_source_) continue;
    const Operand& operand = entry_.operands[i];
    buffers_[i] = std::make_unique<Buffer>(
        operand.lane, length_.elements * static_cast<std::size_t>(operand.lanes_per_element),
        offsets_[i]);
    const bool takes_alias = i == destination && alias_source_ >= 0;
    buffers_[i]->Load(contents_[takes_alias ? alias_source_ : i]);
    pointers_[i] = buffers_[i]->data();
  }
  if (alias_source_ >= 0) pointers_[alias_source_] = pointers_[destination];
  if (null_operand_ >= 0) pointers_[null_operand_] = nullptr;

  std::vector<std::vector<unsigned char>> before(operands);
  for (int i = 0; i < operands; ++i) {
    if (buffers_[i]) before[i] = buffers_[i]->Contents();
  }

  outputs_.clear();
  no_op_ = Refused();
  g_reports.clear();
  if (entry_.sets_modes) {
    entry_.invoke(*this);
  } else {
    RunUnder(mode_, [&] { entry_.invoke(*this); });
  }

  for (int i = 0; i < operands; ++i) {
    if (!buffers_[i]) continue;
    Expect(buffers_[i]->CanariesIntact(), "wrote outside a buffer");
    if (!IsDestination(i) || no_op_) {
      Expect(buffers_[i]->Contents() == before[i],
             IsDestination(i) ? "wrote a destination in a call that must do nothing"
                              : "changed a source");
    }
  }

  std::vector<Output> results = std::move(outputs_);
  for (int i = 0; i < operands; ++i) {
    if (IsDestination(i) && buffers_[i]) {
      results.push_back({buffers_[i]->lane(), buffers_[i]->Contents()});
    }
  }
  std::vector<Output> inputs;
  for (int i = 0; i < operands; ++i) {
    if (entry_.operands[i].role != Role::kDestination) {
      inputs.push_back({entry_.operands[i].lane, contents_[i]});
    }
  }
  inputs.push_back({Lane::kFloat,
                    {reinterpret_cast<const unsigned char*>(scalars_.f),
                     reinterpret_cast<const unsigned char*>(scalars_.f + 4)}});
  inputs.push_back({Lane::kDouble,
                    {reinterpret_cast<const unsigned char*>(scalars_.d),
                     reinterpret_cast<const unsigned char*>(scalars_.d + 4)}});
  // A refused call hands back what it was given.
  if (!no_op_) {
    for (const Output& result : results) {
      Expect(KeepsNanRule(entry_.nan, result, inputs),
             entry_.nan == NanRule::kComputed ? "computed a NaN other than the default quiet NaN"
                                              : "changed a NaN it only had to pass on");
    }
  }
  CheckReports(level);

  if (reference_.empty()) {
    reference_ = std::move(results);
    return;
  }
  // Bounds other than bit identity hold in the default mode only.
  if (entry_.agreement != Agreement::kBits && !mode_.IsDefault()) return;
  Expect(results.size() == reference_.size(), "produced a different number of outputs");
  for (std::size_t i = 0; i < results.size(); ++i) {
    Expect(Agree(entry_.agreement, reference_[i], results[i]),
           "disagrees with level " + std::to_string(SupportedLevels().front()) +
               (entry_.agreement == Agreement::kBits ? " (bit identity promised)"
                                                     : " beyond the accuracy bound"));
  }
}

void Call::CheckReports(int level) const {
  static_cast<void>(level);
  if (entry_.reports == Reports::kNone) {
    Expect(g_reports.empty(), "reported a math error");
    return;
  }
  // Denormals-are-zero may read a subnormal operand as the zero it stands for.
  if (mode_.denormals_are_zero) return;
  std::vector<MathReport> expected;
  if (!Refused()) {
    const int second = entry_.reports == Reports::kPow64 ? 1 : -1;
    expected = ExpectedReports(entry_.reports, length_.elements, contents_[0],
                               second >= 0 ? &contents_[second] : nullptr);
  }
  std::vector<MathReport> got = g_reports;
  std::sort(got.begin(), got.end());
  std::sort(expected.begin(), expected.end());
  if (got == expected) return;
  std::string what = "math error reports differ from the operands' (reported vs expected):";
  const auto describe = [](const std::vector<MathReport>& reports, std::size_t i) {
    if (i >= reports.size()) return std::string("-");
    return std::to_string(reports[i].index) + "/" + std::to_string(reports[i].code) + " " +
           std::string(reports[i].tag);
  };
  for (std::size_t i = 0; i < std::min<std::size_t>(3, std::max(got.size(), expected.size()));
       ++i) {
    what += " [" + describe(got, i) + " vs " + describe(expected, i) + "]";
  }
  what += " (" + std::to_string(got.size()) + " reported, " + std::to_string(expected.size()) +
          " expected)";
  Fail(what);
}

}  // namespace zal::fuzz
