#include "diagnosis/views/end_of_run.h"

#include "diagnosis/views/draws_of_run.h"
#include "diagnosis/views/lost_of_run.h"
#include "diagnosis/views/opinion_of_run.h"
#include "diagnosis/views/report.h"

namespace diagnosis {

const std::vector<EndOfRunView>& EndOfRunViews() {
  static const std::vector<EndOfRunView> views = {
      [](const Run& run, const std::string&) { return OpinionOnRun(run); },
      [](const Run& run, const std::string&) { return DrawsOfRun(run); },
      [](const Run& run, const std::string&) { return LostOfRun(run); },
      WriteReportOf,
  };
  return views;
}

}  // namespace diagnosis
