#pragma once

// An open stdio stream together with the buffer that it works in.

#include <cstdio>
#include <memory>
#include <new>

class BufferedFile {
 public:
  // Takes over the stream, before the first operation on it; null is accepted.
  explicit BufferedFile(FILE* file = nullptr) : file_(file) {
    // Some C libraries ignore the size for a buffer that they make themselves. Without memory the library's own
    // stays.
    if (file) buffer_.reset(new (std::nothrow) char[kSize]);
    if (buffer_) std::setvbuf(file, buffer_.get(), _IOFBF, kSize);
  }

  FILE* get() const { return file_.get(); }
  explicit operator bool() const { return file_ != nullptr; }
  void Close() { file_.reset(); }

 private:
  static constexpr size_t kSize = 0x100000;  // bytes

  struct Closer {
    void operator()(FILE* file) const { std::fclose(file); }
  };

  std::unique_ptr<char[]> buffer_;  // before the stream, which is closed first
  std::unique_ptr<FILE, Closer> file_;
};
