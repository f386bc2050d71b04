#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "common/outputs/reporter.h"
#include "common/text/text.h"

namespace diagnosis {

namespace {

// Behind a "#" a reader looks for a directive.
std::string WithoutDirective(std::string_view text) {
  std::string line = text::PrintableLine(text, 1000);
  std::ranges::replace(line, '#', '_');
  return line;
}

std::string DirectiveOf(const AccountedRow& row) {
  switch (row.status) {
    case Status::pass:
    case Status::fail:
      return "";
    case Status::skip:
      return " # SKIP " + WithoutDirective(row.detail);
    case Status::expectedFail:
      return " # XFAIL";
    case Status::timeout:
      return " # TIMEOUT";
    case Status::flake:
    case Status::unexpectedPass:
      return fmt::format(" # {}", NameOf(row.status));
    default:
      return fmt::format(" # {} {}", row.asExpected ? "XFAIL" : "ERROR", NameOf(row.status));
  }
}

class Ktap : public Reporter {
 public:
  explicit Ktap(Console console) : console_(std::move(console)) {}

  void Begin(const Device& device, std::size_t selected) override {
    std::string lines = "KTAP version 1\n";
    if (!device.platform.empty() || !device.name.empty())
      lines += fmt::format("# {} on {}, driver version {}\n", text::PrintableLine(device.name),
                           text::PrintableLine(device.platform),
                           text::PrintableLine(device.driverVersion));
    console_.write(lines + fmt::format("1..{}\n", selected));
  }

  void Started(const std::string&) override {}

  void Ended(const AccountedRow& row, bool runAgain) override {
    if (runAgain) return;
    std::string lines;
    if (!row.detail.empty() && row.status != Status::skip)
      lines = fmt::format("# {}: {}: {}\n", row.name, NameOf(row.status), row.detail);
    lines += fmt::format("{} {} {}{}\n", row.asExpected ? "ok" : "not ok", ++number_, row.name,
                         DirectiveOf(row));
    console_.write(lines);
  }

  void End(const std::vector<AccountedRow>& account, const std::string& remarks) override {
    std::string lines;
    for (std::string_view rest = remarks; !rest.empty();) {
      const std::string_view line = rest.substr(0, rest.find('\n'));
      if (!line.empty()) lines += fmt::format("# {}\n", line);
      rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    }
    const auto passed = std::ranges::count(account, true, &AccountedRow::asExpected);
    const auto skips = std::ranges::count(account, Status::skip, &AccountedRow::status);
    console_.write(lines + fmt::format("# Totals: pass:{} fail:{} skip:{} total:{}\n",
                                       passed - skips,
                                       static_cast<std::ptrdiff_t>(account.size()) - passed, skips,
                                       account.size()));
  }

 private:
  Console console_;
  std::size_t number_ = 0;
};

}  // namespace

std::unique_ptr<Reporter> ReporterInKtap(const Console& console) {
  return std::make_unique<Ktap>(console);
}

}  // namespace diagnosis
