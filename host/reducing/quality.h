#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "host/reducing/quantiser.h"

namespace host {

// The fewest colours that give pictures that quality, 1 to 100 on libimagequant's scale, and at most so many. None in
// a build without that library: GIF_IMAGEQUANT.
std::optional<std::vector<uint32_t>> ChooseByQuality(const Quantiser& quantiser, size_t most, int quality);
bool CanChooseByQuality();

}  // namespace host
