#include "common/text/whole_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
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

  // Some file systems say only now that there was no room.
  void Close(bool isSafe) {
    if (isSafe && fsync(descriptor_) != 0) RefuseToWrite(name_);
    if (close(std::exchange(descriptor_, -1)) != 0) RefuseToWrite(name_);
  }

 private:
  std::string name_;
  int descriptor_;
};

}  // namespace

void WriteWhole(const std::string& path, std::string_view text) {
  struct stat found {};
  if (stat(path.c_str(), &found) == 0 && !S_ISREG(found.st_mode)) {
    File file(path, 0, path);
    file.Write(text);
    file.Close(false);
    return;
  }
  const std::string part = path + ".part";
  try {
    File file(part, O_CREAT | O_TRUNC, path);
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
