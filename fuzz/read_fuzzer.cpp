// Reads any bytes as a GIF document; the slow decoder and a reader of its own judge the tree.

#include "fuzz/flat_document.h"
#include "fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Bytes file(data, data + size);
  if (SmallImages() && size > 0 && data[size - 1] != 0xA5) LimitImages(&file, 2000);
  ExpectEqual("document read", FlattenByReader(file), FlattenByOracle(file));
  return 0;
}
