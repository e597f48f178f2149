#include "scan/findings.h"

#include <cstddef>
#include <iterator>

static constexpr FindingMeaning kMeanings[] = {
    {"not_a_gif", true, nullptr, "the file begins with neither GIF87a nor GIF89a; nothing of it is read"},
    {"cut_short", true, nullptr, "the file ends in the middle of something"},
    {"no_trailer", true, nullptr, "the file ends after a whole block, without a trailer; more may have followed"},
    {"stray_byte", true, "bytes", "a byte that begins no block; nothing is read from there on"},
    {"undefined_code", true, "pixels",
     "a code that stands for nothing; what follows in the image is lost or garbled"},
    {"end_code", true, "pixels",
     "an end code in the middle of the data; what follows in the image is lost or garbled"},
    {"too_few_pixels", true, "pixels", "the data ends before the image is full; the rest of it is empty"},
    {"full_table", false, "pixels",
     "the code table is full and goes on being used without a clear code; some readers stop there, others read on"},
    {"too_many_pixels", false, "pixels", "there is data for more pixels than the image has; they are not shown"},
    {"after_trailer", false, "bytes",
     "there are bytes after the end; no one reads them, and they are lost on saving"},
    {"index_beyond_table", false, "index",
     "a pixel's index lies beyond the colour table; readers differ in what they show, and not all can save it"},
    {"transparent_beyond_table", false, "index", "the transparent index lies beyond the image's colour table"},
    {"code_size", false, "bits", "the minimum code size is not the one that the colour table's depth asks for"},
    {"table_not_needed", false, "bytes", "the local colour table says what the global one says already"},
    {"odd_sub_blocks", false, "bytes", "the sub-blocks are not those that this extension should have"},
};
static_assert(std::size(kMeanings) == static_cast<size_t>(FindingKind::kFindingKinds));

const FindingMeaning& MeaningOf(FindingKind kind) { return kMeanings[static_cast<size_t>(kind)]; }
