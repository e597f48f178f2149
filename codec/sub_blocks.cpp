#include "codec/sub_blocks.h"

#include <algorithm>

int32_t BeginSubBlock(MyFILE* stream) { return MyGetc(stream); }

int32_t ReadSubBlock(MyFILE* stream, uint8_t* bytes) {
  const int32_t length = BeginSubBlock(stream);
  ReadBytes(stream, bytes, length);
  return length;
}

void SkipSubBlocks(MyFILE* stream) {
  uint8_t dropped[kMaxSubBlock];
  while (ReadSubBlock(stream, dropped) > 0) {
  }
}

void WriteSubBlocks(MyFILE* stream, const uint8_t* bytes, int64_t length) {
  do {
    const int64_t written = std::clamp<int64_t>(length, 0, kMaxSubBlock);
    MyPutc(stream, static_cast<int>(written));
    WriteBytes(stream, bytes, written);
    bytes += written;
    length -= written;
  } while (length > 0);
}

void EndSubBlocks(MyFILE* stream) { MyPutc(stream, 0); }
