#include "diagnosis/commands/not_run.h"

#include <stdexcept>

#include "common/text/bad_use.h"
#include "diagnosis/verdict/ledger.h"

namespace diagnosis {

bool WasRun(const Record& record) {
  const Status status = StatusOf(record);
  return status != Status::missing && status != Status::skip;
}

void RefuseRowNotRun(const Record& record, const std::string& folder) {
  const std::string why = record.row + " was not run: " + DetailOf(record);
  if (folder.empty()) throw std::runtime_error(why);
  throw text::BadUse(folder + ": " + why);
}

}  // namespace diagnosis
