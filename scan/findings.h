#pragma once

// What may be wrong or odd with a GIF file's bytes.

#include <cstdint>

enum class FindingKind : uint8_t {
  kNotAGif,
  kCutShort,
  kNoTrailer,
  kStrayByte,
  kUndefinedCode,
  kEndCode,
  kTooFewPixels,
  kFullTable,
  kTooManyPixels,
  kAfterTrailer,
  kIndexBeyondTable,
  kTransparentBeyondTable,
  kCodeSize,
  kTableNotNeeded,
  kOddSubBlocks,
  kFindingKinds  // how many there are
};

struct Finding {
  FindingKind kind;
  int32_t block;   // by its index; -1: of the file as a whole
  int64_t offset;  // of the byte where it shows; a file's size where that is what is missing
  int64_t amount;  // as FindingMeaning::amount says
};

struct FindingMeaning {
  const char* name;     // for programs
  bool damage;          // something of what the file was to show is lost, or may be
  const char* amount;   // what a finding's amount is; null: nothing
  const char* meaning;  // for people
};

const FindingMeaning& MeaningOf(FindingKind kind);
