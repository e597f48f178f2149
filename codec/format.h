#pragma once

// The numbers of the GIF format.

#include <cstdint>

constexpr int32_t kImageIntroducer = 0x2C;
constexpr int32_t kExtensionIntroducer = 0x21;
constexpr int32_t kTrailer = 0x3B;

constexpr int32_t kMaxSubBlock = 255;  // bytes

constexpr int32_t kMaxCodeWidth = 12;                       // bits
constexpr int32_t kTableSize = 1 << kMaxCodeWidth;          // entries
constexpr int32_t kMaxMinimumCodeSize = kMaxCodeWidth - 1;  // so that the clear code still fits
