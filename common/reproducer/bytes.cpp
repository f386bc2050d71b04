#include "common/reproducer/bytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "common/reproducer/c_text.h"

namespace reproducer {

namespace {

std::string ArrayOf(const std::string& name, const std::vector<std::uint8_t>& bytes) {
  constexpr std::size_t perLine = 16;
  std::string text = fmt::format("static const unsigned char {}[] = {{", name);
  for (std::size_t i = 0; i < bytes.size(); ++i)
    text += fmt::format("{}0x{:02X},", i % perLine == 0 ? "\n    " : " ", bytes[i]);
  return text + "\n};\n";
}

std::string BuffersOf(const std::vector<Buffer>& buffers) {
  std::string arrays;
  std::string table;
  for (const Buffer& buffer : buffers) {
    const std::string& name = buffer.name;
    arrays += ArrayOf(name + "Bytes", buffer.bytes);
    if (!buffer.right.empty())
      arrays += ArrayOf(name + "Right", buffer.right) + ArrayOf(name + "Mask", buffer.mask);
    table += fmt::format("    {{\"{0}\", sizeof {0}Bytes, {0}Bytes, {1}, {2}}},\n", name,
                         buffer.right.empty() ? "NULL" : name + "Right",
                         buffer.right.empty() ? "NULL" : name + "Mask");
  }
  return arrays +
         "\n/* The kernel's arguments: what goes to the device, what must be there afterwards, and "
         "a\n   mask of the bits that matter. */\n"
         "static const struct {\n  const char* name;\n  size_t size;\n  const unsigned char* "
         "bytes;\n"
         "  const unsigned char* right; /* NULL: nobody looks */\n  const unsigned char* mask;\n"
         "} buffers[] = {\n" +
         table + "};\n\n";
}

std::string TextOf(const ByteCase& made) {
  std::size_t largest = 1;
  for (const Buffer& buffer : made.buffers) largest = std::max(largest, buffer.bytes.size());
  return TextsOf(made.source, made.kernel, made.buildOptions) +
         fmt::format(
             "enum {{\n  sourceSize = {},\n  bufferCount = {},\n  globalSize = {},\n"
             "  localSize = {},\n"
             "  repetitions = {} /* at most: the first wrong one ends it */\n}};\n\n",
             made.source.size(), made.buffers.size(), made.globalSize, made.localSize,
             made.repetitions) +
         BuffersOf(made.buffers) +
         fmt::format("static char source[sourceSize + 2];\nstatic unsigned char result[{}];\n\n",
                     largest);
}

/// The part of the text from one place to another, of which it has both.
std::string_view Between(std::string_view text, std::string_view from, std::string_view to) {
  const std::size_t begin = text.find(from);
  return text.substr(begin, text.find(to, begin) - begin);
}

}  // namespace

std::string ProgramOf(const ByteCase& made) {
  // The includes, and what any reproducer does with OpenCL.
  const std::string_view shared = frame;
  std::string text = HeadOf(made.head) + "\n";
  text += Between(shared, "#define CL_TARGET_OPENCL_VERSION", "/* ---- the case");
  text += TextOf(made);
  text += Between(shared, "static void Check(", "/* A device whose report");
  text += Between(shared, "/* The first platform that has a GPU", "int main(void)");
  return text + mainOfBytes;
}

}  // namespace reproducer
