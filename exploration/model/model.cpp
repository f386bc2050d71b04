#include "exploration/model/model.h"

#include <algorithm>

#include "exploration/model/machine.h"
#include "exploration/printer/printer.h"
#include "exploration/program/check.h"

namespace exploration {
namespace {

void AddBytes(RunnableBuffer& buffer, const std::vector<Byte>& bytes) {
  for (const Byte& byte : bytes) {
    buffer.expected.push_back(byte.value);
    buffer.known.push_back(byte.knowledge == Knowledge::known ? 0xFF : 0);
    buffer.customary.push_back(byte.knowledge == Knowledge::customary ? 0xFF : 0);
  }
}

/// A buffer has at least one byte, or no driver makes it.
void AddLong(std::vector<std::uint8_t>& bytes, std::int64_t number) {
  for (int i = 0; i < 8; ++i)
    bytes.push_back(static_cast<std::uint8_t>(static_cast<std::uint64_t>(number) >> (8 * i)));
}

}  // namespace

RunnableProgram Modelled(const Program& program) {
  Check(program);
  Machine machine(program);
  for (const Node& statement : program.body.parts) machine.ExecuteForAll(statement);

  RunnableProgram runnable;
  runnable.text = Print(program);
  runnable.needsDouble = UsesScalar(program, Scalar::doubleType);
  runnable.needsHalf = UsesScalar(program, Scalar::halfType);
  runnable.localSize = static_cast<std::size_t>(program.localSize);
  runnable.globalSize = static_cast<std::size_t>(program.Items());

  RunnableBuffer in;
  in.name = "in";
  for (const std::vector<std::int64_t>& own : program.inputs)
    for (const std::int64_t number : own) AddLong(in.bytes, number);
  if (in.bytes.empty()) AddLong(in.bytes, 0);
  runnable.buffers.push_back(in);

  RunnableBuffer out;
  out.name = "out";
  out.isAnswer = true;
  const std::size_t size = 8 * static_cast<std::size_t>(program.answers);
  for (std::vector<Byte> own : machine.Answers()) {
    Require(own.size() <= size, "more answers than there is room for");
    own.resize(size, {Machine::untouched, Knowledge::known});
    AddBytes(out, own);
  }
  if (out.expected.empty())
    AddBytes(out, std::vector<Byte>(8, {Machine::untouched, Knowledge::known}));
  out.bytes.assign(out.expected.size(), Machine::untouched);
  runnable.buffers.push_back(out);

  for (const Buffer& buffer : program.buffers) {
    const Variable& variable = program.variables.at(static_cast<std::size_t>(buffer.variable));
    RunnableBuffer one;
    one.name = variable.name;
    one.bytes = buffer.bytes;
    one.isAnswer = variable.space == Space::globalSpace;
    if (one.isAnswer) AddBytes(one, machine.BytesOf(buffer));
    runnable.buffers.push_back(one);
  }
  return runnable;
}

}  // namespace exploration
