#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace diagnosis {

/// A shared library, by what two files of one name differ in.
struct Library {
  std::string file;      // its name, without the folder
  std::string buildId;   // of the linker, in hexadecimal digits; empty if it has none
  std::string checksum;  // as cksum prints it, of one that has none

  bool operator==(const Library&) const = default;
};

/// "libfoo.so.1 (build ID 0123abcd)"
std::string NameOf(const Library& library);

/// Where a run's rows were run, and with what, beside the device's own words: of the worker that
/// came up first. Everything is empty as long as none has.
struct Provenance {
  Library driver;                                  // that has the device's platform
  std::vector<Library> layers;                     // in the order of OPENCL_LAYERS
  std::map<std::string, std::string> environment;  // the variables of ThatMatter that are set
  std::string system;                              // kernel and machine, as uname has them
  std::string processor;                           // the host's
  std::string build;  // of the program that ran the rows: version, commit, compiler
};

/// An environment variable that OpenCL's loader, its drivers or the layers of this project read.
struct Variable {
  std::string_view name;
  bool picksDevice = false;  // one of several alike, so that it may differ within a run
};

/// The variables that a run keeps; it never keeps another.
const std::vector<Variable>& VariablesThatMatter();

/// What is kept of a variable's value: of each path in it the last part, and no more than 200
/// bytes.
std::string WithoutFolders(std::string_view value);

/// "POCL_DEVICES=cpu, OPENCL_LAYERS=libas_gpu.so"
std::string ListOf(const std::map<std::string, std::string>& environment);

/// "libas_gpu.so (build ID 12), libother.so (build ID 34)"
std::string ListOf(const std::vector<Library>& layers);

/// Something in which two provenances differ.
struct ProvenanceDifference {
  std::string_view what;  // that the other has: "another driver library"
  std::string one;
  std::string other;
  bool mayDiffer = false;  // within one run
};

/// What is unknown in one of them differs from nothing.
std::vector<ProvenanceDifference> DifferencesBetween(const Provenance& one,
                                                     const Provenance& other);

}  // namespace diagnosis
