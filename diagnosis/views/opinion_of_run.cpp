#include "diagnosis/views/opinion_of_run.h"

#include <CL/cl.h>
#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace diagnosis {

namespace {

std::string Rows(std::size_t count) {
  return fmt::format("{} row{}", count, count == 1 ? "" : "s");
}

/// `one` or `many`, after that many rows.
const char* Form(std::size_t count, const char* one, const char* many) {
  return count == 1 ? one : many;
}

/// Why rows failed that are right, as far as the suspects know.
std::string ReasonOf(const Suspects& suspects, std::size_t failedRight, const Device& device) {
  const auto kept = std::ranges::find(suspects.fewest, denormalsKept, &Suspect::name);
  if (kept == suspects.fewest.end() || kept->rows.size() != failedRight) return "";
  const bool reported = (device.singleFpConfig & CL_FP_DENORM) != 0;
  return reported ? ": the device keeps denormals, as it reports"
                  : ": the device keeps denormals, as it may without a report";
}

std::string SuspectsLine(const Suspects& suspects) {
  std::vector<std::string> words;
  for (const Suspect& suspect : suspects.fewest) {
    if (suspect.name == denormalsKept) continue;
    std::string name = suspect.name;
    for (const std::string& other : suspect.alike) name += " or " + other;
    words.push_back(fmt::format("{} ({})", name, Rows(suspect.rows.size())));
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
  if (passed == judged && passedWrong == 0) {
    return fmt::format("{} passed, and {} right by OpenCL's rules too.\n", Rows(passed),
                       Form(passed, "is", "all are"));
  }

  const Suspects& suspects = analysis.suspects;
  const std::string reason = ReasonOf(suspects, failedRight, analysis.run->info.device);
  std::string text;
  const bool ofOneKind = std::max({failedWrong, passedWrong, failedRight}) == failed + passedWrong;
  if (!ofOneKind) {
    text += fmt::format("By OpenCL's rules:  right  wrong\n");
    text += fmt::format("  passed           {:>7}{:>7}\n", passedRight, passedWrong);
    text += fmt::format("  failed           {:>7}{:>7}\n", failedRight, failedWrong);
    if (!reason.empty()) text += fmt::format("{} failed but right{}.\n", Rows(failedRight), reason);
  } else if (failedWrong > 0) {
    text += fmt::format("{} failed; {} wrong by OpenCL's rules too, a fault of the device.\n",
                        Rows(failed), Form(failed, "it is", "all are"));
  } else if (passedWrong > 0) {
    text += fmt::format(
        "{} of {} that passed {} wrong by OpenCL's rules, a fault that the suite's rule hides.\n",
        passedWrong, Rows(passed), Form(passedWrong, "is", "are"));
  } else {
    const std::string all =
        failed > 2 ? fmt::format("all {} are", failed) : Form(failed, "it is", "both are");
    text += fmt::format("{} failed; {} right by OpenCL's rules{}.\n", Rows(failed), all, reason);
  }
  return text + SuspectsLine(suspects);
}

}  // namespace diagnosis
