#include "common/outputs/results.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "common/text/bad_use.h"

namespace diagnosis {

namespace {

constexpr const char* files[] = {"results.csv",   "failures.csv", "junit.xml",
                                 "records.jsonl", "run.json",     "report.html"};

[[noreturn]] void Refuse(const std::string& path) {
  throw std::runtime_error(fmt::format("cannot write {}: {}", path, std::strerror(errno)));
}

// All of the text or, if it throws, some of it.
void Write(int file, const std::string& path, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(file, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) Refuse(path);
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

/// A file that is open.
class File {
 public:
  File(const std::string& path, int flags)
      : descriptor_(open(path.c_str(), flags | O_WRONLY | O_CREAT | O_CLOEXEC, 0666)) {
    if (descriptor_ < 0) Refuse(path);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { close(descriptor_); }
  int operator*() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace

void RefuseOldResults(const std::string& folder, bool replace) {
  const auto isThere = [&folder](const char* file) {
    std::error_code ignored;
    return std::filesystem::exists(folder + "/" + file, ignored);
  };
  if (!replace && std::ranges::any_of(files, isThere))
    throw text::BadUse(
        fmt::format("there are results in {} already; --force replaces them", folder));
}

ResultsFolder::ResultsFolder(const std::string& folder, bool replace, const RunInfo& info)
    : folder_(folder), info_(info) {
  namespace fs = std::filesystem;
  try {
    fs::create_directories(folder);
    RefuseOldResults(folder, replace);
    for (const char* file : files) fs::remove(folder + "/" + file);
    Replace("run.json", ToJson(info_));
    const File records(folder_ + "/records.jsonl", O_TRUNC);
    WriteTables();
  } catch (const text::BadUse&) {
    throw;
  } catch (const fs::filesystem_error& error) {
    throw text::BadUse(fmt::format("cannot write into {}: {}", folder, error.code().message()));
  } catch (const std::runtime_error& error) {
    throw text::BadUse(error.what());
  }
}

void ResultsFolder::SetDevice(const Device& device) {
  info_.device = device;
  Replace("run.json", ToJson(info_));
}

void ResultsFolder::Started(const std::string& row) {
  info_.running.push_back(row);
  Replace("run.json", ToJson(info_));
}

void ResultsFolder::Ended(const Record& record, const AccountedRow& row) {
  std::erase(info_.running, row.name);
  account_.push_back(row);
  junit_.Put(record, row);
  Append(record);
  WriteTables();
}

void ResultsFolder::Finish(const std::vector<Record>& records,
                           const std::vector<AccountedRow>& account, const std::string& end) {
  account_ = account;
  std::string lines;
  bool isAgain = false;
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (records[i].again.empty()) continue;
    isAgain = true;
    junit_.Put(records[i], account[i]);
  }
  if (isAgain) {
    for (const Record& record : records) lines += ToJson(record) + "\n";
    Replace("records.jsonl", lines);
  }
  WriteTables();
  info_.end = end;
  info_.running.clear();
  Replace("run.json", ToJson(info_));
}

void ResultsFolder::Replace(const char* name, const std::string& text) const {
  const std::string path = folder_ + "/" + name;
  const std::string part = path + ".part";
  try {
    const File file(part, O_TRUNC);
    Write(*file, path, text);
  } catch (const std::runtime_error&) {
    unlink(part.c_str());
    throw;
  }
  if (std::rename(part.c_str(), path.c_str()) != 0) Refuse(path);
}

void ResultsFolder::Append(const Record& record) const {
  const std::string path = folder_ + "/records.jsonl";
  const File file(path, O_APPEND);
  const off_t end = lseek(*file, 0, SEEK_END);
  try {
    Write(*file, path, ToJson(record) + "\n");
  } catch (const std::runtime_error&) {
    // Half a line is no record.
    if (ftruncate(*file, end) != 0) Refuse(path);
    throw;
  }
}

void ResultsFolder::WriteTables() {
  std::string results = "test,status,seconds\n";
  std::string failures = "test,status\n";
  for (const AccountedRow& row : account_) {
    fmt::format_to(std::back_inserter(results), "{},{},{:.4f}\n", row.name, NameOf(row.status),
                   row.seconds);
    const Status expect = ToExpect(row.status);
    if (expect != Status::pass)
      fmt::format_to(std::back_inserter(failures), "{},{}\n", row.name, NameOf(expect));
  }
  Replace("results.csv", results);
  Replace("failures.csv", failures);
  Replace("junit.xml", junit_.Text(info_));
}

}  // namespace diagnosis
