#include "plugin/registration.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "plugin/host_functions.h"

static std::string Taken(char* text) {
  const std::string copy = text ? text : "(null)";
  std::free(text);
  return copy;
}

TEST(Registration, EveryHostVersionHasItsControlVersion) {
  const struct {
    double host;
    uint32_t control;
  } rows[] = {{0.0, 9},      {2010.029, 9}, {2011.0, 9},     {2011.99, 9},  {2012.0, 10},  {2012.9, 10}, {2013.0, 11},
              {2013.02, 11}, {2013.03, 12}, {2013.0399, 12}, {2013.04, 13}, {2019.01, 13}, {3000.0, 13}};
  for (const auto& row : rows) EXPECT_EQ(ControlVersionFor(row.host), row.control) << row.host;
}

TEST(Registration, MarkerBitsBecomeFlagsFromOneVersionOn) {
  const struct {
    double host;
    uint32_t flags, fixed;
  } rows[] = {{2010.029, 0x40000, 4}, {2010.029, 0x80000, 8}, {2010.029, 0xC0001, 13}, {2010.029, 4, 4},
              {2010.02, 0x40000, 0},  {2010.02, 0x80004, 4},  {0.0, 0x40000, 0},       {3000.0, 0x40000, 4}};
  for (const auto& row : rows) {
    rbversion_rbversion = row.host;
    EXPECT_EQ(FixedFlags(row.flags), row.fixed) << row.host << " " << std::hex << row.flags;
  }

  // All four lists of a class, and lists that are not there although they claim members.
  REALproperty properties[2][1] = {};
  REALmethodDefinition methods[2][1] = {};
  REALclassDefinition definition = {};
  definition.flags = properties[0][0].flags = properties[1][0].flags = methods[0][0].flags = methods[1][0].flags =
      0x40000;
  definition.properties = properties[0];
  definition.properties2 = properties[1];
  definition.methods = methods[0];
  definition.methods2 = methods[1];
  definition.property_count = definition.property_count2 = definition.method_count = definition.method_count2 = 1;
  rbversion_rbversion = 2019.01;
  FixConsoleFlags(&definition);
  EXPECT_EQ(definition.flags, 4U);
  for (const auto& list : properties) EXPECT_EQ(list[0].flags, 4U);
  for (const auto& list : methods) EXPECT_EQ(list[0].flags, 4U);
  definition.methods = nullptr;
  FixConsoleFlags(&definition);
}

TEST(Registration, DeclarationsTakeTheExtendedObject) {
  const std::string long_name(1200, 'n');
  const struct {
    std::string declaration, extended;
  } rows[] = {
      {"Open as X", "Open(extends ref as Folderitem) as X"},
      {"Save(data as X) as boolean", "Save(extends ref as Folderitem, data as X) as boolean"},
      {"Close", "Close(extends ref as Folderitem)"},
      {"Odd (a as X)", "Odd(extends ref as Folderitem) (a as X)"},
      {"", "(extends ref as Folderitem)"},
      {"F(" + long_name, "F(extends ref as Folderitem, " + std::string(969, 'n')},  // 998 characters
      {long_name, std::string(999, 'n')},
  };
  for (const auto& row : rows)
    EXPECT_EQ(Taken(AddClassParameter(row.declaration.c_str(), "Folderitem")), row.extended);
}

TEST(Registration, DeclarationsTakeTheAssignedValue) {
  const struct {
    const char *declaration, *assigned;
  } rows[] = {
      {"Red(i as integer) as integer", "Red(i as integer, assigns value as integer)"},
      {"Title(extends ref as F) as string", "Title(extends ref as F, assigns value as string)"},
      {"Title as string", "Title(assigns value as string)"},
      {"Title", "(null)"},
      {"", "(null)"},
  };
  for (const auto& row : rows) EXPECT_EQ(Taken(AddAssignedParameter(row.declaration)), row.assigned);
}

// What the host got, kept as text.
static std::vector<std::string> registered;

