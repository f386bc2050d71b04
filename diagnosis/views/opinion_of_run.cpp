#include "diagnosis/views/opinion_of_run.h"

#include <CL/cl.h>
#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "common/text/text.h"

namespace diagnosis {

namespace {

/// "it is", "both are" or "all are", of that many rows.
const char* AllAre(std::size_t count) {
  if (count == 1) return "it is";
  return count == 2 ? "both are" : "all are";
}

/// "The row that passed is", "2 of 3 rows that passed are", "All 6 rows that passed are"
std::string ThatPassedAre(std::size_t count, std::size_t passed) {
  const char* are = count == 1 ? "is" : "are";
  if (count < passed) return fmt::format("{} of {} rows that passed {}", count, passed, are);
  if (passed == 1) return "The row that passed is";
  return passed == 2 ? "Both rows that passed are"
                     : fmt::format("All {} rows that passed are", passed);
}

/// Why rows failed that are right, as far as the suspects know.
std::string ReasonOf(const Suspects& suspects, std::size_t failedRight, const Device& device) {
  const auto kept = std::ranges::find(suspects.fewest, denormalsKept, &Suspect::name);
  if (kept == suspects.fewest.end() || kept->rows.size() != failedRight) return "";
  const bool reported = (device.singleFpConfig & CL_FP_DENORM) != 0;
  return reported ? ": the device keeps denormals, as it reports"
                  : ": the device keeps denormals, as it may without a report";
}

/// "Suspects: negated (60 of 84 wrong rows), b-at-8 (24)."
std::string SuspectsLine(const Suspects& suspects) {
  std::vector<const Suspect*> shown;
  std::size_t wrong = 0;
  for (const Suspect& suspect : suspects.fewest) {
    if (suspect.name == denormalsKept) continue;
    shown.push_back(&suspect);
    wrong += suspect.counted;
  }
  std::vector<std::string> words;
  for (const Suspect* suspect : shown) {
    std::string name = suspect->name;
    for (const std::string& other : suspect->alike) name += " or " + other;
    const std::string of =
        words.empty() ? fmt::format(" of {}", text::Counted(wrong, "wrong row")) : "";
    words.push_back(fmt::format("{} ({}{})", name, suspect->counted, of));
  }
  if (words.empty()) return "";
  return fmt::format("Suspects: {}.\n", fmt::join(words, ", "));
}

}  // namespace

std::string OpinionOnRun(const Analysis& analysis) {
  const Totals& totals = analysis.totals;
  const std::size_t passedRight = totals.Of(Category::passedRight);
  const std::size_t failedWrong = totals.Of(Category::failedWrong);
  const std::size_t passedWrong = totals.Of(Category::passedWrong);
  const std::size_t failedRight = totals.Of(Category::failedRight);
  const std::size_t judged = passedRight + failedWrong + passedWrong + failedRight;
  if (judged == 0) return "";
  const std::size_t passed = passedRight + passedWrong;
  const std::size_t failed = failedRight + failedWrong;
  const std::string passedRows = text::Counted(passed, "row");
  const std::string failedRows = text::Counted(failed, "row");
  if (passed == judged && passedWrong == 0) {
    return fmt::format("{} passed, and {} right by OpenCL's rules too.\n", passedRows,
                       passed == 1 ? "is" : AllAre(passed));
  }

  const Suspects& suspects = analysis.suspects;
  const std::string reason = ReasonOf(suspects, failedRight, analysis.run->info.device);
  std::string text;
  const bool ofOneKind = std::max({failedWrong, passedWrong, failedRight}) == failed + passedWrong;
  // Where the second opinion judged, the ledger says otherwise.
  const bool isOverruled = analysis.isStrict && passedWrong + failedRight > 0;
  if (ofOneKind && isOverruled) text += "The suite alone: ";
  if (!ofOneKind) {
    text += fmt::format("By OpenCL's rules:  right  wrong\n");
    text += fmt::format("  passed           {:>7}{:>7}\n", passedRight, passedWrong);
    text += fmt::format("  failed           {:>7}{:>7}\n", failedRight, failedWrong);
    if (!reason.empty())
      text += fmt::format("{} failed but right{}.\n", text::Counted(failedRight, "row"), reason);
  } else if (failedWrong > 0) {
    text += fmt::format("{} failed; {} wrong by OpenCL's rules too, a fault of the device.\n",
                        failedRows, AllAre(failed));
  } else if (passedWrong > 0) {
    text += fmt::format("{} wrong by OpenCL's rules, a fault that the suite's rule hides.\n",
                        ThatPassedAre(passedWrong, passed));
  } else {
    text += fmt::format("{} failed; {} right by OpenCL's rules{}.\n", failedRows, AllAre(failed),
                        reason);
  }
  return text + SuspectsLine(suspects);
}

}  // namespace diagnosis
