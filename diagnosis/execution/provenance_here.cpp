#include "diagnosis/execution/provenance_here.h"

#include <CL/cl_icd.h>
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string_view>

#include "diagnosis/capture/boundary.h"

namespace diagnosis {
namespace {

// A file's bytes. Of a driver's library, which may be large, a build ID takes a few alone.
class Mapped {
 public:
  explicit Mapped(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat found {};
    if (file >= 0 && fstat(file, &found) == 0 && S_ISREG(found.st_mode) && found.st_size > 0) {
      size_ = static_cast<std::size_t>(found.st_size);
      bytes_ = mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, file, 0);
    }
    if (file >= 0) close(file);
  }
  Mapped(const Mapped&) = delete;
  Mapped& operator=(const Mapped&) = delete;
  ~Mapped() {
    if (bytes_ != MAP_FAILED) munmap(bytes_, size_);
  }

  std::string_view Bytes() const {
    if (bytes_ == MAP_FAILED) return {};
    return {static_cast<const char*>(bytes_), size_};
  }

 private:
  std::size_t size_ = 0;
  void* bytes_ = MAP_FAILED;
};

// The bytes at an offset as such a structure; false behind the end.
template <class Structure>
bool Take(std::string_view file, std::size_t offset, Structure& taken) {
  if (offset > file.size() || file.size() - offset < sizeof taken) return false;
  std::memcpy(&taken, file.data() + offset, sizeof taken);
  return true;
}

std::size_t Padded(std::size_t size) { return (size + 3) / 4 * 4; }

// In the notes that begin at an offset of the file.
std::string BuildIdIn(std::string_view file, std::size_t offset, std::size_t size) {
  const std::size_t end = offset + std::min(size, file.size());
  ElfW(Nhdr) note{};
  while (offset < end && Take(file, offset, note)) {
    const std::size_t name = offset + sizeof note;
    const std::size_t text = name + Padded(note.n_namesz);
    if (text > file.size() || note.n_descsz > file.size() - text) break;
    if (note.n_type == NT_GNU_BUILD_ID && file.substr(name, 4) == std::string_view("GNU\0", 4)) {
      std::string digits;
      for (const char byte : file.substr(text, note.n_descsz))
        digits += fmt::format("{:02x}", static_cast<unsigned char>(byte));
      return digits;
    }
    offset = text + Padded(note.n_descsz);
  }
  return "";
}

std::string BuildIdOf(std::string_view file) {
  ElfW(Ehdr) head{};
  if (!Take(file, 0, head) || std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0) return "";
  for (std::size_t i = 0; i < head.e_phnum; ++i) {
    ElfW(Phdr) part{};
    if (!Take(file, head.e_phoff + i * sizeof part, part)) break;
    if (part.p_type != PT_NOTE) continue;
    std::string id = BuildIdIn(file, part.p_offset, part.p_filesz);
    if (!id.empty()) return id;
  }
  return "";
}

// As POSIX has cksum compute it, so that everybody can do it again.
std::string ChecksumOf(std::string_view file) {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
    std::uint32_t rest = byte << 24;
    for (int bit = 0; bit < 8; ++bit) rest = (rest << 1) ^ ((rest >> 31) * 0x04C11DB7U);
    table[byte] = rest;
  }
  std::uint32_t sum = 0;
  const auto take = [&](std::uint32_t byte) { sum = (sum << 8) ^ table[(sum >> 24) ^ byte]; };
  for (const char byte : file) take(static_cast<unsigned char>(byte));
  for (std::size_t size = file.size(); size != 0; size >>= 8) take(size & 0xFF);
  return fmt::format("{} {}", ~sum, file.size());
}

