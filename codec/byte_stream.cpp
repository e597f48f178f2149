#include "codec/byte_stream.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

int MyGetc(MyFILE* stream) {
  if (stream->file) {
    const int byte = getc_unlocked(stream->file);
    if (byte == EOF) return 0;
    ++stream->position;
    return byte;
  }
  if (!stream->buffer || stream->position >= stream->size) return 0;
  return stream->buffer[stream->position++];
}

void ReadBytes(MyFILE* stream, uint8_t* bytes, int64_t count) {
  int64_t got = 0;
  if (stream->file) {
    got = static_cast<int64_t>(std::fread(bytes, 1, static_cast<size_t>(count), stream->file));
    stream->position += got;
  } else if (stream->buffer && stream->position < stream->size) {
    got = std::min(count, stream->size - stream->position);
    std::memcpy(bytes, stream->buffer + stream->position, static_cast<size_t>(got));
    stream->position += got;
  }
  if (got < count) std::memset(bytes + got, 0, static_cast<size_t>(count - got));
}

int64_t StreamSize(const MyFILE* stream) {
  if (!stream->file) return stream->buffer ? stream->size : 0;
  struct stat status;
  const bool known = fstat(fileno(stream->file), &status) == 0 && S_ISREG(status.st_mode);
  return known ? std::max<int64_t>(status.st_size, stream->position) : stream->position;
}

void MyPutc(MyFILE* stream, int byte) {
  if (stream->file) putc_unlocked(byte & 0xFF, stream->file);
}

void WriteBytes(MyFILE* stream, const uint8_t* bytes, int64_t count) {
  if (!stream->file) return;
  // A short write is not reported, as documented.
  [[maybe_unused]] const size_t written = std::fwrite(bytes, 1, static_cast<size_t>(count), stream->file);
}
