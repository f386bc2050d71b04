#include "tests/diagnosis/fuzz/try_views.h"

#include <sstream>
#include <stdexcept>

#include "diagnosis/localization/analysis.h"
#include "diagnosis/record/row.h"
#include "diagnosis/record/run_folder.h"
#include "diagnosis/views/compare.h"
#include "diagnosis/views/draws_of_run.h"
#include "diagnosis/views/explain.h"
#include "diagnosis/views/opinion_of_run.h"
#include "diagnosis/views/report.h"
#include "diagnosis/views/reproduce.h"

namespace diagnosis {

namespace {

void Hold(bool isSo, const char* what) {
  if (!isSo) throw std::logic_error(what);
}

}  // namespace

void TryViews(std::string_view info, const std::string& records) {
  NamedRun named{"run", {}};
  try {
    std::istringstream lines(records);
    named.run = ReadRun(info, lines, "run");
  } catch (const std::runtime_error& damage) {
    Hold(*damage.what() != '\0', "what cannot be read is not told");
    return;
  }
  const Run& run = named.run;
  const Analysis analysis = AnalysisOf(run, ExpectationsOf(run.info));
  Hold(analysis.rows.size() == run.info.selected.size(), "a selected row is not accounted for");
  for (const Record& record : run.records) {
    Hold(FaultIn(record).empty(), "a damaged record was read");
    Hold(!TextOf(Explain(record, run.info.device, analysis.suspects)).empty(), "no explanation");
    if (RowNamed(record.row))
      Hold(!ReproducerOf(record, run.info.device, analysis.suspects).empty(), "no reproducer");
  }
  OpinionOnRun(analysis);
  DrawsOfRun(run);
  Hold(ReportOf({named}).size() <= mostBytesOfPage, "a page too long");
  Hold(ReportOf({named, named}).size() <= mostBytesOfPage, "a page too long");
  const std::vector<NamedRun> twice = {named, named};
  for (const ComparedRow& row : Compare(twice))
    Hold(row.comparison == Comparison::same, "a run differs from itself");
  DifferencesOf(twice, Compare(twice));
}

}  // namespace diagnosis
