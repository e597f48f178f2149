#pragma once

// Rows of the definition records, made so that the compiler compares what a row tells scripts with the handlers
// beside it:
//
//   PropertyRow("Count", "Integer", GetCount)
//   MethodRow("Red(index as integer) as integer", GetRed, SetRed)
//
// A name, type or parameter that does not fit its handler is a call of one of the functions below that have no body,
// which no constant expression can make.

#include <string_view>
#include <type_traits>

#include "bridge/gif_plugin_host.h"

// Markers in the plugin's own tables, which no host gets to see: hosts that have pictures everywhere get the flag in
// their place, older ones nothing. No table has the second.
constexpr uint32_t kPictureMember = 0x40000;
constexpr uint32_t kOtherMarker = 0x80000, kOtherMarked = 8;

// --- Which C type a value of a type name has -----------------------------------------------------------------------

namespace definition {

void TypeDoesNotFitItsHandler();
void DeclarationIsNotWellFormed();
void ParametersDoNotFitTheirHandler();

constexpr char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

constexpr bool SameWord(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (Lower(a[i]) != Lower(b[i])) return false;
  }
  return true;
}

// Every name that is not a plain value's, or of a handle of its own kind, is a class whose instances are objects.
template <typename Value>
constexpr bool Fits(std::string_view type) {
  if (SameWord(type, "Integer")) return std::is_same_v<Value, int64_t>;
  if (SameWord(type, "Boolean")) return std::is_same_v<Value, int8_t>;
  if (SameWord(type, "Color")) return std::is_same_v<Value, uint32_t>;
  if (SameWord(type, "Ptr")) return std::is_same_v<Value, void*>;
  if (SameWord(type, "String")) return std::is_same_v<Value, REALstringStruct*>;
  if (SameWord(type, "MemoryBlock")) return std::is_same_v<Value, REALmemoryBlockStruct*>;
  if (SameWord(type, "Picture")) return std::is_same_v<Value, REALpictureStruct*>;
  if (SameWord(type, "FolderItem")) return std::is_same_v<Value, REALfolderItemStruct*>;
  return std::is_same_v<Value, REALobjectStruct*>;
}

// A type name, fit for handlers that take or give a Value.
template <typename Value>
struct TypeOf {
  consteval TypeOf(const char* type) : text(type) {  // NOLINT: a row's text is meant to become one
    if (!Fits<Value>(type)) TypeDoesNotFitItsHandler();
  }
  const char* text;
};

// Takes "Name(first as Type, second as Type = 1) as Type" apart, word by word.
class Reader {
 public:
  constexpr explicit Reader(std::string_view text) : rest_(text) {}

  constexpr std::string_view Word() {
    SkipBlanks();
    size_t length = 0;
    while (length < rest_.size() && std::string_view(" (),=").find(rest_[length]) == std::string_view::npos) ++length;
    if (length == 0) DeclarationIsNotWellFormed();
    const std::string_view word = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return word;
  }
  constexpr bool Take(char wanted) {
    SkipBlanks();
    if (rest_.empty() || rest_.front() != wanted) return false;
    rest_.remove_prefix(1);
    return true;
  }
  constexpr std::string_view TypeAfterAs() {
    if (!SameWord(Word(), "as")) DeclarationIsNotWellFormed();
    return Word();
  }
  constexpr bool AtEnd() {
    SkipBlanks();
    return rest_.empty();
  }

 private:
  constexpr void SkipBlanks() {
    while (!rest_.empty() && rest_.front() == ' ') rest_.remove_prefix(1);
  }

  std::string_view rest_;
};

// A declaration, fit for a handler of this form (behind the object that it is called on).
template <typename Result, typename... Parameters>
struct DeclarationOf {
  consteval DeclarationOf(const char* declaration) : text(declaration) {  // NOLINT: as for TypeOf
    Reader reader(declaration);
    reader.Word();
    size_t read = 0;
    if (reader.Take('(')) {
      (CheckParameter<Parameters>(reader, read), ...);
      if (!reader.Take(')')) ParametersDoNotFitTheirHandler();
    }
    if (read != sizeof...(Parameters)) ParametersDoNotFitTheirHandler();
    if constexpr (!std::is_void_v<Result>) {
      if (!Fits<Result>(reader.TypeAfterAs())) TypeDoesNotFitItsHandler();
    }
    if (!reader.AtEnd()) DeclarationIsNotWellFormed();
  }
  const char* text;

