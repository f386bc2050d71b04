#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "common/outputs/reporter.h"
#include "common/text/text.h"

namespace outputs {

namespace {

// Behind a "#" a reader looks for a directive.
std::string WithoutDirective(std::string_view text) {
  std::string line = text::PrintableLine(text, 1000);
  std::ranges::replace(line, '#', '_');
  return line;
}

std::string DirectiveOf(const Case& one) {
  switch (one.kind) {
    case Kind::passed:
    case Kind::failed:
      return "";
    case Kind::skipped:
      return " # SKIP " + WithoutDirective(one.line);
    case Kind::knownFailure:
      return " # XFAIL";
    case Kind::timedOut:
      return " # TIMEOUT";
    case Kind::noted:
      return fmt::format(" # {}", one.status);
    case Kind::error:
    case Kind::notReached:
      break;
  }
  return fmt::format(" # {} {}", one.asExpected ? "XFAIL" : "ERROR", one.status);
}

class Ktap : public Reporter {
 public:
  explicit Ktap(Console console) : console_(std::move(console)) {}

  void Begin(const Plan& plan) override {
    std::string lines = "KTAP version 1\n";
    if (!plan.heading.empty()) lines += fmt::format("# {}\n", plan.heading);
    console_.write(lines + fmt::format("1..{}\n", plan.cases));
  }

  void Started(const std::string&) override {}

  void Ended(const Case& one, bool runAgain) override {
    if (runAgain) return;
    std::string lines;
    if (!one.line.empty() && one.kind != Kind::skipped)
      lines = fmt::format("# {}: {}: {}\n", one.name, one.status, one.line);
    if (!one.remark.empty()) lines += fmt::format("# {}: {}\n", one.name, one.remark);
    lines += fmt::format("{} {} {}{}\n", one.asExpected ? "ok" : "not ok", ++total_, one.name,
                         DirectiveOf(one));
    if (one.asExpected) ++(one.kind == Kind::skipped ? skipped_ : passed_);
    console_.write(lines);
  }

  void End(const Summary& summary) override {
    std::string lines;
    for (std::string_view rest = summary.remarks; !rest.empty();) {
      const std::string_view line = rest.substr(0, rest.find('\n'));
      if (!line.empty()) lines += fmt::format("# {}\n", line);
      rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    }
    console_.write(lines + fmt::format("# {}\n# Totals: pass:{} fail:{} skip:{} total:{}\n",
                                       summary.result, passed_, total_ - passed_ - skipped_,
                                       skipped_, total_));
  }

 private:
  Console console_;
  std::size_t passed_ = 0;
  std::size_t skipped_ = 0;
  std::size_t total_ = 0;
};

}  // namespace

std::unique_ptr<Reporter> KtapReporter(const Console& console) {
  return std::make_unique<Ktap>(console);
}

}  // namespace outputs
