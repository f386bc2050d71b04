#include "diagnosis/views/reproduce.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "common/text/text.h"
#include "diagnosis/judgement/opinion.h"
#include "diagnosis/record/row.h"
#include "diagnosis/record/row_facts.h"
#include "diagnosis/verdict/ledger.h"

namespace diagnosis {
namespace {

// Behind the row's data, what is the same for every row.
constexpr std::string_view program = R"c(
enum {
  inputCount = sizeof inputs / sizeof inputs[0],
  rightCount = sizeof right / sizeof right[0],
  globalSize = 256
};

static char source[sourceSize + 2];
static unsigned char bytes[inputCount][globalSize * stride];
static unsigned char result[globalSize * stride];

static void Check(cl_int code, const char* call) {
  if (code == CL_SUCCESS) return;
  fprintf(stderr, "ERROR: %s(%d)\n", call, (int)code);
  exit(2);
}

static void PrintInfo(cl_device_id device, cl_device_info name, const char* label) {
  char info[1024] = "";
  Check(clGetDeviceInfo(device, name, sizeof info, info, NULL), "clGetDeviceInfo");
  printf("%s%s\n", label, info);
}

static void PrintBits(cl_uint bits) {
  float value;
  memcpy(&value, &bits, sizeof value);
  printf("0x%08X (%.9g)", (unsigned)bits, value);
}

/* Whether an answer is right. */
static int Judge(int element, int lane, cl_uint bits) {
  const char* before = ", right is ";
  int i;
  for (i = 0; i < rightCount; ++i)
    if (right[i].element == element && right[i].lane == lane && right[i].first <= bits &&
        bits <= right[i].last)
      return 1;
  printf("element %d, lane %d: the answer is ", element, lane);
  PrintBits(bits);
  for (i = 0; i < rightCount; ++i) {
    if (right[i].element != element || right[i].lane != lane) continue;
    printf("%s", before);
    PrintBits(right[i].first);
    if (right[i].last != right[i].first) {
      printf(" to ");
      PrintBits(right[i].last);
    }
    before = " or ";
  }
  printf("\n");
  return 0;
}

static void Build(cl_program built, cl_uint count, const cl_device_id* devices) {
  static char buildLog[1 << 16];
  const cl_int code = clBuildProgram(built, count, devices, buildOptions, NULL, NULL);
  if (code != CL_SUCCESS &&
      clGetProgramBuildInfo(built, devices[0], CL_PROGRAM_BUILD_LOG, sizeof buildLog - 1, buildLog,
                            NULL) == CL_SUCCESS)
    fprintf(stderr, "%s\n", buildLog);
  Check(code, "clBuildProgram");
}

int main(void) {
  cl_context_properties properties[] = {CL_CONTEXT_PLATFORM, 0, 0};
  const size_t global = globalSize;
  const size_t local = localSize;
  const cl_int numElements = elements;
  const char* text = source;
  cl_platform_id platforms[16];
  cl_uint platformCount;
  cl_context context = NULL;
  cl_device_id devices[256];
  size_t size;
  cl_uint deviceCount;
  cl_program built;
  cl_kernel kernel;
  cl_mem buffers[inputCount + 1];
  cl_int code;
  int i, repetition, element, lane;
  int wrong = 0;

  for (size = 0, i = 0; i < (int)(sizeof lines / sizeof lines[0]); ++i)
    size += (size_t)sprintf(source + size, "%s%*s\n", lines[i].text, lines[i].blanks, "");
  for (i = 0; i < inputCount; ++i) memcpy(bytes[i], inputs[i], sizeof inputs[i]);

  /* The first platform that has a GPU: a processor's driver may stand before it. Where none has, a
     layer had presented another device as one: the first that there is. */
  Check(clGetPlatformIDs(16, platforms, &platformCount), "clGetPlatformIDs");
  if (platformCount > 16) platformCount = 16;
  code = CL_DEVICE_NOT_FOUND;
  for (i = 0; code == CL_DEVICE_NOT_FOUND && i < 2 * (int)platformCount; ++i) {
    const cl_device_type type = i < (int)platformCount ? CL_DEVICE_TYPE_GPU : CL_DEVICE_TYPE_ALL;
    properties[1] = (cl_context_properties)platforms[i % (int)platformCount];
    context = clCreateContextFromType(properties, type, NULL, NULL, &code);
  }
  Check(code, "clCreateContextFromType");
  Check(clGetContextInfo(context, CL_CONTEXT_DEVICES, sizeof devices, devices, &size),
        "clGetContextInfo");
  deviceCount = (cl_uint)(size / sizeof devices[0]);
  PrintInfo(devices[0], CL_DEVICE_NAME, "device: ");
  PrintInfo(devices[0], CL_DRIVER_VERSION, "driver: ");

  size = sourceSize;
  built = clCreateProgramWithSource(context, 1, &text, &size, &code);
  Check(code, "clCreateProgramWithSource");
  Build(built, deviceCount, devices);
  kernel = clCreateKernel(built, kernelName, &code);
  Check(code, "clCreateKernel");

  for (i = 0; i <= inputCount; ++i) {
    const cl_mem_flags flags = i < inputCount ? CL_MEM_READ_ONLY : CL_MEM_WRITE_ONLY;
    buffers[i] = clCreateBuffer(context, flags, sizeof result, NULL, &code);
    Check(code, "clCreateBuffer");
  }
  for (i = 0; i <= inputCount; ++i)
    Check(clSetKernelArg(kernel, (cl_uint)i, sizeof buffers[i], &buffers[i]), "clSetKernelArg");
  Check(clSetKernelArg(kernel, (cl_uint)i, sizeof numElements, &numElements), "clSetKernelArg");

  for (repetition = 1; repetition <= repetitions && wrong == 0; ++repetition) {
    const cl_command_queue queue = clCreateCommandQueue(context, devices[0], 0, &code);
    Check(code, "clCreateCommandQueue");
    for (i = 0; i < inputCount; ++i)
      Check(clEnqueueWriteBuffer(queue, buffers[i], CL_FALSE, 0, sizeof bytes[i], bytes[i], 0, NULL,
                                 NULL),
            "clEnqueueWriteBuffer");
    Check(clEnqueueNDRangeKernel(queue, kernel, 1, NULL, &global, local != 0 ? &local : NULL, 0,
                                 NULL, NULL),
          "clEnqueueNDRangeKernel");
    Check(clEnqueueReadBuffer(queue, buffers[inputCount], CL_TRUE, 0, sizeof result, result, 0,
                              NULL, NULL),
          "clEnqueueReadBuffer");
    Check(clReleaseCommandQueue(queue), "clReleaseCommandQueue");

    for (element = 0; element < elements; ++element) {
      for (lane = 0; lane < lanes; ++lane) {
        cl_uint bits;
        memcpy(&bits, result + element * stride + lane * (int)sizeof bits, sizeof bits);
        wrong += !Judge(element, lane, bits);
      }
    }
  }
  printf("%d of %d lanes are wrong\n", wrong, elements * lanes);

  for (i = inputCount; i >= 0; --i) clReleaseMemObject(buffers[i]);
  clReleaseKernel(kernel);
  clReleaseProgram(built);
  clReleaseContext(context);
  return wrong == 0 ? 0 : 1;
}
)c";

constexpr std::size_t columns = 100;

/// A repetition and its number, from 1.
struct Chosen {
  Repetition repetition;
  int number;
  bool madeUp;
};

bool HasInputs(const Row& row, const Repetition& repetition) {
  const std::size_t size = row.stride * elementsOfRow;
  return repetition.inputA.size() >= size && (!row.twoInputs || repetition.inputB.size() >= size);
}

/// Small integers in every byte, so that no view of them is special.
Repetition MadeUp(const Row& row) {
  Repetition repetition;
  for (std::size_t i = 0; i < row.stride * elementsOfRow; ++i) {
    repetition.inputA.push_back(static_cast<std::uint8_t>(0x11 + i % 0x60));
    repetition.inputB.push_back(static_cast<std::uint8_t>(0x21 + i % 0x50));
  }
  if (!row.twoInputs) repetition.inputB.clear();
  return repetition;
}

int RejectedRepetition(const Record& record) {
  const auto rejected = std::ranges::find_if(record.repetitions, FoundMismatch);
  return rejected == record.repetitions.end()
             ? 0
             : static_cast<int>(rejected - record.repetitions.begin()) + 1;
}

Chosen Choose(const Row& row, const Record& record, const Opinion& opinion) {
  int number = 0;
  const bool cameBack = record.ending.kind == Ending::Kind::returned && record.failedCalls.empty();
  if (cameBack && !opinion.wrong.empty()) {
    number = opinion.wrong.front().repetition;
  } else if (cameBack) {
    number = RejectedRepetition(record);
  }
  if (number == 0) {
    const auto last = std::ranges::find_if(
        record.repetitions.rbegin(), record.repetitions.rend(),
        [&row](const Repetition& repetition) { return HasInputs(row, repetition); });
    number = static_cast<int>(record.repetitions.rend() - last);
  }
  if (number == 0) return {MadeUp(row), 1, true};
  return {record.repetitions[static_cast<std::size_t>(number) - 1], number, false};
}

/// ASCII that can stand in a comment: nothing in it ends the comment, begins another, or is a
/// trigraph.
std::string InComment(std::string_view text) {
  std::string safe;
  for (const char c : text::PrintableLine(text, 1000)) {
    const char before = safe.empty() ? '\0' : safe.back();
    if ((before == '*' && c == '/') || (before == '/' && c == '*') || (before == '?' && c == '?'))
      safe += ' ';
    if (static_cast<unsigned char>(c) < 0x80) {
      safe += c;
    } else {
      safe += fmt::format("\\x{:02X}", static_cast<unsigned char>(c));
    }
  }
  return safe;
}

/// Lines of a comment: the label, and behind it the text, which goes on below itself.
std::string CommentLines(std::string_view label, std::string_view text) {
  const std::string safe = InComment(text);
  constexpr std::size_t indentation = 12;
  const std::size_t width = columns - 3 - indentation;
  std::string lines;
  for (std::string_view rest = safe; !rest.empty() || lines.empty();) {
    std::size_t length = std::min(rest.size(), width);
    if (length < rest.size()) {
      const std::size_t blank = rest.rfind(' ', length);
      if (blank != std::string_view::npos && blank > 0) length = blank;
    }
    lines += fmt::format(" * {:<12}{}\n", lines.empty() ? label : "", rest.substr(0, length));
    rest.remove_prefix(length);
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  }
  return lines;
}

/// A string literal, in as many pieces as its length takes, those behind the first on lines of
/// their own.
std::string Literal(std::string_view text, std::string_view indentation) {
  constexpr std::size_t most = 80;
  constexpr std::size_t nearMost = 60;
  std::string literal = "\"";
  std::size_t length = 0;
  for (const char c : text) {
    if (length >= most || (length >= nearMost && literal.back() == ' ')) {
      literal += fmt::format("\"\n{}\"", indentation);
      length = 0;
    }
    std::string escaped;
    if (c == '"' || c == '\\' || c == '?') {  // a question mark may belong to a trigraph
      escaped = {'\\', c};
    } else if (c >= ' ' && c <= '~') {
      escaped = c;
    } else {
      escaped = fmt::format("\\{:03o}", static_cast<unsigned char>(c));
    }
    literal += escaped;
    length += escaped.size();
  }
  return literal + '"';
}

std::string LinesOfText(std::string_view text) {
  std::string lines;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    const std::size_t length = line.find_last_not_of(' ') + 1;
    lines += fmt::format("    {{{}, {}}},\n", Literal(line.substr(0, length), "     "),
                         line.size() - length);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return lines;
}

std::string BytesOf(const Row& row, const Bytes& bytes) {
  std::string text = "  {\n";
  for (std::size_t i = 0; i < row.stride * elementsOfRow; ++i) {
    if (i % row.stride == 0) text += fmt::format("    /* element {} */\n", i / row.stride);
    text += fmt::format("{}0x{:02X},{}", i % 16 == 0 ? "    " : " ", bytes[i],
                        i % 16 == 15 ? "\n" : "");
  }
  return text + "  },\n";
}

std::uint32_t BitsAt(std::int64_t place) {
  return place < 0 ? 0x80000000U | static_cast<std::uint32_t>(-place)
                   : static_cast<std::uint32_t>(place);
}

/// Intervals of bits, each with what a person reads behind it.
std::string RightLines(int element, int lane, const RightAnswers& answers) {
  std::string lines;
  const auto add = [&lines, element, lane](std::uint32_t first, std::uint32_t last,
                                           std::string_view value) {
    lines += fmt::format("    {{{}, {}, 0x{:08X}, 0x{:08X}}}, /* {} */\n", element, lane,
                         std::min(first, last), std::max(first, last), value);
  };
  for (const RightAnswer& right : answers.Floats()) {
    const std::string value = fmt::format("{}", right.value);
    if (right.first < 0)
      add(BitsAt(std::min<std::int64_t>(right.last, -1)), BitsAt(right.first), value);
    if (right.first <= 0 && right.last >= 0) {
      const std::uint32_t zero = std::signbit(right.value) ? 0x80000000U : 0;
      add(zero, zero, value);
    }
    if (right.last > 0)
      add(BitsAt(std::max<std::int64_t>(right.first, 1)), BitsAt(right.last), value);
  }
  if (answers.HaveAnyNan()) {
    add(0x7F800001, 0x7FFFFFFF, "any NaN");
    add(0xFF800001, 0xFFFFFFFF, "any NaN");
  }
  return lines;
}

std::string Seen(const Record& record, const Opinion& opinion, const Chosen& chosen) {
  const std::string detail = DetailOf(record);
  std::string seen =
      fmt::format("{}{}{}. ", NameOf(StatusOf(record)), detail.empty() ? "" : ": ", detail);
  switch (opinion.verdict) {
    case Opinion::Verdict::unseen:
      seen += "No result came back.";
      break;
    case Opinion::Verdict::right:
      seen +=
          fmt::format("All {} lanes that came back are right by OpenCL's rules.", opinion.lanes);
      break;
    case Opinion::Verdict::wrong:
      seen += fmt::format("{} of {} lanes that came back are wrong by OpenCL's rules.",
                          opinion.wrong.size(), opinion.lanes);
      break;
  }
  seen += chosen.madeUp
              ? " The row did not come to its data; the inputs here are made up."
              : fmt::format(" The inputs here are those of repetition {}.", chosen.number);
  return seen;
}

std::string SuspectLines(const Record& record, const Suspects& suspects) {
  std::string lines;
  for (const NamedSuspect& suspect : suspects.Of(record.row))
    lines += CommentLines(lines.empty() ? "Suspects:" : "", suspect.name + ": " + suspect.meaning);
  return lines.empty() ? CommentLines("Suspects:", "none") : lines;
}

std::string Head(const Record& record, const Device& device, const Suspects& suspects,
                 const Opinion& opinion, const Chosen& chosen) {
  return "/*\n" + CommentLines("Row:", record.row) +
         CommentLines("Device:", device.name + " (" + device.vendor + ", " + device.version + ")") +
         CommentLines("Platform:", device.platform) +
         CommentLines("Driver:", device.driverVersion) +
         CommentLines(
             "Floats:",
             fmt::format("CL_DEVICE_SINGLE_FP_CONFIG is 0x{:X}, for which the right answers "
                         "below are made",
                         device.singleFpConfig)) +
         CommentLines("Seen:", Seen(record, opinion, chosen)) + SuspectLines(record, suspects) +
         CommentLines("Compile:", fmt::format("cc -std=c99 -o {0} {0}.c -lOpenCL", record.row)) +
         CommentLines("Status:", "0 if the device is right, 1 if not, 2 if a call fails") + " */\n";
}

}  // namespace

