#include "common/text/folder_lock.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "common/text/bad_use.h"

namespace text {

namespace {

std::string LockIn(const std::string& folder) { return folder + "/.lock"; }

}  // namespace

int LockFolder(const std::string& folder) {
  const int lock = open(LockIn(folder).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (lock < 0)
    throw CannotWrite(fmt::format("cannot write into {}: {}", folder, std::strerror(errno)));
  if (flock(lock, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    close(lock);
    throw BadUse(fmt::format("another run is writing into {}", folder));
  }
  return lock;
}

bool IsLocked(const std::string& folder) {
  const int lock = open(LockIn(folder).c_str(), O_RDONLY | O_CLOEXEC);
  if (lock < 0) return false;
  const bool isLocked = flock(lock, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  close(lock);
  return isLocked;
}

}  // namespace text
