#include "diagnosis/views/end_of_run.h"

#include "diagnosis/verdict/account.h"
#include "diagnosis/views/draws_of_run.h"
#include "diagnosis/views/experiments_of_run.h"
#include "diagnosis/views/lost_of_run.h"
#include "diagnosis/views/opinion_of_run.h"

namespace diagnosis {

namespace {

// What there is to say of a run beside its ledger, in this order, line ends included.
constexpr std::string (*remarks[])(const Analysis&) = {
    OpinionOnRun,
    [](const Analysis& analysis) { return ExperimentsOfRun(analysis.suspects); },
    [](const Analysis& analysis) { return DrawsOfRun(*analysis.run); },
    [](const Analysis& analysis) { return LostOfRun(*analysis.run); },
};

}  // namespace

outputs::Summary EndOfRun(const Analysis& analysis) {
  outputs::Summary summary;
  summary.table = LedgerOf(analysis.rows);
  summary.result = SentenceOf(analysis.totals);
  summary.isGood =
      analysis.totals.asExpected == analysis.totals.rows && analysis.totals.cutShort == 0;
  for (const auto remark : remarks) summary.remarks += remark(analysis);
  return summary;
}

}  // namespace diagnosis
