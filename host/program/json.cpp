#include "host/program/json.h"

#include <array>
#include <cstdio>

namespace host {

std::string JsonString(std::string_view text) {
  std::string json = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') json += '\\';
    if (static_cast<unsigned char>(c) >= ' ') {
      json += c;
    } else {
      std::array<char, 8> escaped{};
      std::snprintf(escaped.data(), escaped.size(), "\\u%04x", static_cast<unsigned>(c));
      json += escaped.data();
    }
  }
  return json += '"';
}

std::string JsonBoolean(bool value) { return value ? "true" : "false"; }

std::string JsonArray(const std::vector<std::string>& values) {
  std::string json = "[";
  for (const std::string& value : values) {
    if (json.size() > 1) json += ',';
    json += value;
  }
  return json += ']';
}

std::string JsonObject(const std::vector<std::pair<std::string_view, std::string>>& members) {
  std::string json = "{";
  for (const auto& [name, value] : members) {
    if (json.size() > 1) json += ',';
    json += JsonString(name);
    json += ':';
    json += value;
  }
  return json += '}';
}

}  // namespace host
