#pragma once

#include <string>
#include <string_view>

namespace host {

// Why an open file can't be made longer, for one whose writer did not keep the reason: the system's error, 0 for
// none.
int RefusedGrowth(int file);

// A file on its way. What it replaces stays as it is until the new one is whole: its bytes go to a file beside its
// target, which takes the target's place, mode and owner when it is kept. Symbolic links are followed. A target that
// is no regular file (a device, a pipe, or a name of a file that a process has open, such as /dev/stdout) is given
// the bytes when they are all there. A file without a target lies in the folder for temporary files.
//
// One that is not kept is removed: when it is destroyed, at the program's end, or by a signal that ends it.
//
// Each operation gives what went wrong, or an empty text.
class OutputFile {
 public:
  OutputFile() = default;
  ~OutputFile() { Discard(); }
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  std::string Start();
  std::string Start(const std::string& target);
  std::string Write(std::string_view bytes);  // behind those that are there
  // Why no more could be written: for a file that is written to by someone who does not tell.
  std::string Refusal() const;
  std::string Keep();
  std::string KeepNew();  // the same, but never replaces anything
  void Discard();

  const std::string& path() const { return path_; }  // where its bytes are; empty when it is not on its way

 private:
  std::string Create(const std::string& folder, bool is_private);
  std::string TakeOverModeAndOwner() const;
  std::string CopyToTarget() const;
  std::string Problem(int error) const;

  std::string path_;
  std::string target_;       // as it was given; empty: none
  std::string destination_;  // where its links lead; empty: no regular file
  int file_ = -1;
};

}  // namespace host
