#include "exploration/program/corpus.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "common/text/bad_use.h"
#include "exploration/program/program_file.h"

namespace exploration {
namespace {

namespace fs = std::filesystem;

KeptProgram Kept(const std::string& name, const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  if (!file) throw text::BadUse("cannot read " + path.string());
  return {name, FromFile(path.string(), text)};
}

}  // namespace

std::vector<KeptProgram> KeptIn(const std::string& path) {
  std::error_code error;
  if (!fs::is_directory(path, error)) return {Kept(path, path)};
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(path, error))
    if (entry.path().extension() == ".cl") files.push_back(entry.path());
  if (files.empty()) throw text::BadUse(fmt::format("there is no program NAME.cl in {}", path));
  std::ranges::sort(files);
  std::vector<KeptProgram> programs;
  for (const fs::path& file : files) programs.push_back(Kept(file.stem().string(), file));
  return programs;
}

std::string CorpusFolder() {
  std::error_code error;
  const fs::path here = fs::read_symlink("/proc/self/exe", error).parent_path();
  for (const char* from : {"../exploration/corpus", "../share/union-conformance-suite/corpus"}) {
    const fs::path folder = (here / from).lexically_normal();
    if (fs::is_directory(folder, error)) return folder.string();
  }
  throw text::BadUse("the corpus is not where it was installed; --corpus names its folder");
}

}  // namespace exploration
