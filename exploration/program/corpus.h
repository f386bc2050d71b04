#pragma once

#include <string>
#include <vector>

#include "exploration/program/runnable.h"

namespace exploration {

/// A program that is kept. In a folder the name of NAME.cl is NAME, that of a single file its path.
struct KeptProgram {
  std::string name;
  RunnableProgram program;
};

/// The programs of a file, or of all files NAME.cl in a folder, in the order of their names. Throws
/// text::BadUse, in one line, if there is none or one is no program.
std::vector<KeptProgram> KeptIn(const std::string& path);

/// Where the corpus lies that belongs to this program: beside the source that it was built from,
/// or where it is installed. Throws text::BadUse if it is in neither place.
std::string CorpusFolder();

}  // namespace exploration
