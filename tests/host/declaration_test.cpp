#include "host/declaration.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "host/text.h"

namespace host {
namespace {

// The declaration written out again, with each type's kind as a number and what is special in brackets.
std::string Written(const Declaration& declaration) {
  std::string text = declaration.name;
  for (const Parameter& parameter : declaration.parameters) {
    text += Text(" ", parameter.name, ":", static_cast<int>(parameter.type.kind), parameter.type.name,
                 parameter.extends ? "[extends]" : "", parameter.assigns ? "[assigns]" : "");
    if (parameter.default_value) text += Text("=", *parameter.default_value);
  }
  return Text(text, " -> ", static_cast<int>(declaration.result.kind), declaration.result.name, " needs ",
              declaration.RequiredCount());
}

TEST(Declaration, IsParsedIntoNamesTypesAndDefaults) {
  const struct {
    const char* text;
    const char* written;
  } kCases[] = {
      {"Add(block as GifBlockZKV)", "Add block:6GifBlockZKV -> 0 needs 1"},
      {"Operator_Convert() As Ptr", "Operator_Convert -> 4Ptr needs 0"},
      {"Open(extends ref as Folderitem, quiet as boolean = true) as GIFZKV",
       "Open ref:6Folderitem[extends] quiet:2boolean=1 -> 6GIFZKV needs 1"},
      {"Red(extends ref as P, i as integer, assigns value as color)",
       "Red ref:6P[extends] i:1integer value:3color[assigns] -> 0 needs 3"},
      {"Draw(Image as Picture, sw as Integer = -10000,sh as Integer=7)",
       "Draw Image:6Picture sw:1Integer=-10000 sh:1Integer=7 -> 0 needs 1"},
  };
  for (const auto& test : kCases) EXPECT_EQ(Written(ParseDeclaration(test.text)), test.written) << test.text;
}

TEST(Declaration, SaysWhereItCannotBeUnderstood) {
  const struct {
    const char* text;
    const char* complaint;
  } kCases[] = {
      {"Block(index)", "\"as\" expected at column 12"},
      {"Block(index as integer", "\")\" expected at column 23"},
      {"Block(index as ) as X", "a type expected at column 16"},
      {"Block(a as integer = x)", "a default value expected at column 22"},
  };
  for (const auto& test : kCases) {
    try {
      ParseDeclaration(test.text);
      ADD_FAILURE() << test.text;
    } catch (const std::invalid_argument& error) {
      EXPECT_NE(std::string(error.what()).find(test.complaint), std::string::npos) << error.what();
    }
  }
}

}  // namespace
}  // namespace host
