#include "host/core/declaration.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <stdexcept>

#include "host/core/names.h"
#include "host/core/text.h"

namespace host {
namespace {

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  Declaration Parse() {
    Declaration declaration;
    declaration.name = Word("a name");
    if (Take('(')) ParseParameters(declaration);
    if (TakeWord("as")) declaration.result = ParseType(Word("a type"));
    SkipBlanks();
    if (position_ != text_.size()) Fail("the end");
    return declaration;
  }

 private:
  void ParseParameters(Declaration& declaration) {
    if (Take(')')) return;
    do {
      declaration.parameters.push_back(ParseParameter());
    } while (Take(','));
    if (!Take(')')) Fail("\")\"");
  }

  Parameter ParseParameter() {
    Parameter parameter;
    parameter.name = Word("a parameter");
    parameter.extends = SameName(parameter.name, "extends");
    parameter.assigns = SameName(parameter.name, "assigns");
    if (parameter.extends || parameter.assigns) parameter.name = Word("a parameter's name");
    if (!TakeWord("as")) Fail("\"as\"");
    parameter.type = ParseType(Word("a type"));
    if (Take('=')) parameter.default_value = ParseDefault();
    return parameter;
  }

  int64_t ParseDefault() {
    if (TakeWord("nil") || TakeWord("false")) return 0;
    if (TakeWord("true")) return 1;
    SkipBlanks();
    int64_t value = 0;
    const char* begin = text_.data() + position_;
    const auto [end, error] = std::from_chars(begin, text_.data() + text_.size(), value);
    if (error != std::errc()) Fail("a default value");
    position_ += static_cast<size_t>(end - begin);
    return value;
  }

  void SkipBlanks() {
    while (position_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[position_]))) ++position_;
  }

  bool Take(char wanted) {
    SkipBlanks();
    if (position_ == text_.size() || text_[position_] != wanted) return false;
    ++position_;
    return true;
  }

  std::string_view PeekWord() {
    SkipBlanks();
    const auto is_part = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.'; };
    const auto begin = text_.begin() + static_cast<std::ptrdiff_t>(position_);
    const auto end = std::find_if_not(begin, text_.end(), is_part);
    return text_.substr(position_, static_cast<size_t>(end - begin));
  }

  bool TakeWord(std::string_view wanted) {
    if (!SameName(PeekWord(), wanted)) return false;
    position_ += wanted.size();
    return true;
  }

  std::string Word(const char* wanted) {
    std::string word(PeekWord());
    if (word.empty()) Fail(wanted);
    position_ += word.size();
    return word;
  }

  [[noreturn]] void Fail(const char* wanted) {
    throw std::invalid_argument(Text("declaration \"", text_, "\": ", wanted, " expected at column ", position_ + 1));
  }

  std::string_view text_;
  size_t position_ = 0;
};

}  // namespace

Type ParseType(std::string_view name) {
  using Kind = Type::Kind;
  constexpr struct {
    std::string_view name;
    Kind kind;
  } kPlainTypes[] = {{"integer", Kind::kInteger},
                     {"boolean", Kind::kBoolean},
                     {"color", Kind::kColor},
                     {"ptr", Kind::kPointer},
                     {"string", Kind::kString}};
  for (const auto& plain : kPlainTypes) {
    if (SameName(plain.name, name)) return {plain.kind, std::string(name)};
  }
  return {Kind::kObject, std::string(name)};
}

size_t Declaration::RequiredCount() const {
  const auto first_default =
      std::find_if(parameters.begin(), parameters.end(), [](const Parameter& p) { return p.default_value; });
  return static_cast<size_t>(first_default - parameters.begin());
}

Declaration ParseDeclaration(std::string_view text) { return Parser(text).Parse(); }

}  // namespace host
