#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "host/core/encoding.h"
#include "host/core/heap.h"

namespace host {

// A string: bytes that never change, and the encoding that they are said to be in.
class String : public Counted {
 public:
  static constexpr const char* kKind = "string";

  explicit String(std::string bytes, uint32_t encoding = kEncodingUnknown)
      : bytes_(std::move(bytes)), encoding_(encoding) {}

  const char* kind() const override { return kKind; }
  const std::string& type_name() const override;
  std::string Describe() const override;  // the bytes, quoted, long ones cut short

  const std::string& bytes() const { return bytes_; }
  uint32_t encoding() const { return encoding_; }
  void set_encoding(uint32_t encoding) { encoding_ = encoding; }

 private:
  const std::string bytes_;
  uint32_t encoding_;
};

// The bytes between double quotes: what cannot be printed as \xNN, long texts cut short with their length
// behind.
std::string Quote(std::string_view bytes);

}  // namespace host
