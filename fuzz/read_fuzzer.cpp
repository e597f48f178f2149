// Reads any bytes as a GIF document; the slow decoder and a reader of its own judge the tree.

#include "fuzz/flat_document.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Bytes file(data, data + size);
  ExpectEqual("document read", FlattenByReader(file), FlattenByOracle(file));
  return 0;
}
