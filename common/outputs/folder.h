#pragma once

#include <span>
#include <string>
#include <string_view>

namespace outputs {

/// The names of the files that a folder of results has.
struct Files {
  const char* journal;                  // grows by a line at a time
  std::span<const char* const> others;  // are written whole
};

/// A folder of results. Nobody else writes into it as long as this lives, whatever process they
/// are.
///
/// What writes throws text::CannotWrite. The files are then as they were.
class Folder {
 public:
  enum class Old {
    refused,   // what is there already
    replaced,  // by nothing, at once: nothing there tells of what is about to be written; refused
               // as well where another program has written it
    kept,
  };

  /// Makes the folder if need be, but not to keep what is old. Throws BadUse if somebody else is
  /// writing into it, or what is there is refused; CannotWrite, also if there is none to be had.
  Folder(const std::string& path, const Files& files, Old old);
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder();

  const std::string& Path() const { return path_; }

  /// Adds a line to the journal, in one write.
  void Append(std::string_view line);

  /// Has the journal safe on the disk.
  void Sync();

  /// Replaces a file, the journal or another, in one step.
  void Write(const char* name, std::string_view text);

 private:
  void OpenJournal();
  void Close();

  std::string path_;
  std::string journalPath_;
  int lock_ = -1;
  int journal_ = -1;
};

/// Throws BadUse if results are in the folder that another program has written, or ones of this
/// program that are not to be replaced.
void RefuseOld(const std::string& path, const Files& files, bool replaces);

}  // namespace outputs
