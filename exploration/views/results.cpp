#include "exploration/views/results.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>

#include "common/text/bad_use.h"
#include "common/text/whole_file.h"
#include "exploration/program/program_file.h"
#include "exploration/views/cases.h"
#include "exploration/views/page.h"
#include "exploration/views/report.h"
#include "exploration/views/reproduction.h"

namespace exploration {
namespace {

namespace fs = std::filesystem;

constexpr const char* others[] = {"run.json", "junit.xml", "report.html"};
constexpr outputs::Files files = {"findings.jsonl", others};

// Of a run before this one; what somebody else has put there stays.
void RemoveFaults(const std::string& folder) {
  std::error_code ignored;
  for (const fs::directory_entry& fault : fs::directory_iterator(folder + "/faults", ignored)) {
    for (const char* file : filesOfFault) fs::remove(fault.path() / file, ignored);
    if (fs::is_empty(fault.path(), ignored)) fs::remove(fault.path(), ignored);
  }
}

}  // namespace

void RefuseOldResults(const std::string& folder, bool replace) {
  outputs::RefuseOld(folder, files, replace);
}

Results::Results(const std::string& folder, bool replace)
    : folder_(folder, files,
              replace ? outputs::Folder::Old::replaced : outputs::Folder::Old::refused) {
  if (replace) RemoveFaults(folder);
}

void Results::Found(const FindingRecord& finding) { Append(ToJsonLine(finding)); }

void Results::Append(const std::string& line) { folder_.Append(line); }

std::string Results::FolderOf(const std::string& fault) const {
  const std::string folder = fmt::format("{}/faults/{}", folder_.Path(), fault);
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw text::CannotWrite(fmt::format("cannot make {}: {}", folder, error.message()));
  return folder;
}

void Results::Add(const Fault& fault, const RunRecord& run, const std::string& drawing) {
  const std::string folder = FolderOf(fault.name);
  const FaultRecord& record = run.faults.back();
  text::WriteWhole(folder + "/program.cl", FileOf(fault.shrunken.runnable));
  text::WriteWhole(folder + "/original.cl", FileOf(fault.first.runnable));
  if (!run.device.IsCompiler())
    text::WriteWhole(folder + "/reproducer.c", ReproducerOf(fault, run));
  text::WriteWhole(folder + "/report.md", ReportOf(record, run, drawing));
}

void Results::Begin(const RunRecord& run) { folder_.Write("run.json", ToJson(run)); }

// What others take for the whole result stands last.
void Results::Finish(const RunRecord& run) {
  folder_.Write("run.json", ToJson(run));
  folder_.Write("report.html", PageOf(run));
  folder_.Write("junit.xml", JUnitOf(run));
}

}  // namespace exploration
