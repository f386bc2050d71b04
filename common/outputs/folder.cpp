#include "common/outputs/folder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "common/text/bad_use.h"
#include "common/text/folder_lock.h"
#include "common/text/whole_file.h"

namespace outputs {

namespace fs = std::filesystem;

namespace {

std::vector<const char*> NamesOf(const Files& files) {
  std::vector<const char*> names(files.others.begin(), files.others.end());
  names.push_back(files.journal);
  return names;
}

}  // namespace

void RefuseOld(const std::string& path, const Files& files, bool replaces) {
  const auto isThere = [&path](const char* file) {
    std::error_code ignored;
    return fs::exists(path + "/" + file, ignored);
  };
  const bool isOurs = isThere(files.journal);
  const auto other = std::ranges::find_if(files.others, isThere);
  // Files of two programs have names in common, but each has a journal of its own.
  if (!isOurs && other != files.others.end())
    throw text::BadUse(fmt::format(
        "there are results of another program in {} ({}, but no {}); name another folder", path,
        *other, files.journal));
  if (isOurs && !replaces)
    throw text::BadUse(fmt::format("there are results in {} already; --force replaces them", path));
}

Folder::Folder(const std::string& path, const Files& files, Old old)
    : path_(path), journalPath_(path + "/" + files.journal) {
  try {
    if (old != Old::kept) fs::create_directories(path);
    lock_ = text::LockFolder(path);
    if (old != Old::kept) RefuseOld(path, files, old == Old::replaced);
    if (old == Old::replaced) {
      for (const std::string name : NamesOf(files)) {
        fs::remove(path + "/" + name);
        fs::remove(path + "/" + name + ".part");
      }
    }
    if (old != Old::kept) OpenJournal();
  } catch (const fs::filesystem_error& error) {
    Close();
    throw text::CannotWrite(fmt::format("cannot write into {}: {}", path, error.code().message()));
  } catch (...) {
    Close();
    throw;
  }
}

Folder::~Folder() { Close(); }

void Folder::Append(std::string_view line) {
  if (journal_ < 0) OpenJournal();
  const off_t end = lseek(journal_, 0, SEEK_END);
  try {
    text::WriteAll(journal_, journalPath_, std::string(line) + "\n");
  } catch (const text::CannotWrite&) {
    // Half a line would be read with the next one.
    if (ftruncate(journal_, end) != 0) text::RefuseToWrite(journalPath_);
    throw;
  }
}

void Folder::Sync() {
  if (journal_ >= 0 && fsync(journal_) != 0) text::RefuseToWrite(journalPath_);
}

void Folder::Write(const char* name, std::string_view text) {
  const std::string path = path_ + "/" + name;
  text::WriteWhole(path, text);
  if (path == journalPath_ && journal_ >= 0) close(std::exchange(journal_, -1));
  // The new name, too, is to outlive a power cut.
  const int folder = open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) text::RefuseToWrite(path);
  fsync(folder);
  close(folder);
}

void Folder::OpenJournal() {
  journal_ = open(journalPath_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (journal_ < 0) text::RefuseToWrite(journalPath_);
}

void Folder::Close() {
  for (int* const file : {&journal_, &lock_})
    if (*file >= 0) close(std::exchange(*file, -1));
}

}  // namespace outputs
