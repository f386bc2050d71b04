#include "diagnosis/end_of_run.h"

#include "diagnosis/report.h"

namespace diagnosis {

const std::vector<EndOfRunView>& EndOfRunViews() {
  static const std::vector<EndOfRunView> views = {WriteReportOf};
  return views;
}

}  // namespace diagnosis
