// Reads any bytes as a GIF document; the slow decoder and a reader of its own judge the tree.

#include "fuzz/flat_document.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Bytes file(data, data + size);
  const Bytes expected = FlattenByOracle(&file);
  ExpectEqual("document read", FlattenByReader(file), expected);
  return 0;
}
