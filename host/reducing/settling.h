#pragma once

#include <cstdint>
#include <vector>

#include "host/reducing/quantiser.h"

namespace host {

// Up to 256 colours, moved to where the squared distances of the points to their nearest ones are small.
std::vector<uint32_t> Settled(const std::vector<Quantiser::Point>& points, const std::vector<uint32_t>& colors);

}  // namespace host
