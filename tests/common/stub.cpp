#include "tests/common/stub.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <span>
#include <sstream>
#include <string_view>
#include <thread>

namespace stub {
namespace {

namespace fs = std::filesystem;

void Answer(workers::SharedBytes& answer, std::string_view text) {
  answer.Append({std::as_bytes(std::span(text))});
}

void CloseAll() {
  for (int i = 3; i < 1024; ++i) close(i);
}

[[noreturn]] void Hang() {
  for (;;) pause();
}

workers::BroughtUp BringUp() {
  const fs::path file = std::getenv("STUB_STARTS_FILE");
  const std::string starts = std::getenv("STUB_STARTS");
  std::error_code none;
  const auto number = fs::exists(file) ? fs::file_size(file, none) : 0;
  std::ofstream(file, std::ios::app) << '+';
  std::ofstream(file.string() + ".numbers", std::ios::app) << getpid() << '\n';
  switch (number < starts.size() ? starts[number] : '.') {
    case 'x':
      std::cerr << "words of the driver\n";
      std::abort();
    case 'h':
      Hang();
    case 'n':
      return {.hasDevice = false, .text = "no such device"};
    case 'c':
      CloseAll();
      break;
    default:
      break;
  }
  return {.hasDevice = true, .text = "a device"};
}

void Run(std::string_view task, workers::SharedBytes& answer) {
  std::istringstream words{std::string(task)};
  for (std::string word; words >> word;) {
    if (word == "say" && words >> word) {
      Answer(answer, word);
    } else if (word == "print" && words >> word) {
      std::cout << word << std::flush;
    } else if (word == "number") {
      Answer(answer, std::to_string(getpid()));
    } else if (word == "child") {
      const pid_t child = fork();
      if (child == 0) Hang();
      Answer(answer, std::to_string(child));
    } else if (word == "close") {
      CloseAll();
    } else if (word == "overflow") {
      const std::string much(3 << 20, 'x');
      for (int i = 0; i < 2; ++i) Answer(answer, much);
      Answer(answer, "end");
    } else if (word == "abort") {
      std::abort();
    } else if (word == "exit") {
      std::exit(3);
    } else if (word == "hang") {
      Hang();
    } else if (word == "kill") {
      kill(getppid(), SIGKILL);
      Hang();
    } else if (word == "stop") {
      kill(getppid(), SIGSTOP);
    }
  }
}

bool IsAlive(pid_t process) {
  // A zombie is not.
  const std::string stat = Contents("/proc/" + std::to_string(process) + "/stat");
  return !stat.empty() && stat.find(") Z") == std::string::npos;
}

}  // namespace

const workers::Runner runner = {.protocol = "stub 1", .bringUp = BringUp, .run = Run};

Jobs::Jobs() {
  std::string folder = (fs::temp_directory_path() / "workers_test_XXXXXX").string();
  folder_ = mkdtemp(folder.data());
  options_.protocol = runner.protocol;
  options_.timeoutSeconds = 30;
  SetStarts("");
}

Jobs::~Jobs() {
  for (const std::string& name : set_) unsetenv(name.c_str());
  fs::remove_all(folder_);
}

void Jobs::Set(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
  set_.push_back(name);
}

void Jobs::SetStarts(const std::string& starts) {
  fs::remove(folder_ / "starts");
  Set("STUB_STARTS", starts);
  Set("STUB_STARTS_FILE", folder_ / "starts");
}

std::size_t Jobs::Starts() const { return Contents(folder_ / "starts").size(); }

std::string Jobs::Runners() const { return Contents(folder_ / "starts.numbers"); }

Told Jobs::RunAll(const std::vector<workers::Job>& jobs) {
  Told told;
  told.ended.resize(jobs.size());
  std::vector<int> endings(jobs.size());
  workers::PoolListener listener;
  std::size_t given = 0;
  listener.next = [&]() -> std::optional<workers::Job> {
    if (given == jobs.size()) return std::nullopt;
    workers::Job job = jobs[given];
    job.number = given++;
    return job;
  };
  listener.device = [&](const std::string& device) { told.devices.push_back(device); };
  listener.started = [&](const workers::Job& job) { told.started.push_back(job.number); };
  listener.ended = [&](const workers::Job& job, const workers::Answer& answer) {
    ++endings[job.number];
    told.ended[job.number] = {job, answer};
    return afterwards_ ? afterwards_(answer) : workers::Afterwards::keepRunner;
  };
  told.end = workers::RunJobs(options_, listener);
  for (std::size_t i = 0; i < jobs.size(); ++i) EXPECT_EQ(endings[i], i < given ? 1 : 0) << i;
  return told;
}

Told Jobs::RunTasks(const std::vector<std::string>& tasks) {
  std::vector<workers::Job> jobs(tasks.size());
  std::ranges::transform(tasks, jobs.begin(), [](const std::string& task) {
    return workers::Job{.task = task, .seconds = 30};
  });
  return RunAll(jobs);
}

std::string Contents(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool AllGo(const std::string& numbers) {
  std::istringstream words(numbers);
  bool any = false;
  for (pid_t process = 0; words >> process;) {
    any = true;
    for (int i = 0; IsAlive(process); ++i) {
      if (i == 200) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  }
  return any;
}

}  // namespace stub

// The system's own, unless it is to have no process left.
extern "C" pid_t fork() {
  if (std::getenv("STUB_NO_FORK") != nullptr) {
    errno = EAGAIN;
    return -1;
  }
  static const auto real = reinterpret_cast<pid_t (*)()>(dlsym(RTLD_NEXT, "fork"));
  return real();
}

// The tests are their own workers.
int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "worker") return workers::WorkerMain(stub::runner);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
