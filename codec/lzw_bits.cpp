#include "codec/lzw_bits.h"

#include <algorithm>

namespace {

constexpr uint32_t kRow = 8, kByOne = 0, kByTwo = 2, kInPrefix = 6;
constexpr uint32_t kNobodysRow = 2 * kRow;  // codes below the clear code and above 1 are no strings

void MakeRow(BitStrings& bits, uint32_t code, uint32_t in_prefix) {
  uint16_t* const row = bits.rows + code * kRow;
  std::fill_n(row, kRow, uint16_t{0});
  row[kInPrefix] = static_cast<uint16_t>(in_prefix);
}

void AddString(BitStrings& bits, uint32_t row, uint32_t pixel, uint32_t code) {
  const auto made = static_cast<uint16_t>(code * kRow);
  bits.rows[row + kByOne + pixel] = made;
  bits.rows[bits.rows[row + kInPrefix] + pixel] = made;
  MakeRow(bits, code, row + kByTwo + 2 * pixel);
}

}  // namespace

void UseBits(BitStrings& bits, const LzwStrings& strings) {
  for (uint32_t pixel = 0; pixel < 2; ++pixel) MakeRow(bits, pixel, kNobodysRow);
  for (int32_t code = strings.end_code + 1; code < strings.next_code; ++code) {
    const uint32_t key = strings.keys[code];
    AddString(bits, KeyPrefix(key) * kRow, KeyPixel(key), static_cast<uint32_t>(code));
  }
}

const uint8_t* CodeBits(BitStrings& bits, LzwStrings& strings, const uint8_t* at, const uint8_t* end) {
  const int32_t pause = strings.pause_code;
  int32_t next = strings.next_code;
  uint32_t row = static_cast<uint32_t>(strings.prefix_code) * kRow;
  while (at < end && next < pause) {
    for (; end - at >= 2; at += 2) {
      const uint16_t* const by_two = bits.rows + kByTwo + 2 * at[0] + at[1];
      const uint32_t two = by_two[row];
      if (two == 0) break;
      row = two;
    }
    if (at == end) break;
    uint32_t pixel = *at++;
    if (const uint32_t one = bits.rows[row + kByOne + pixel]; one != 0) {
      row = one;
      if (at == end) break;
      pixel = *at++;  // which leads nowhere: the two have been looked for
    }
    strings.keys[next] = Key(row / kRow, pixel);
    AddString(bits, row, pixel, static_cast<uint32_t>(next++));
    row = pixel * kRow;
  }
  strings.next_code = next;
  strings.prefix_code = static_cast<int32_t>(row / kRow);
  return at;
}
