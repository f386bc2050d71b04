#pragma once

#include <string>

namespace text {

/// Has the folder for this process alone, among those that ask in this way, until the descriptor
/// that is returned is closed. Throws BadUse if another has it, and CannotWrite if no lock can be
/// put there. Where the file system has no locks, everybody has it.
int LockFolder(const std::string& folder);

/// Whether some process, this one included, has it. Leaves nothing behind.
bool IsLocked(const std::string& folder);

}  // namespace text
