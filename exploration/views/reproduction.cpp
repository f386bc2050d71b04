#include "exploration/views/reproduction.h"

#include <fmt/format.h>

#include "common/reproducer/bytes.h"
#include "exploration/views/report.h"

namespace exploration {

std::string ReproducerOf(const Fault& fault, const RunRecord& run) {
  const RunnableProgram& program = fault.shrunken.runnable;
  reproducer::ByteCase made;
  made.head = {{"Fault:", fault.title},
               {"Device:", DeviceLine(run.device)},
               {"What:", Told(fault.shrunken.outcome)},
               reproducer::HowToCompile("reproducer.c"),
               {"Status:", "0 the answers are right, 1 they are wrong, 2 a call fails"}};
  made.source = program.text;
  made.kernel = program.kernel;
  const auto options = run.options.find("build options");
  if (options != run.options.end()) made.buildOptions = options->second;
  for (const RunnableBuffer& buffer : program.buffers)
    made.buffers.push_back({buffer.name, buffer.bytes, buffer.expected, buffer.known});
  made.globalSize = program.globalSize;
  made.localSize = program.localSize;
  // What is wrong only now and then.
  constexpr int many = 1000;
  if (fault.symptom.kind == Outcome::Kind::unsteady) made.repetitions = many;
  return reproducer::ProgramOf(made);
}

}  // namespace exploration