 private:
  template <typename Parameter>
  static consteval void CheckParameter(Reader& reader, size_t& read) {
    if (read++ > 0 && !reader.Take(',')) ParametersDoNotFitTheirHandler();
    reader.Word();
    if (!Fits<Parameter>(reader.TypeAfterAs())) ParametersDoNotFitTheirHandler();
    if (reader.Take('=')) reader.Word();
  }
};

template <typename Function>
REALproc Handler(Function* function) {
  return reinterpret_cast<REALproc>(function);
}

}  // namespace definition

// --- Rows ----------------------------------------------------------------------------------------------------------

// A property; read-only without a setter. `Object` is the kind of handle that the handlers take for themselves.
template <typename Object, typename Value>
REALproperty PropertyRow(const char* name, std::type_identity_t<definition::TypeOf<Value>> type,
                         Value (*getter)(Object*, int64_t),
                         std::type_identity_t<void (*)(Object*, int64_t, Value)> setter = nullptr) {
  using definition::Handler;
  return {nullptr, name, type.text, kEverywhere, Handler(getter), Handler(setter), 0, nullptr};
}

// A method of a class, or of one that is extended: its handler takes the object first.
template <typename Result, typename Object, typename... Parameters>
REALmethodDefinition MethodRow(std::type_identity_t<definition::DeclarationOf<Result, Parameters...>> declaration,
                               Result (*handler)(Object*, Parameters...), uint32_t flags = kEverywhere) {
  return {definition::Handler(handler), nullptr, declaration.text, flags, 0, 0};
}

// One that scripts may also assign to: `p.Red(i) = v`.
template <typename Result, typename Object, typename... Parameters>
REALmethodDefinition MethodRow(std::type_identity_t<definition::DeclarationOf<Result, Parameters...>> declaration,
                               Result (*handler)(Object*, Parameters...),
                               std::type_identity_t<void (*)(Object*, Parameters..., Result)> setter) {
  using definition::Handler;
  return {Handler(handler), Handler(setter), declaration.text, kEverywhere, 0, 0};
}

// A global method: there is no object.
template <typename Result, typename... Parameters>
REALmethodDefinition GlobalMethodRow(
    std::type_identity_t<definition::DeclarationOf<Result, Parameters...>> declaration,
    Result (*handler)(Parameters...), uint32_t flags = kEverywhere) {
  return {definition::Handler(handler), nullptr, declaration.text, flags, 0, 0};
}

// --- Classes
// ---------------------------------------------------------------------------------------------------------

// The record of a class, or of more methods for a class that exists already, before its members are filled in.
inline REALclassDefinition ClassRecord(const char* name) {
  REALclassDefinition made = {};
  made.version = kClassRecordVersion;
  made.name = name;
  made.flags = kEverywhere;
  return made;
}

// The same for a class whose instance data are an `Instance`.
template <typename Instance>
REALclassDefinition ClassRecord(const char* name, void (*destructor)(REALobjectStruct*)) {
  REALclassDefinition made = ClassRecord(name);
  made.instance_size = sizeof(Instance);
  made.destructor = definition::Handler(destructor);
  return made;
}

template <size_t kMethods>
void FillMethods(REALclassDefinition& to, REALmethodDefinition (&methods)[kMethods]) {
  to.methods = methods;
  to.method_count = kMethods;
}

template <size_t kProperties, size_t kMethods>
void FillMembers(REALclassDefinition& to, REALproperty (&properties)[kProperties],
                 REALmethodDefinition (&methods)[kMethods]) {
  to.properties = properties;
  to.property_count = kProperties;
  FillMethods(to, methods);
}
