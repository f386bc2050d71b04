#include "exploration/types/layout.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "exploration/generator/generator.h"
#include "exploration/printer/printer.h"

namespace exploration {
namespace {

/// Each member at any depth as offsetof names it, with where it lies.
void AddOffsets(const Types& types, TypeId id, const std::string& path, std::size_t offset,
                std::vector<std::pair<std::string, std::size_t>>& offsets) {
  const Type& type = types[id];
  const auto add = [&](TypeId of, const std::string& name, std::size_t at) {
    offsets.emplace_back(name, at);
    AddOffsets(types, of, name, at, offsets);
  };
  for (int i = 0; type.kind == Type::Kind::array && i < type.count; ++i)
    add(type.element, path + "[" + std::to_string(i) + "]",
        offset + static_cast<std::size_t>(i) * SizeOf(types, type.element));
  for (std::size_t i = 0; i < type.members.size(); ++i) {
    const Member& member = type.members[i];
    const std::size_t at = offset + OffsetOf(types, id, static_cast<int>(i));
    if (member.name.empty()) {
      AddOffsets(types, member.type, path, at, offsets);
    } else {
      add(member.type, path.empty() ? member.name : path + "." + member.name, at);
    }
  }
}

TEST(Layout, IsThatOfACompiler) {
  const std::filesystem::path file = testing::TempDir() + "/layouts.cl";
  std::ofstream text(file);
  text << "#pragma OPENCL EXTENSION cl_khr_fp64 : enable\n"
          "#pragma OPENCL EXTENSION cl_khr_fp16 : enable\n"
          "#define HOLDS(what) { char check[(what) ? 1 : -1]; }\n";
  std::size_t records = 0;
  for (std::uint64_t number = 0; number < 200; ++number) {
    Options options;
    options.hasDouble = options.hasHalf = options.hasAnonymousMembers = true;
    const Program program = Draw(7, number, options);
    const Printer printer(program);
    text << "void check" << number << "() {\n";
    for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
      const Type& type = program.types[id];
      if (!type.IsRecord() || type.name.empty()) continue;
      const std::string name = printer.TypeName(id);
      ++records;
      text << printer.Definition(id) << "HOLDS(sizeof(" << name
           << ") == " << SizeOf(program.types, id) << ")\nHOLDS(__alignof__(" << name
           << ") == " << AlignmentOf(program.types, id) << ")\n";
      std::vector<std::pair<std::string, std::size_t>> offsets;
      AddOffsets(program.types, id, "", 0, offsets);
      for (const auto& [path, offset] : offsets)
        text << "HOLDS(__builtin_offsetof(" << name << ", " << path << ") == " << offset << ")\n";
    }
    text << "}\n";
  }
  text.close();
  EXPECT_GT(records, 200U);
  const std::string command =
      "clang -x cl -cl-std=CL1.2 -Xclang -cl-ext=+cl_khr_fp16,+cl_khr_fp64 -Wno-everything "
      "-fsyntax-only '" +
      file.string() + "'";
  EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST(Layout, OnlyTheFourthComponentAndGapsArePadding) {
  Types types;
  Type record;
  record.kind = Type::Kind::structure;
  record.name = "S1";
  record.members = {{"a", TypeOf(Scalar::charType), 0},
                    {"b", VectorOf(Scalar::shortType, 3), 0},
                    {"c", TypeOf(Scalar::ucharType), 0}};
  const TypeId id = types.Add(record);
  std::string bytes;
  for (const bool isValue : ValueBytesOf(types, id)) bytes += isValue ? 'v' : '.';
  EXPECT_EQ(bytes, "v.......vvvvvv..v.......");
}

}  // namespace
}  // namespace exploration
