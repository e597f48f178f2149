// Scans any bytes. What must hold of every scan is checked; what does not ends the program.

#include <cstdio>
#include <cstdlib>

#include "scan/scanner.h"

static void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "a scan breaks a rule: %s\n", what);
  std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const FileScan scan = ScanFile({data, size});
  int64_t at = scan.table.offset + scan.table.length;
  for (const BlockScan& block : scan.blocks) {
    Require(block.offset == at && block.length > 0, "blocks stand one behind the other");
    at += block.length;
  }
  Require(at <= scan.size, "nothing lies beyond the end");
  if (scan.trailer >= 0) Require(scan.trailer == at, "the trailer follows the last block");

  for (const ImageScan& image : scan.images) {
    Require(image.data.offset + image.data.length <= scan.size, "an image's data are within the file");
    Require(image.compressed_bytes <= image.data.length, "sub-blocks hold what they hold");
    Require(image.clear_codes <= image.codes && image.codes <= image.compressed_bytes * 8, "codes have bits");
    Require(image.pixels <= (image.codes - image.clear_codes) * 4096, "strings have an end");
  }
  bool damaged = false;
  for (const Finding& finding : scan.findings) {
    Require(finding.offset >= 0 && finding.offset <= scan.size, "a finding has its place");
    Require(finding.block < static_cast<int64_t>(scan.blocks.size()), "a finding has its block");
    damaged = damaged || MeaningOf(finding.kind).damage;
  }
  Require(damaged || scan.trailer >= 0, "a sound file has a trailer");
  return 0;
}
