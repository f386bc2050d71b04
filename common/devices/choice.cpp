#include "common/devices/choice.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iterator>
#include <set>
#include <string_view>

#include "common/text/bad_use.h"
#include "common/text/text.h"

namespace devices {
namespace {

constexpr unsigned patience = 60;  // Seconds, for what takes drivers a few.

bool HasIn(std::string_view text, std::string_view part) {
  const auto isSame = [](unsigned char a, unsigned char b) {
    return std::tolower(a) == std::tolower(b);
  };
  return part.empty() ||
         std::search(text.begin(), text.end(), part.begin(), part.end(), isSame) != text.end();
}

bool IsIndex(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

bool Fits(const Wanted& wanted, const std::vector<Listed>& listed, std::size_t index) {
  if (!HasIn(listed[index].platform, wanted.platform)) return false;
  if (!IsIndex(wanted.device)) return HasIn(listed[index].name, wanted.device);
  std::string_view digits = wanted.device;
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size() - 1));
  return digits == std::to_string(index);
}

std::string Told(const Wanted& wanted) {
  std::string told;
  if (!wanted.platform.empty())
    told += fmt::format("--platform '{}'", text::PrintableLine(wanted.platform));
  if (!wanted.device.empty())
    told +=
        fmt::format("{}--device '{}'", told.empty() ? "" : " ", text::PrintableLine(wanted.device));
  return told;
}

// All that comes until the other end is closed.
std::string ReadAll(int channel) {
  std::string all;
  char part[4096];
  for (ssize_t n = 0; (n = read(channel, part, sizeof part)) > 0;)
    all.append(part, static_cast<std::size_t>(n));
  return all;
}

}  // namespace

std::size_t IndexOf(const Wanted& wanted, const std::vector<Listed>& listed) {
  std::vector<std::size_t> fitting;
  std::set<std::size_t> platforms;
  std::string why;
  for (std::size_t i = 0; i < listed.size(); ++i) {
    if (!Fits(wanted, listed, i)) continue;
    if (!listed[i].obstacle.empty()) {
      why = fmt::format(": {} ({}) cannot be used: {}", i, listed[i].name, listed[i].obstacle);
      continue;
    }
    // Of a platform alone, the first device is meant, as the suite takes it.
    if (!platforms.insert(listed[i].platformIndex).second && wanted.device.empty()) continue;
    fitting.push_back(i);
  }
  if (fitting.empty())
    throw text::NothingToRunOn(
        fmt::format("no device fits {}{} ('--list-devices' names them)", Told(wanted), why));
  if (fitting.size() == 1) return fitting.front();
  std::string candidates;
  for (const std::size_t i : fitting)
    candidates += fmt::format("{}{} ({} on {})", candidates.empty() ? "" : ", ", i, listed[i].name,
                              listed[i].platform);
  throw text::BadUse(
      fmt::format("{} fits {} devices: {}", Told(wanted), fitting.size(), candidates));
}

std::vector<Listed> Ask() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot start a process to ask the drivers in");
  if (child == 0) {
    // On standard output and error a driver can print as it likes.
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    alarm(patience);
    std::string lines;
    for (const Listed& device : Here()) lines += LineOf(device) + '\n';
    lines += '.';  // that it has come to its end
    const bool written = write(ends[1], lines.data(), lines.size()) == std::ssize(lines);
    // At once: what a driver does at the end of a process must not spoil the answer.
    _exit(written ? 0 : 1);
  }
  close(ends[1]);
  std::string lines = ReadAll(ends[0]);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (!lines.ends_with('.')) {
    const bool hung = WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM;
    throw text::NothingToRunOn(hung ? "a driver does not answer when it is asked for its devices"
                                    : "a driver ends the process that asks it for its devices");
  }
  lines.pop_back();
  return FromLines(lines);
}

std::string TableOf(const std::vector<Listed>& listed) {
  constexpr auto format = "{:<5}  {:<28.28}  {:<36.36}  {:<11}  {:<14.14}  {:<16.16}  {}\n";
  std::string table = fmt::format(format, "index", "platform", "device", "type", "version",
                                  "driver", "can be used");
  for (std::size_t i = 0; i < listed.size(); ++i) {
    const Listed& one = listed[i];
    table += fmt::format(format, i, text::PrintableLine(one.platform),
                         text::PrintableLine(one.name), one.type, text::PrintableLine(one.version),
                         text::PrintableLine(one.driverVersion),
                         one.obstacle.empty() ? "yes" : "no: " + one.obstacle);
  }
  return table;
}

void ShowAlone(const Listed& device, const std::string& layer) {
  const char* others = std::getenv("OPENCL_LAYERS");
  // Behind those that the caller names, whose devices were asked for.
  const std::string layers =
      others != nullptr && *others != '\0' ? fmt::format("{}:{}", others, layer) : layer;
  setenv("OPENCL_LAYERS", layers.c_str(), 1);
  setenv("ONE_DEVICE", fmt::format("{}:{}", device.platformIndex, device.deviceIndex).c_str(), 1);
}

}  // namespace devices
