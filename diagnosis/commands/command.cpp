#include "diagnosis/commands/command.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <stdexcept>

#include "common/command_line/options.h"
#include "common/devices/choice.h"
#include "diagnosis/record/select.h"

namespace diagnosis {

namespace {

// Where the layer lies beside this program: as it was built, or as it is installed.
std::string LayerThatShowsOne() {
  namespace fs = std::filesystem;
  const fs::path folder = fs::canonical("/proc/self/exe").parent_path();
  for (const fs::path& layers : {folder / "layers", folder / ONE_DEVICE_INSTALLED}) {
    const fs::path layer = layers / "libone_device.so";
    if (!fs::exists(layer)) continue;
    if (layer.string().find(':') != std::string::npos)
      throw std::runtime_error("a colon in the path of " + layer.string() +
                               " keeps the loader from it");
    return fs::weakly_canonical(layer).string();
  }
  throw std::runtime_error("there is no libone_device.so beside " + folder.string());
}

void ListDevices() {
  command_line::Print(devices::TableOf(devices::Ask()));
  throw CLI::Success();
}

void TakeDevice(const CLI::App& app, const devices::Wanted& wanted) {
  // With these it is refused.
  for (const char* other : {"--launcher", "--from"}) {
    const CLI::Option* const option = app.get_option_no_throw(other);
    if (option != nullptr && option->count() > 0) return;
  }
  const std::vector<devices::Listed> listed = devices::Ask();
  const std::size_t index = devices::IndexOf(wanted, listed);
  devices::ShowAlone(listed[index], LayerThatShowsOne());
}

// The options' functions are called in this order, when all words have been read.
void AddDevice(CLI::App& app, command_line::Call& call) {
  const auto wanted = std::make_shared<devices::Wanted>();
  app.add_flag_callback("--list-devices", ListDevices,
                        "Name the devices behind the loader, and say which a run can use");
  CLI::Option* const platform = app.add_option_function<std::string>(
      "--platform",
      [wanted, &app, &call](const std::string& text) {
        wanted->platform = text;
        call.invocation.insert(call.invocation.end(), {"--platform", text});
        if (app.get_option("--device")->count() == 0) TakeDevice(app, *wanted);
      },
      "The first device of the platform whose name has this in it");
  CLI::Option* const device = app.add_option_function<std::string>(
      "--device",
      [wanted, &app, &call](const std::string& text) {
        wanted->device = text;
        call.invocation.insert(call.invocation.end(), {"--device", text});
        TakeDevice(app, *wanted);
      },
      "The device whose name has this in it, or that of this index in the list");
  device->type_name("TEXT|INDEX")->check(command_line::NotEmpty());
  platform->type_name("TEXT")->check(command_line::NotEmpty());
  // It is where the launcher's workers are.
  for (CLI::Option* const option : {device, platform})
    option->excludes(app.get_option("--launcher"));
}

}  // namespace

void AddRows(CLI::App& app, std::vector<std::string>& patterns) {
  app.add_option(
         "ROW", patterns,
         "Names of rows, or globs such as 'multiply_*' and '*_vector3_?'; '!GLOB' takes rows out; "
         "all if none")
      ->each([](const std::string& pattern) {
        // Whether it matches; what is left in the end is seen when all are there.
        Select({pattern.starts_with('!') ? pattern.substr(1) : pattern});
      })
      ->type_name("");
}

void AddFrom(CLI::App& app, std::string& folder, const char* description) {
  CLI::Option* const from = app.add_option("--from", folder, description)
                                ->type_name("DIR")
                                ->check(command_line::NotEmpty());
  // They say how rows are run, and none is.
  for (const char* option : {"--jobs", "--timeout", "--isolate", "--launcher", "--program",
                             "--seed", "--platform", "--device"})
    from->excludes(app.get_option(option));
}

CLI::Option* AddJson(CLI::App& app, bool& json) {
  return app.add_flag("--json", json, "As JSON, for scripts");
}

void AddPoolOptions(CLI::App& app, command_line::Call& call, RowsOptions& options) {
  options.folder = call.workersFolder;
  app.add_option("-j,--jobs", options.workers, "Workers side by side")
      ->type_name("N")
      ->check(command_line::Whole(1, 256))
      ->capture_default_str();
  app.add_option("--timeout", options.timeoutSeconds, "Seconds that a row may take")
      ->type_name("S")
      ->check(command_line::Seconds(0.001, 1e6))
      ->capture_default_str();
  app.add_flag("--isolate", options.isolate, "A fresh worker for every row");
  app.add_option_function<std::string>(
         "--launcher",
         [&options](const std::string& line) {
           options.launcher = command_line::WordsOf("--launcher", line);
         },
         "Words before the worker's command, for instance 'ssh board'")
      ->type_name("CMD");
  app.add_option("--program", options.program, "This program where the launcher finds it")
      ->type_name("PATH")
      ->check(command_line::NotEmpty());
  app.add_option("--seed", options.seed, "The rows' data; 1 is the suite's own")
      ->type_name("N")
      ->check(command_line::Whole(0, std::numeric_limits<std::uint32_t>::max()))
      ->capture_default_str();
  AddDevice(app, call);
}

}  // namespace diagnosis