static void GetClass(REALclassDefinition* c) {
  registered.push_back("class v" + std::to_string(c->version) + " " + std::to_string(c->instance_size));
}
static void GetExtension(REALclassDefinition* c) {
  registered.push_back("extension v" + std::to_string(c->version) + " " + c->name);
}
static void GetModule(REALmoduleDefinition* m) {
  static auto& kept = *new std::vector<REALmoduleDefinition*>;  // a module is the host's for good
  kept.push_back(m);
  std::string text = "module v" + std::to_string(m->version) + " " + m->name;
  for (int64_t i = 0; i < m->method_count; ++i) {
    const REALmethodDefinition& method = m->methods[i];
    text += std::string("\n") + method.declaration + " " + std::to_string(method.flags) +
            (method.setter ? " with setter" : "") + " " + std::to_string(reinterpret_cast<uintptr_t>(method.handler));
  }
  registered.push_back(text);
}
static void GetMethod(REALmethodDefinition* m) { registered.push_back(std::string("method ") + m->declaration); }

static void* Resolve(const char* name) {
  const std::string asked = name;
  if (asked == "PluginRegisterClass") return reinterpret_cast<void*>(GetClass);
  if (asked == "PluginRegisterClassExtension") return reinterpret_cast<void*>(GetExtension);
  if (asked == "PluginRegisterModule") return reinterpret_cast<void*>(GetModule);
  if (asked == "PluginRegisterMethod") return reinterpret_cast<void*>(GetMethod);
  return nullptr;
}

TEST(Registration, ExtensionsAndGlobalsGoAsModulesToSomeHosts) {
  gResolver = Resolve;
  gpartname = "GIF";
  CurrentREALControlVersion = 11;
  const auto handler = [](uintptr_t address) { return reinterpret_cast<REALproc>(address); };
  REALmethodDefinition methods[] = {{handler(1), handler(2), "Title as string", 4, 0, 0},
                                    {handler(3), nullptr, "Save(a as X) as boolean", 4, 0, 0},
                                    {nullptr, nullptr, "Nothing", 4, 0, 0}};
  REALclassDefinition extension = {};
  extension.name = "Folderitem";
  extension.methods = methods;
  extension.method_count = 3;

  const std::string module =
      "module v11 FolderitemGIFExtensionZKV\n"
      "Title(extends ref as Folderitem, assigns value as string) 20 2\n"
      "Title(extends ref as Folderitem) as string 20 1\n"
      "Save(extends ref as Folderitem, a as X) as boolean 20 3";
  const std::string globals =
      "module v11 GIFGlobalsZKV\nTitle as string 20 with setter 1\nSave(a as X) as boolean 20 3";
  const std::vector<std::string> as_modules = {module, globals};
  const std::vector<std::string> one_by_one = {"extension v11 Folderitem", "method Title as string",
                                               "method Save(a as X) as boolean"};
  for (const double version : {0.0, 2012.99, 2013.0, 2999.9, 3000.0}) {
    rbversion_rbversion = version;
    registered.clear();
    RegisterClassExtension(&extension);
    RegisterGlobalMethods(methods, 2);
    EXPECT_EQ(registered, version >= 2013.0 && version < 3000.0 ? as_modules : one_by_one) << version;
  }

  // Nothing to register: no methods, or none with a handler.
  rbversion_rbversion = 2013.0;
  registered.clear();
  extension.method_count = 0;
  RegisterClassExtension(&extension);
  methods[0] = {};
  methods[0].declaration = "Nothing";
  extension.method_count = 1;
  RegisterClassExtension(&extension);
  EXPECT_EQ(registered.size(), 0U);
}

TEST(Registration, InstanceSizesAreMultiplesOfSixteen) {
  gResolver = Resolve;
  CurrentREALControlVersion = 12;
  registered.clear();
  for (const int64_t size : {0, 24, 32, 88, 1048}) {
    REALclassDefinition definition = {};
    definition.instance_size = size;
    RegisterClass(&definition);
  }
  EXPECT_EQ(registered, (std::vector<std::string>{"class v12 0", "class v12 32", "class v12 32", "class v12 96",
                                                  "class v12 1056"}));
}
