#include "codec/row_budget.h"

namespace {

constexpr int64_t kAnyDocument = int64_t{64} << 20;  // bytes
constexpr int64_t kForEachByte = 16384;

}  // namespace

bool RowBudget::Spend(int32_t width, int32_t height) {
  const int64_t total = spent_ + int64_t{height} * (width + int64_t{sizeof(uint8_t*)});
  const int64_t beyond = total - kAnyDocument;
  if (beyond > 0 && (beyond - 1) / kForEachByte >= StreamSize(stream_)) return false;
  spent_ = total;
  return true;
}
