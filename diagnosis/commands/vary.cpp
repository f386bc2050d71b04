#include "diagnosis/views/vary.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/command_line/options.h"
#include "common/text/configuration_lines.h"
#include "common/text/text.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/commands/not_run.h"
#include "diagnosis/execution/run_now.h"
#include "diagnosis/record/select.h"

namespace diagnosis {
namespace {

struct Options {
  std::vector<std::string> patterns;
  std::vector<std::string> buildOptions;
  std::vector<std::string> files;
  std::vector<std::string> environments;
  RowsOptions pool;
};

/// A variable of the environment, set for as long as the object lives.
class Set {
 public:
  explicit Set(const std::string& assignment) : name_(assignment.substr(0, assignment.find('='))) {
    if (const char* before = std::getenv(name_.c_str())) before_ = before;
    setenv(name_.c_str(), assignment.c_str() + name_.size() + 1, 1);
  }
  ~Set() {
    if (before_) {
      setenv(name_.c_str(), before_->c_str(), 1);
    } else {
      unsetenv(name_.c_str());
    }
  }
  Set(const Set&) = delete;
  Set& operator=(const Set&) = delete;

 private:
  std::string name_;
  std::optional<std::string> before_;
};

std::vector<RowJob> JobsOf(const std::vector<std::size_t>& rows,
                           const std::vector<Variation>& variations) {
  std::vector<RowJob> jobs;
  for (const std::size_t row : rows) {
    for (const Variation& variation : variations)
      jobs.push_back({.row = row,
                      .buildOptions = variation.buildOptions,
                      .localSize = variation.localSize,
                      .passes = variation.passes,
                      .freshWorker = true});
  }
  return jobs;
}

void RunVariations(const Options& options) {
  std::vector<std::string> buildOptions = options.buildOptions;
  for (const std::string& file : options.files) {
    for (text::Line& line : text::LinesOf(file)) buildOptions.push_back(std::move(line.text));
  }
  const std::vector<std::size_t> rows = Select(options.patterns);
  const std::vector<Variation> here = Variations(buildOptions, {});
  const std::vector<Variation> all = Variations(buildOptions, options.environments);
  Run run = RunNow(JobsOf(rows, here), options.pool);
  // Workers have the environment in which they were started, so each has its own.
  std::vector<std::vector<Record>> elsewhere;
  for (std::size_t i = here.size(); i < all.size(); ++i) {
    const Set set(all[i].environment);
    elsewhere.push_back(RunNow(JobsOf(rows, {all[i]}), options.pool).records);
  }
  Run together;
  together.info = std::move(run.info);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    for (std::size_t i = 0; i < here.size(); ++i)
      together.records.push_back(std::move(run.records[row * here.size() + i]));
    for (std::vector<Record>& records : elsewhere)
      together.records.push_back(std::move(records[row]));
  }
  command_line::Print(TableOfVariations(all, together));
  const auto notRun = std::ranges::find_if_not(together.records, WasRun);
  if (notRun != together.records.end()) RefuseRowNotRun(*notRun, "");
}

// "NAME=VALUE"; the value may be empty.
CLI::Validator Assignment() {
  const auto check = [](const std::string& text) {
    return text.find('=') != std::string::npos && text.front() != '='
               ? std::string()
               : "'" + text::PrintableLine(text) + "' is not of the form NAME=VALUE";
  };
  return {check, "", ""};
}

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<Options>();
  app.add_option("ROW", options->patterns,
                 "Names of rows, or globs such as 'multiply_*' and '*_vector3_?'")
      ->required();
  app.add_option("--build-options", options->buildOptions,
                 "With these too, for clBuildProgram; may stand several times")
      ->type_name("TEXT")
      ->check(command_line::NotEmpty())
      ->allow_extra_args(false);
  app.add_option("--options", options->files, "With those in the file too, a line each")
      ->type_name("FILE")
      ->check(command_line::NotEmpty())
      ->allow_extra_args(false);
  CLI::Option* const environment =
      app.add_option("--env", options->environments,
                     "With this too in the driver's environment; may stand several times")
          ->type_name("NAME=VALUE")
          ->check(Assignment())
          ->allow_extra_args(false);
  AddPoolOptions(app, call, options->pool);
  // Not every launcher hands its environment over.
  environment->excludes(app.get_option("--launcher"));
  app.parse_complete_callback([options] {
    Select(options->patterns);
    for (const std::string& file : options->files) text::LinesOf(file);
  });
  app.callback([options] { RunVariations(*options); });
}

}  // namespace

const command_line::Command commands::vary = {
    "vary", "Run rows as they are, with other build options and with other local sizes", AddTo,
    "triage vary add_union_arrays_4\n"
    "triage vary --build-options '-DX=1 -cl-opt-disable' --env DRIVER_DEBUG=nocache "
    "add_union_arrays_4"};

}  // namespace diagnosis
