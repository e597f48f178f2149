#pragma once

// JSON texts (RFC 8259), put together from the inside out.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

std::string JsonString(std::string_view text);  // UTF-8
std::string JsonBoolean(bool value);
std::string JsonArray(const std::vector<std::string>& values);
std::string JsonObject(const std::vector<std::pair<std::string_view, std::string>>& members);

}  // namespace host
