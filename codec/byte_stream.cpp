#include "codec/byte_stream.h"

#include <algorithm>
#include <cstring>

#include "platform/files.h"

int GetcElsewhere(MyFILE* stream) {
  if (!stream->file) return 0;
  const int byte = GetByte(stream->file);
  if (byte == EOF) return 0;
  ++stream->position;
  return byte;
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

void MyPutc(MyFILE* stream, int byte) {
  if (stream->file) PutByte(byte & 0xFF, stream->file);
}

void WriteBytes(MyFILE* stream, const uint8_t* bytes, int64_t count) {
  if (!stream->file) return;
  // A short write is not reported, as documented.
  [[maybe_unused]] const size_t written = std::fwrite(bytes, 1, static_cast<size_t>(count), stream->file);
}
