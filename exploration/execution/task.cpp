#include "exploration/execution/task.h"

#include <cstdint>

#include "common/workers/cbor.h"

namespace exploration {

using nlohmann::json;

std::string Packed(const Task& task) {
  json buffers = json::array();
  for (const RunnableBuffer& buffer : task.program.buffers)
    buffers.push_back({json::binary(buffer.bytes), buffer.isAnswer});
  const json packed = {task.program.text,       task.program.kernel,    buffers,
                       task.program.globalSize, task.program.localSize, task.buildOptions,
                       task.compiler,           task.throughIl,         task.seconds};
  return workers::Cbor(packed);
}

Task TaskFrom(std::string_view packed) {
  return workers::FromCbor(packed, [](const json& all) {
    Task task;
    task.program.text = all.at(0);
    task.program.kernel = all.at(1);
    for (const json& one : all.at(2)) {
      RunnableBuffer buffer;
      buffer.bytes = one.at(0).get_binary();
      buffer.isAnswer = one.at(1);
      task.program.buffers.push_back(std::move(buffer));
    }
    task.program.globalSize = all.at(3);
    task.program.localSize = all.at(4);
    task.buildOptions = all.at(5);
    task.compiler = all.at(6);
    task.throughIl = all.at(7);
    task.seconds = all.at(8);
    return task;
  });
}

}  // namespace exploration
