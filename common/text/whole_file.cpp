#include "common/text/whole_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <tuple>
#include <utility>

#include "common/text/bad_use.h"

namespace text {

namespace {

// A file that is open for writing.
class File {
 public:
  // Whoever reads of its errors knows it by `name`.
  File(const std::string& path, int flags, const std::string& name)
      : name_(name), descriptor_(open(path.c_str(), flags | O_WRONLY | O_CLOEXEC, 0666)) {
    if (descriptor_ < 0) RefuseToWrite(name);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  void Write(std::string_view text) const { WriteAll(descriptor_, name_, text); }

  // Whose it is and who may do what with it, as far as this process may say so.
  void TakeAfter(const struct stat& former) const {
    std::ignore = fchown(descriptor_, former.st_uid, former.st_gid);
    std::ignore = fchmod(descriptor_, former.st_mode & 0777);
  }

  // Some file systems say only now that there was no room.
  void Close(bool isSafe) {
    if (isSafe && fsync(descriptor_) != 0) RefuseToWrite(name_);
    if (close(std::exchange(descriptor_, -1)) != 0) RefuseToWrite(name_);
  }

 private:
  std::string name_;
  int descriptor_;
};

// The file that links lead to, whether it is there or not.
std::string BehindLinks(const std::string& path) {
  namespace fs = std::filesystem;
  constexpr int most = 40;
  fs::path file = path;
  std::error_code none;
  for (int i = 0; i < most && fs::is_symlink(file, none); ++i)
    file = file.parent_path() / fs::read_symlink(file, none);
  return file.string();
}

}  // namespace

void WriteWhole(const std::string& given, std::string_view text) {
  struct stat found {};
  const bool isThere = stat(given.c_str(), &found) == 0;
  if (isThere && !S_ISREG(found.st_mode)) {
    File file(given, 0, given);
    file.Write(text);
    file.Close(false);
    return;
  }
  const std::string path = BehindLinks(given);
  const std::string part = path + ".part";
  try {
    File file(part, O_CREAT | O_TRUNC, path);
    if (isThere) file.TakeAfter(found);
    file.Write(text);
    file.Close(true);
    if (std::rename(part.c_str(), path.c_str()) != 0) RefuseToWrite(path);
  } catch (const CannotWrite&) {
    unlink(part.c_str());
    throw;
  }
}

void WriteAll(int file, const std::string& path, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(file, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) RefuseToWrite(path);
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

void RefuseToWrite(const std::string& path) {
  throw CannotWrite(fmt::format("cannot write {}: {}", path, std::strerror(errno)));
}

}  // namespace text
