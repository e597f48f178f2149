#include "host/core/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "host/core/text.h"
#include "host/core/unfinished_files.h"

namespace host {
namespace {

constexpr int kMostLinks = 40;
constexpr int kMostNames = 100;  // that are tried
constexpr mode_t kModeBits = 07777;
constexpr off_t kProbe = 1 << 20;  // more than a full disk has left

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// One step along symbolic links: false at the end of them.
bool FollowLink(std::string& path) {
  std::array<char, 4096> to{};
  const ssize_t length = readlink(path.c_str(), to.data(), to.size());
  if (length < 0) return false;
  const std::string link(to.data(), static_cast<size_t>(length));
  path = link.starts_with("/") ? link : FolderOf(path) + "/" + link;
  return true;
}

// Where a path leads, whether something is there or not. Empty for a name of a file that a process has open: whoever
// opened it goes on with that very file, and its name leads to it by no path.
std::string Destination(std::string path) {
  for (int i = 0; i < kMostLinks; ++i) {
    if (path.starts_with("/proc/") || path.starts_with("/dev/fd/")) return "";
    if (!FollowLink(path)) break;
  }
  return path;
}

// 0 or the error.
int WriteAll(int file, const char* bytes, size_t count) {
  while (count > 0) {
    const ssize_t written = write(file, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    bytes += written;
    count -= static_cast<size_t>(written);
  }
  return 0;
}

bool IsStandardOutput(const std::string& path) {
  struct stat there = {};
  struct stat output = {};
  return stat(path.c_str(), &there) == 0 && fstat(STDOUT_FILENO, &output) == 0 && there.st_dev == output.st_dev &&
         there.st_ino == output.st_ino;
}

int Flush(int file) { return fsync(file) == 0 || errno == EINVAL || errno == EROFS ? 0 : errno; }

// So that the new name is there after a power cut, too. The file is whole either way.
void FlushFolder(const std::string& path) {
  const int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return;
  Flush(folder);
  close(folder);
}

std::string RandomLetters() {
  static std::random_device device;
  std::string letters;
  for (int i = 0; i < 8; ++i) letters += static_cast<char>('a' + device() % 26);
  return letters;
}

}  // namespace

int RefusedGrowth(int file) {
  struct stat now = {};
  if (fstat(file, &now) != 0) return errno;
  if (!S_ISREG(now.st_mode)) return write(file, "", 0) == 0 ? 0 : errno;
  const int error = posix_fallocate(file, now.st_size, kProbe);
  if (error != 0) return error;
  return ftruncate(file, now.st_size) == 0 ? 0 : errno;
}

std::string OutputFile::Problem(int error) const {
  return Text(target_.empty() ? path_ : target_, ": ", std::strerror(error));
}

std::string OutputFile::Create(const std::string& folder, bool is_private) {
  int error = EEXIST;
  for (int i = 0; i < kMostNames && error == EEXIST; ++i) {
    path_ = folder + "/.gifhost-" + RandomLetters() + ".part";
    file_ = open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, is_private ? 0600 : 0666);
    if (file_ >= 0) return NoteUnfinished(path_), "";
    error = errno;
  }
  path_.clear();
  return Text(target_.empty() ? "" : target_ + ": ", "no file can be made in ", folder, ": ", std::strerror(error));
}

std::string OutputFile::Start() {
  Discard();
  const char* folder = std::getenv("TMPDIR");
  return Create(folder == nullptr || *folder == '\0' ? "/tmp" : folder, true);
}

std::string OutputFile::Start(const std::string& target) {
  Discard();
  if (target.empty()) return "a file without a name can't be written";
  struct stat found = {};
  const bool exists = stat(target.c_str(), &found) == 0;
  const int error = exists ? 0 : errno;
  target_ = target;
  if (!exists && error != ENOENT) return Problem(error);
  if (exists && S_ISDIR(found.st_mode)) return Problem(EISDIR);
  // What may not be written to is not replaced either.
  if (exists && access(target.c_str(), W_OK) != 0) return Problem(errno);
  if (!exists || S_ISREG(found.st_mode)) destination_ = Destination(target);
  if (!destination_.empty()) return Create(FolderOf(destination_), exists);
  const std::string problem = Start();
  target_ = target;
  return problem;
}

std::string OutputFile::Write(std::string_view bytes) {
  if (lseek(file_, 0, SEEK_END) < 0) return Problem(errno);
  const int error = WriteAll(file_, bytes.data(), bytes.size());
  return error == 0 ? "" : Problem(error);
}

std::string OutputFile::Refusal() const {
  const int error = RefusedGrowth(file_);
  return error == 0 ? "" : Problem(error);
}

// Of what is there already; nothing otherwise.
std::string OutputFile::TakeOverModeAndOwner() const {
  struct stat before = {};
  struct stat now = {};
  if (stat(destination_.c_str(), &before) != 0) return "";
  if (fstat(file_, &now) != 0) return Problem(errno);
  if ((before.st_uid != now.st_uid || before.st_gid != now.st_gid) &&
      fchown(file_, before.st_uid, before.st_gid) != 0) {
    return Text(target_, ": its owner can't be kept: ", std::strerror(errno));
  }
  return fchmod(file_, before.st_mode & kModeBits) == 0 ? "" : Problem(errno);
}

std::string OutputFile::CopyToTarget() const {
  std::fflush(stdout);  // it may be the target
  // Standard output goes on where it is, so that whoever shares it writes behind this.
  const int to = IsStandardOutput(target_) ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                                           : open(target_.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  if (to < 0) return Problem(errno);
  std::array<char, 1 << 16> bytes{};
  int error = 0;
  off_t at = 0;
  while (error == 0) {
    const ssize_t count = pread(file_, bytes.data(), bytes.size(), at);
    if (count < 0) error = errno;
    if (count <= 0) break;
    error = WriteAll(to, bytes.data(), static_cast<size_t>(count));
    at += count;
  }
  if (error == 0) error = Flush(to);
  if (close(to) != 0 && error == 0) error = errno;
  return error == 0 ? "" : Problem(error);
}

std::string OutputFile::Keep() {
  if (path_.empty()) return "nothing is on its way";
  if (target_.empty()) return path_ + ": has no target";
  if (destination_.empty()) {
    std::string problem = CopyToTarget();
    Discard();
    return problem;
  }
  std::string problem = TakeOverModeAndOwner();
  if (const int error = problem.empty() ? Flush(file_) : 0; error != 0) problem = Problem(error);
  if (problem.empty() && std::rename(path_.c_str(), destination_.c_str()) != 0) problem = Problem(errno);
  if (problem.empty()) {
    ForgetUnfinished(path_);
    path_.clear();
    FlushFolder(FolderOf(destination_));
  }
  Discard();
  return problem;
}

std::string OutputFile::KeepNew() {
  if (path_.empty() || destination_.empty()) return Keep();
  // A second name for the file, which the system gives only where there is none.
  const int error = Flush(file_) != 0 ? errno : link(path_.c_str(), destination_.c_str()) == 0 ? 0 : errno;
  std::string problem;
  if (error == EEXIST) {
    problem = target_ + ": is there already";
  } else if (error == EPERM || error == EOPNOTSUPP) {  // a file system without second names
    if (access(destination_.c_str(), F_OK) != 0) return Keep();
    problem = target_ + ": is there already";
  } else if (error != 0) {
    problem = Problem(error);
  }
  Discard();
  return problem;
}

void OutputFile::Discard() {
  if (file_ >= 0) close(file_);
  if (!path_.empty()) unlink(path_.c_str());
  if (!path_.empty()) ForgetUnfinished(path_);
  file_ = -1;
  path_.clear();
  target_.clear();
  destination_.clear();
}

}  // namespace host
