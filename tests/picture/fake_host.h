#pragma once

// A host of pictures and nothing else, in the test's own process: real pixel memory of both kinds, counted
// references, and every way in which a host can refuse. One at a time; making one forgets what the plugin found out
// before.

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "plugin/host_records.h"

// What the host offers. Start from `DesktopHost` or `ConsoleHost`.
struct HostOptions {
  std::string application_class;  // empty: none of them
  bool contexts = false;          // describes pictures as bitmap contexts
  bool images = false;            // describes pictures as libgd images
  uint32_t alpha_info = 1;
  size_t bits_per_pixel = 32;
  size_t padding = 0;  // bytes after each row of a context
  int64_t picture_type = 2;
  bool draws = true;                                        // pictures have Graphics, with DrawPicture
  int descriptions = 1000;                                  // how many times a description is given
  std::string missing = {};                                 // the name of a host function that there is not
  std::function<void(REALpictureDescription&)> spoil = {};  // changes each description before it is given
};
inline HostOptions DesktopHost() { return {.application_class = "Application", .contexts = true}; }
inline HostOptions ConsoleHost() { return {.application_class = "ConsoleApplication", .images = true}; }

struct FakePicture;

class FakeHost {
 public:
  explicit FakeHost(const HostOptions& options);
  ~FakeHost();

  // A picture of the host's own, with one reference.
  REALpictureStruct* MakePicture(int32_t width, int32_t height);

  // Gives the test's own references back (null has none); then nothing may be left: no reference, no lock, no write
  // beside the pixels.
  bool IsBalancedWithout(std::initializer_list<REALpictureStruct*> returned);

  HostOptions options;
  std::vector<std::string> calls;  // names of the host functions called, in order
  std::vector<std::unique_ptr<FakePicture>> pictures;
};

// The pixel's four bytes as they lie in memory, first byte highest.
uint32_t BytesAt(REALpictureStruct* picture, int64_t x, int64_t y);

// The mask that was made for the picture; null without one. Borrowed.
REALpictureStruct* MaskOf(REALpictureStruct* picture);
