#include "exploration/execution/compiler.h"

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>

#include "exploration/execution/events.h"

namespace exploration {
namespace {

namespace fs = std::filesystem;

// One for each worker, whose runners come and go: where a compiler hangs, nobody is left to clear
// up, but the next runner can.
const fs::path& Folder() {
  static const fs::path& folder = *[] {
    // Not destroyed, as the end of the process still needs it.
    auto* const made = new fs::path(fs::temp_directory_path() /
                                    fmt::format("union_explore.{}.{}", getuid(), getppid()));
    fs::remove_all(*made);
    if (!fs::create_directory(*made)) throw fs::filesystem_error("no folder", *made, {});
    fs::permissions(*made, fs::perms::owner_all);
    std::atexit([] {
      std::error_code ignored;
      fs::remove_all(Folder(), ignored);
    });
    return made;
  }();
  return folder;
}

void Write(const fs::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text << std::flush;
  if (!file) throw fs::filesystem_error("can't write", path, {});
}

// As from waitpid; nothing if there can be no process.
std::optional<int> StatusOf(const std::string& command) {
  const fs::path& folder = Folder();
  const pid_t process = fork();
  if (process < 0) return std::nullopt;
  if (process == 0) {
    if (chdir(folder.c_str()) != 0) _exit(127);
    execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  if (waitpid(process, &status, 0) != process) return std::nullopt;
  return status;
}

/// The command, found from the folder that the program was started in.
std::string FromHere(const std::string& command) {
  const bool isRelative = command.starts_with("./") || command.starts_with("../");
  return isRelative ? fmt::format("'{}'/{}", fs::current_path().string(), command) : command;
}

}  // namespace

void Compile(const std::string& command, const std::string& text, workers::SharedBytes& answer) {
  Write(Folder() / "program.cl", text);
  Tell(answer, Event::Kind::call, "the compiler");
  const std::optional<int> status = StatusOf("exec " + FromHere(command) + " program.cl");
  if (status.has_value() && WIFEXITED(*status) && WEXITSTATUS(*status) == 127)
    return Tell(answer, Event::Kind::cannot, "there is no such command: " + command);
  if (!status.has_value()) return Tell(answer, Event::Kind::cannot, "no process for the compiler");
  Tell(answer, Event::Kind::status, *status);
}

std::string Translated(const std::string& text, const std::string& buildOptions,
                       workers::SharedBytes& answer) {
  Write(Folder() / "program.cl", text);
  const std::string options =
      " -x cl -cl-std=CL1.2 -Xclang -finclude-default-header --target=spir64-unknown-unknown"
      " -O0 -emit-llvm -c -o program.bc program.cl " +
      buildOptions;
  // A version of one reads what the same version of the other writes.
  for (const std::string suffix : {"-15", "-14", ""}) {
    const std::string found = "command -v clang" + suffix + " llvm-spirv" + suffix +
                              " > found && [ $(wc -l < found) = 2 ]";
    if (StatusOf(found) != 0) continue;
    std::error_code ignored;
    fs::remove(Folder() / "program.spv", ignored);
    StatusOf("clang" + suffix + options + " && llvm-spirv" + suffix + " program.bc -o program.spv");
    std::ifstream file(Folder() / "program.spv", std::ios::binary);
    std::string il(std::istreambuf_iterator<char>(file), {});
    if (il.empty()) Tell(answer, Event::Kind::cannot, "Clang or llvm-spirv refuses the text");
    return il;
  }
  Tell(answer, Event::Kind::cannot, "Clang and llvm-spirv are not installed");
  return "";
}

}  // namespace exploration
