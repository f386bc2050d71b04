#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/record/provenance.h"

// What a row leaves behind: everything that went over the boundary between the suite and OpenCL,
// what was said, and how it ended. Every view (status, second opinion, explanation, suspects,
// reproducer, reports) is a pure function of records.

namespace diagnosis {

using Bytes = std::vector<std::uint8_t>;

/// What the driver says of the device that ran the rows.
struct Device {
  std::string platform;  // CL_PLATFORM_NAME
  std::string name;
  std::string vendor;
  std::string version;  // CL_DEVICE_VERSION
  std::string driverVersion;
  std::uint64_t singleFpConfig = 0;  // CL_DEVICE_SINGLE_FP_CONFIG; 0 if it was not to be had
};

/// One run of the row's kernel on freshly drawn data. What did not come to pass is empty.
struct Repetition {
  Bytes inputA;  // the ten elements as they were written to the device, a union's stride apart
  Bytes inputB;  // likewise; empty in rows with one input
  bool launched = false;
  Bytes result;     // the ten elements as they were read back; empty if no result came
  std::string out;  // what the row wrote on standard output: mismatch line, RUN line
};

/// An OpenCL call that returned an error.
struct FailedCall {
  std::string name;  // as the C API spells it
  std::int32_t code = 0;
  int repetition = 0;  // from 1; 0 before the first one
};

/// How a row came to its end.
struct Ending {
  enum class Kind {
    notRun,     // never reached; `reason` says why
    skipped,    // not to be run; `reason` says by whose word
    returned,   // the runner came back; `value` is what it returned
    exited,     // the process ended in mid-row; `value` is its status
    signalled,  // the process was killed; `value` is the signal
    timedOut,
    lost,  // the connection to the worker broke; `reason` says how
  };
  Kind kind = Kind::notRun;
  int value = 0;
  std::string reason;
  std::string lostFirst = {};  // how the first worker was lost, if the row was run once more for it
};

/// What a suspect says that an experiment will show.
struct Predicted {
  std::string suspect;
  std::string answer;  // the bits in hexadecimal, or "anything"
};

/// Why a row was run once more with one thing changed, and what that was: what is empty stayed as
/// it is.
struct Experiment {
  std::string kind = {};                  // empty: the row was not run for an experiment
  std::vector<Predicted> predicted = {};  // of the first lane on which they differ:
  int repetition = 1;
  int element = 0;
  int lane = 0;
  Bytes result = {};     // fills the buffer of the results before each launch, over and over
  Bytes behind = {};     // fills the inputs behind their ten elements
  Bytes inputA = {};     // in place of the ten elements, in each repetition
  Bytes inputB = {};     // likewise
  bool swapped = false;  // the buffer of the results is created before those of the inputs
  int passes = 1;        // in one context, of which the last is the record
};

/// One row, once run (or not).
struct Record {
  std::string row;
  std::uint32_t seed = 1;       // of the stream; 1 is the suite's own
  std::string buildOptions;     // those that were put in; the suite gives none
  std::uint64_t localSize = 0;  // that was put in; 0 leaves it to the driver, as the suite does

  std::string source;  // the kernel text as the driver got it
  std::string kernel;  // the name asked for
  std::string buildLog;
  std::vector<Repetition> repetitions;
  Bytes behindA;  // what lies behind the ten elements of an input, from the first repetition
  Bytes behindB;
  int launches = 0;
  std::vector<FailedCall> failedCalls;
  bool randDrawn = false;  // by the driver, from the stream that the suite itself would draw from

  std::string out;     // all that the row wrote on standard output
  std::string err;     // on standard error
  std::string driver;  // what anyone else in its process wrote on either

  Ending ending;
  double seconds = 0;
  double buildSeconds = 0;  // in clBuildProgram

  Experiment experiment;            // that it was run for, mostly none
  std::vector<Record> experiments;  // on this row, each a line of its own

  bool sharedContext = false;  // the row had a context that rows before it in its process had
  /// Where the row was not right in a shared context, and in one of its own, of which this record
  /// is, it ended or answered otherwise: that first run. At most one.
  std::vector<Record> inShared;

  std::vector<Record> again;  // later runs of the same row on the same data; each a line of its own
};

/// What is true of a whole run.
struct RunInfo {
  Device device;
  std::string host;                            // system and machine, as uname has them
  std::string version;                         // of the suite
  std::string command;                         // what was called
  std::vector<std::string> invocation;         // the words with which a command of the same program
                                               // on the same device begins; empty if not known
  std::map<std::string, std::string> options;  // all that decide how the rows were run, by name
  std::map<std::string, std::string> expected;  // statuses by row, of the baseline
  std::string start;                            // UTC, ISO 8601
  std::string end;                              // empty if the run was cut off
  double seconds = 0;     // of all calls that came to their end; unlike start and end, without
                          // what lies between a run and its resumption
  Provenance provenance;  // where the rows were run
  std::vector<std::string> selected;  // rows, in the order of the matrix
};

struct Run {
  RunInfo info;
  std::vector<Record> records;            // in the order of the matrix
  std::vector<std::string> damages = {};  // what could not be read, a line each
};

/// What no row can have left behind, in half a line ("repetitions[3].result has 12 bytes in place
/// of 320"); empty if nothing is. Views rely on it: the bytes of a repetition are either all there
/// or none is.
std::string FaultIn(const Record& record);

/// Whether two runs of a row ended alike, and wrote, called and answered the same.
bool IsSameOutcome(const Record& one, const Record& other);

/// A record as one line of JSON without its end, bytes in base64. What the driver printed need not
/// be UTF-8.
std::string ToJson(const Record& record);

/// run.json.
std::string ToJson(const RunInfo& info);

/// The record of such a line. Throws std::runtime_error with half a line that says what in it is
/// damaged, and at which byte if it is no JSON; FaultIn finds nothing in what it returns.
Record RecordFromJson(std::string_view line);

/// What run.json says. Throws as RecordFromJson does if it is no JSON, of another format, or does
/// not say what the device can do; other members that are damaged are named in `damages`, and have
/// their defaults.
RunInfo RunInfoFromJson(std::string_view text, std::vector<std::string>& damages);

}  // namespace diagnosis
