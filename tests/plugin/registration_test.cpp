#include "plugin/registration.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/lending.h"

static std::string Taken(char* text) {
  const std::string copy = text ? text : "(null)";
  std::free(text);
  return copy;
}

// All four lists of a class, and lists that are not there although they claim members.
TEST(Registration, MarkerBitsBecomeFlagsEverywhere) {
  constexpr uint32_t kMarked = 0xC0001, kFixed = 13;
  REALproperty properties[2] = {};
  REALmethodDefinition methods[2] = {};
  for (REALproperty& property : properties) property.flags = kMarked;
  for (REALmethodDefinition& method : methods) method.flags = kMarked;
  REALclassDefinition definition = {};
  definition.flags = kMarked;
  definition.properties = &properties[0];
  definition.properties2 = &properties[1];
  definition.methods = &methods[0];
  definition.methods2 = &methods[1];
  definition.property_count = definition.property_count2 = definition.method_count = definition.method_count2 = 1;
  rbversion_rbversion = 2019.01;
  FixConsoleFlags(&definition);
  EXPECT_EQ(definition.flags, kFixed);
  for (const auto& property : properties) EXPECT_EQ(property.flags, kFixed);
  for (const auto& method : methods) EXPECT_EQ(method.flags, kFixed);
  definition.methods = nullptr;
  FixConsoleFlags(&definition);
}

static char* ExtendFolderitem(const char* declaration) { return AddClassParameter(declaration, "Folderitem"); }

// What the plugin's own tables do not have among their declarations.
TEST(Registration, DeclarationsTakeOneMoreParameter) {
  const std::string long_name(1200, 'n');
  const struct {
    char* (*add)(const char*);
    std::string declaration, rewritten;
  } rows[] = {
      {ExtendFolderitem, "Close", "Close(extends ref as Folderitem)"},
      {ExtendFolderitem, "Odd (a as X)", "Odd(extends ref as Folderitem) (a as X)"},
      {ExtendFolderitem, "", "(extends ref as Folderitem)"},
      {ExtendFolderitem, "F(" + long_name, "F(extends ref as Folderitem, " + std::string(969, 'n')},
      {ExtendFolderitem, long_name, std::string(999, 'n')},
      {AddAssignedParameter, "Red(i as integer) as integer", "Red(i as integer, assigns value as integer)"},
      {AddAssignedParameter, "Title as string", "Title(assigns value as string)"},
      {AddAssignedParameter, long_name + "()", std::string(998, 'n')},
      {AddAssignedParameter, "Title", "(null)"},
      {AddAssignedParameter, "", "(null)"},
  };
  for (const auto& row : rows) EXPECT_EQ(Taken(row.add(row.declaration.c_str())), row.rewritten);
}

// What the host got, kept as text.
static std::vector<std::string> registered;

static void GetModule(REALmoduleDefinition* m) {
  static auto& kept = *new std::vector<REALmoduleDefinition*>;  // a module is the host's for good
  kept.push_back(m);
  std::string text = std::string("module ") + m->name;
  for (int64_t i = 0; i < m->method_count; ++i) {
    const REALmethodDefinition& method = m->methods[i];
    text += std::string("\n") + method.declaration + " " + std::to_string(method.flags) +
            (method.setter ? " with setter" : "") + " " + std::to_string(reinterpret_cast<uintptr_t>(method.handler));
  }
  registered.push_back(text);
}

TEST(Registration, AssignableMethodsBecomeTwoInModulesOfExtensions) {
  StartLending();
  Lend("PluginRegisterModule", GetModule);
  gpartname = "GIF";
  rbversion_rbversion = 2013.0;
  const auto handler = [](uintptr_t address) { return reinterpret_cast<REALproc>(address); };
  REALmethodDefinition methods[] = {{handler(1), handler(2), "Title as string", 4, 0, 0},
                                    {handler(3), nullptr, "Save(a as X) as boolean", 4, 0, 0},
                                    {nullptr, nullptr, "Nothing", 4, 0, 0}};
  REALclassDefinition extension = {};
  extension.name = "Folderitem";
  extension.methods = methods;
  extension.method_count = 3;
  RegisterClassExtension(&extension);
  RegisterGlobalMethods(methods, 2);
  // Nothing to register: no methods, or none with a handler.
  extension.method_count = 0;
  RegisterClassExtension(&extension);
  extension.methods = &methods[2];
  extension.method_count = 1;
  RegisterClassExtension(&extension);
  const std::vector<std::string> expected = {
      "module FolderitemGIFExtensionZKV\n"
      "Title(extends ref as Folderitem, assigns value as string) 20 2\n"
      "Title(extends ref as Folderitem) as string 20 1\n"
      "Save(extends ref as Folderitem, a as X) as boolean 20 3",
      "module GIFGlobalsZKV\nTitle as string 20 with setter 1\nSave(a as X) as boolean 20 3"};
  EXPECT_EQ(registered, expected);
}