std::string TextIn(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The library that a function is of.
Library LibraryWith(const void* function) {
  Dl_info found{};
  if (function == nullptr || dladdr(function, &found) == 0 || found.dli_fname == nullptr) return {};
  return LibraryAt(found.dli_fname);
}

template <class Function>
const void* AddressOf(Function* function) {
  return reinterpret_cast<const void*>(function);
}

// Each of a driver's objects begins with the table of its functions: the loader goes by it, and
// hands the driver's own platforms out. A driver without a loader need not have it so.
Library Driver() {
  cl_platform_id platform = nullptr;
  if (libraryOpenCl.clGetPlatformIDs(1, &platform, nullptr) != CL_SUCCESS) return {};
  std::string extensions(16384, '\0');
  const bool isBehindLoader =
      libraryOpenCl.clGetPlatformInfo(platform, CL_PLATFORM_EXTENSIONS, extensions.size(),
                                      extensions.data(), nullptr) == CL_SUCCESS &&
      extensions.find("cl_khr_icd") != std::string::npos;
  if (!isBehindLoader) return LibraryWith(AddressOf(libraryOpenCl.clGetPlatformIDs));
  const cl_icd_dispatch* functions = nullptr;
  std::memcpy(&functions, platform, sizeof functions);
  return LibraryWith(AddressOf(functions->clGetPlatformInfo));
}

std::vector<Library> Layers(const std::string& names) {
  std::vector<Library> layers;
  std::istringstream list(names);
  for (std::string name; std::getline(list, name, ':');) {
    void* const layer = name.empty() ? nullptr : dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (layer == nullptr) continue;
    link_map* loaded = nullptr;
    if (dlinfo(layer, RTLD_DI_LINKMAP, &loaded) == 0) layers.push_back(LibraryAt(loaded->l_name));
    dlclose(layer);
  }
  return layers;
}

std::map<std::string, std::string> Environment(const std::string& layers) {
  std::map<std::string, std::string> environment;
  for (const Variable& variable : VariablesThatMatter()) {
    const std::string name(variable.name);
    const char* const value = std::getenv(name.c_str());
    if (value != nullptr)
      environment[name] = WithoutFolders(name == "OPENCL_LAYERS" ? layers.c_str() : value);
  }
  return environment;
}

std::string System() {
  utsname name{};
  uname(&name);
  return fmt::format("{} {} {}", name.sysname, name.release, name.machine);
}

// Where the kernel tells no name, boards have one in their device tree.
std::string Processor() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    for (const std::string_view key : {"model name", "Model", "cpu model", "uarch"}) {
      const std::size_t colon = line.find(": ");
      if (colon != std::string::npos && line.substr(0, line.find_first_of("\t:")) == key)
        return line.substr(colon + 2);
    }
  }
  std::string board = TextIn("/proc/device-tree/model");
  while (!board.empty() && (board.back() == '\0' || board.back() == '\n')) board.pop_back();
  return board;
}

std::string Build() {
#ifdef __clang__
  constexpr std::string_view compiler = "Clang " __clang_version__;
#else
  constexpr std::string_view compiler = "GCC " __VERSION__;
#endif
  constexpr std::string_view commit = SUITE_COMMIT;
  return fmt::format("{}, {}, {}", SUITE_VERSION,
                     commit.empty() ? "no commit known" : fmt::format("commit {}", commit),
                     compiler);
}

}  // namespace

Library LibraryAt(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code none;
  const fs::path canonical = fs::canonical(path, none);
  Library library;
  library.file = (none ? fs::path(path) : canonical).filename().string();
  const Mapped file(path);
  library.buildId = BuildIdOf(file.Bytes());
  if (library.buildId.empty() && !file.Bytes().empty()) library.checksum = ChecksumOf(file.Bytes());
  return library;
}

Provenance ProvenanceHere(const std::string& layers) {
  Provenance provenance;
  provenance.driver = Driver();
  provenance.layers = Layers(layers);
  provenance.environment = Environment(layers);
  provenance.system = System();
  provenance.processor = Processor();
  provenance.build = Build();
  return provenance;
}

}  // namespace diagnosis
