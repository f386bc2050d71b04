#include "exploration/printer/printer.h"

#include <fmt/format.h>

#include <cctype>

namespace exploration {
namespace {

std::string Indented(const std::string& text) {
  std::string indented = "  ";
  for (const char character : text) {
    indented += character;
    if (character == '\n') indented += "  ";
  }
  return indented;
}

/// Whether it is one name, call, element or parenthesis, and no operator stands beside it.
bool IsPostfix(const std::string& text) {
  int depth = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char character = text[i];
    const bool opens = character == '(' || character == '[';
    const bool closes = character == ')' || character == ']';
    // Behind a cast something follows that belongs to it.
    if (depth == 0 && i > 0 && text.front() == '(') return false;
    const bool isName = std::isalnum(static_cast<unsigned char>(character)) != 0 ||
                        character == '_' || character == '.';
    if (depth == 0 && !opens && !isName) return false;
    depth += opens ? 1 : closes ? -1 : 0;
  }
  return true;
}

std::string Members(const Printer& printer, const Type& record) {
  std::string text;
  for (const Member& member : record.members) {
    const Type& type = printer.program.types[member.type];
    std::string line = member.name.empty()
                           ? std::string(type.kind == Type::Kind::structure ? "struct" : "union") +
                                 (type.packed ? " __attribute__((packed))" : "") + " {\n" +
                                 Members(printer, type) + "}"
                           : printer.Declared(member.type, member.name);
    if (member.aligned != 0) line += fmt::format(" __attribute__((aligned({})))", member.aligned);
    text += Indented(line) + ";\n";
  }
  return text;
}

std::string Definition(const Printer& printer, const Function& function) {
  std::string parameters;
  for (const int parameter : function.parameters) {
    const Variable& variable = printer.program.variables.at(static_cast<std::size_t>(parameter));
    parameters += (parameters.empty() ? "" : ", ") + printer.Declared(variable.type, variable.name);
  }
  const std::string result =
      function.result.empty() ? "void" : printer.TypeName(function.result[0].type);
  std::string text = result + " " + function.name + "(" + parameters + ")\n{\n";
  text += printer.Block(function.body);
  if (!function.result.empty()) text += "  return " + printer.Text(function.result[0]) + ";\n";
  return text + "}\n\n";
}

/// `in` and `out` from now on are this work-item's own.
std::string OwnPart(std::string_view pointer, std::size_t count) {
  if (count == 0) return "";
  return fmt::format("  {} += {} * get_global_id(0);\n", pointer, count);
}

}  // namespace

std::string Printer::Operand(const Node& node) const {
  std::string text = Text(node);
  if (node.construct->kind == Construct::Kind::place || IsPostfix(text)) return text;
  return "(" + text + ")";
}

std::string Printer::Block(const Node& block) const {
  std::string text;
  for (const Node& statement : block.parts) text += Indented(Text(statement)) + "\n";
  return text;
}

std::string Printer::TypeName(TypeId type) const {
  const Type& of = program.types[type];
  const std::string scalar(TraitsOf(of.scalar).name);
  switch (of.kind) {
    case Type::Kind::scalar:
      return scalar;
    case Type::Kind::vector:
      return scalar + std::to_string(of.count);
    case Type::Kind::structure:
      return "struct " + of.name;
    case Type::Kind::unionType:
      return "union " + of.name;
    case Type::Kind::pointer:
      return fmt::format("{} {} *", NameOf(of.space), TypeName(of.element));
    case Type::Kind::array:
      break;
  }
  return TypeName(of.element);
}

std::string Printer::Declared(TypeId type, const std::string& name) const {
  std::string sizes;
  while (program.types[type].kind == Type::Kind::array) {
    sizes += fmt::format("[{}]", program.types[type].count);
    type = program.types[type].element;
  }
  const bool isPointer = program.types[type].kind == Type::Kind::pointer;
  return TypeName(type) + (isPointer ? "" : " ") + name + sizes;
}

std::string Printer::Definition(TypeId id) const {
  const Type& record = program.types[id];
  std::string text = record.kind == Type::Kind::structure ? "struct " : "union ";
  if (record.packed) text += "__attribute__((packed)) ";
  if (record.aligned != 0) text += fmt::format("__attribute__((aligned({}))) ", record.aligned);
  return text + record.name + " {\n" + Members(*this, record) + "};\n";
}

const std::string& Printer::VariableName(std::int64_t variable) const {
  return program.variables.at(static_cast<std::size_t>(variable)).name;
}

std::string Print(const Program& program) {
  const Printer printer(program);
  std::string text;
  if (UsesScalar(program, Scalar::doubleType))
    text += "#pragma OPENCL EXTENSION cl_khr_fp64 : enable\n\n";
  if (UsesScalar(program, Scalar::halfType))
    text += "#pragma OPENCL EXTENSION cl_khr_fp16 : enable\n\n";
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    const Type& type = program.types[id];
    if (type.IsRecord() && !type.name.empty()) text += printer.Definition(id) + "\n";
  }
  for (const ConstantData& data : program.constants) {
    const Variable& variable = program.variables.at(static_cast<std::size_t>(data.variable));
    text += fmt::format("__constant {} = {};\n\n", printer.Declared(variable.type, variable.name),
                        printer.Text(data.initializer));
  }
  for (const Function& function : program.functions) text += Definition(printer, function);
  text += "__kernel void test(__global const long *in, __global long *out";
  for (const Buffer& buffer : program.buffers) {
    const Variable& variable = program.variables.at(static_cast<std::size_t>(buffer.variable));
    const TypeId element = program.types[variable.type].element;
    text += fmt::format(", {} {} *{}", NameOf(variable.space), printer.TypeName(element),
                        variable.name);
  }
  text += ")\n{\n";
  if (program.Items() > 1) {
    text += OwnPart("in", program.inputs.front().size());
    text += OwnPart("out", static_cast<std::size_t>(program.answers));
  }
  return text + printer.Block(program.body) + "}\n";
}

}  // namespace exploration
