// What the plugin's own tables do not have, registered by the parts that register them.

#include "plugin/registration.h"

#include <cstdlib>
#include <memory>
#include <vector>

#include "tests/support/lending.h"

// All four lists of a class, and lists that are not there although they claim members.
TEST(Registration, MarkerBitsBecomeFlagsEverywhere) {
  constexpr uint32_t kMarked = 0xC0001, kFixed = 13;
  REALproperty properties[2] = {};
  REALmethodDefinition methods[2] = {};
  rbversion_rbversion = 2019.01;
  for (const auto& [flags, fixed] : {std::pair{0, 0}, {1, 1}, {0x40000, 4}, {0x80000, 8}, {0x80010, 24}}) {
    EXPECT_EQ(FixedFlags(flags), fixed);
  }
  for (int i = 0; i < 2; ++i) properties[i].flags = methods[i].flags = kMarked;
  REALclassDefinition definition = {};
  definition.flags = kMarked;
  definition.properties = &properties[0];
  definition.properties2 = &properties[1];
  definition.methods = &methods[0];
  definition.methods2 = &methods[1];
  definition.property_count = definition.property_count2 = definition.method_count = definition.method_count2 = 1;
  FixConsoleFlags(&definition);
  EXPECT_EQ(definition.flags, kFixed);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(properties[i].flags, kFixed);
    EXPECT_EQ(methods[i].flags, kFixed);
  }
  definition.methods = nullptr;
  FixConsoleFlags(&definition);
}

TEST(Registration, DeclarationsTakeOneMoreParameter) {
  const auto extend = [](const char* declaration) { return AddClassParameter(declaration, "Folderitem"); };
  const std::string long_name(1200, 'n');
  const struct {
    char* (*add)(const char*);
    std::string declaration, rewritten;
  } rows[] = {
      {extend, "Close", "Close(extends ref as Folderitem)"},
      {extend, "Odd (a as X)", "Odd(extends ref as Folderitem) (a as X)"},
      {extend, "", "(extends ref as Folderitem)"},
      {extend, "F(" + long_name, "F(extends ref as Folderitem, " + std::string(969, 'n')},
      {extend, long_name, std::string(999, 'n')},
      {AddAssignedParameter, "Red(i as integer) as integer", "Red(i as integer, assigns value as integer)"},
      {AddAssignedParameter, "Title as string", "Title(assigns value as string)"},
      {AddAssignedParameter, long_name + "()", std::string(998, 'n')},
      {AddAssignedParameter, "Title", "(null)"},
      {AddAssignedParameter, "", "(null)"},
  };
  for (const auto& row : rows) {
    const std::unique_ptr<char, decltype(&std::free)> text(row.add(row.declaration.c_str()), std::free);
    EXPECT_EQ(text ? text.get() : "(null)", row.rewritten);
  }
}

// What the host got, kept as text.
static std::string registered;

static void GetModule(REALmoduleDefinition* m) {
  static auto& kept = *new std::vector<REALmoduleDefinition*>;  // a module is the host's for good
  kept.push_back(m);
  registered += std::string("module ") + m->name + "\n";
  for (int64_t i = 0; i < m->method_count; ++i) {
    const REALmethodDefinition& method = m->methods[i];
    registered += std::to_string(reinterpret_cast<uintptr_t>(method.handler)) +
                  (method.setter ? " with setter " : " ") + method.declaration + " " + std::to_string(method.flags) +
                  "\n";
  }
}

TEST(Registration, AssignableMethodsBecomeTwoInModulesOfExtensions) {
  StartLending();
  Lend("PluginRegisterModule", GetModule);
  gpartname = "GIF";
  rbversion_rbversion = 2013.0;
  const auto handler = [](uintptr_t address) { return reinterpret_cast<REALproc>(address); };  // NOLINT(*int-to-ptr)
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
  EXPECT_EQ(registered,
            "module FolderitemGIFExtensionZKV\n"
            "2 Title(extends ref as Folderitem, assigns value as string) 20\n"
            "1 Title(extends ref as Folderitem) as string 20\n"
            "3 Save(extends ref as Folderitem, a as X) as boolean 20\n"
            "module GIFGlobalsZKV\n"
            "1 with setter Title as string 20\n"
            "3 Save(a as X) as boolean 20\n");
}