std::string ReproducerOf(const Record& record, const Device& device, const Suspects& suspects) {
  const std::optional<Row> row = RowNamed(record.row);
  if (!row) throw std::invalid_argument("no row is called '" + record.row + "'");
  const Opinion opinion = OpinionOf(record, device);
  const Chosen chosen = Choose(*row, record, opinion);

  // A row that came to nothing has not shown its text either.
  std::string source = record.source;
  std::string kernel = record.kernel;
  if (source.empty()) source = KernelTextOf(*row);
  if (kernel.empty()) kernel = FactsOf(record.row)->kernel;

  std::string right;
  for (int element = 0; element < elementsOfRow; ++element) {
    for (int lane = 0; lane < row->lanes; ++lane) {
      right += RightLines(element, lane,
                          RightAnswersOf(*row, chosen.repetition, element, lane,
                                         ModeOf(device, record.buildOptions)));
    }
  }

  std::string text = Head(record, device, suspects, opinion, chosen);
  text += R"c(
#define CL_TARGET_OPENCL_VERSION 120
#include <CL/cl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* The kernel's text: its lines, and the number of blanks behind each. */
static const struct {
  const char* text;
  int blanks;
} lines[] = {
)c";
  text += LinesOfText(source) + "};\n\n";
  text += fmt::format("static const char kernelName[] = {};\n", Literal(kernel, "    "));
  text += fmt::format("static const char* const buildOptions = {};\n",
                      record.buildOptions.empty() ? "NULL" : Literal(record.buildOptions, "    "));
  text += fmt::format(R"c(
enum {{
  sourceSize = {},
  elements = {},
  lanes = {},
  stride = {},      /* bytes from one union to the next */
  repetitions = {},  /* at most: the first wrong one ends it */
  localSize = {}     /* 0 leaves it to the driver */
}};

/* The unions as they go to the device, input by input. What lies behind them is zero. */
static const unsigned char inputs[][elements * stride] = {{
)c",
                      source.size(), elementsOfRow, row->lanes, row->stride, chosen.number,
                      record.localSize);
  text += BytesOf(*row, chosen.repetition.inputA);
  if (row->twoInputs) text += BytesOf(*row, chosen.repetition.inputB);
  text += R"c(};

/* The answers that are right: bits from `first` to `last`. Of a lane's lines any will do. */
static const struct {
  int element, lane;
  cl_uint first, last;
} right[] = {
)c";
  text += right + "};\n";
  text += program;
  return text;
}

}  // namespace diagnosis
