#include "diagnosis/views/end_of_run.h"

#include "diagnosis/views/draws_of_run.h"
#include "diagnosis/views/lost_of_run.h"
#include "diagnosis/views/opinion_of_run.h"
#include "diagnosis/views/report.h"

namespace diagnosis {

const std::vector<EndOfRunView>& EndOfRunViews() {
  static const std::vector<EndOfRunView> views = {
      [](const Analysis& analysis, const std::string&) { return OpinionOnRun(analysis); },
      [](const Analysis& analysis, const std::string&) { return DrawsOfRun(*analysis.run); },
      [](const Analysis& analysis, const std::string&) { return LostOfRun(*analysis.run); },
      WriteReportOf,
  };
  return views;
}

}  // namespace diagnosis
