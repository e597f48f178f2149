#pragma once

// Method declarations as plugins register them, for example
//   Block(index as integer) as GifBlockZKV
//   Scale(extends ref as Picture, factor as integer = 2, assigns value as color)

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// What passes through a handler's parameter or result.
struct Type {
  enum class Kind { kNothing, kInteger, kBoolean, kColor, kPointer, kString, kObject };

  Kind kind = Kind::kNothing;
  std::string name;  // as written; for kObject the class

  bool IsHandle() const { return kind == Kind::kString || kind == Kind::kObject; }
};

// Every name that is not a plain value's or "string" is taken for a class.
Type ParseType(std::string_view name);

struct Parameter {
  std::string name;
  Type type;
  std::optional<int64_t> default_value;  // nil and false are 0, true is 1
  bool extends = false;                  // the object that an extension method is called on
  bool assigns = false;                  // the value right of "="
};

struct Declaration {
  std::string name;
  std::vector<Parameter> parameters;
  Type result;

  size_t RequiredCount() const;  // parameters in front of the first one with a default
};

// Throws std::invalid_argument, naming text and place, when `text` is no declaration.
Declaration ParseDeclaration(std::string_view text);

}  // namespace host
