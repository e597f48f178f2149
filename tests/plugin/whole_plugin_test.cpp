// The shared library as a host meets it: what it registers, record by record, on hosts of every version.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "bridge/gif_plugin_host.h"

// What was registered, as text that a child process shares; the host version that the resolver tells (below 0: none).
constexpr size_t kTextRoom = 1 << 16;
static char* text;
static double host_version;

static void Say(const std::string& line) {
  std::strncat(text, (line + "\n").c_str(), kTextRoom - std::strlen(text) - 1);
}

static std::string Flags(uint32_t flags) { return " flags " + std::to_string(flags); }

static void SayMethod(const REALmethodDefinition& m) {
  Say(std::string("  ") + m.declaration + Flags(m.flags) + (m.handler ? "" : " NO HANDLER") +
      (m.setter ? " assignable" : "") + (m.reserved_first || m.reserved_last ? " RESERVED SET" : ""));
}

static void SayClass(const std::string& what, const REALclassDefinition& c) {
  const bool extra =
      c.superclass || c.constructor || c.properties2 || c.property_count2 || c.methods2 || c.method_count2;
  Say(what + " " + c.name + " version " + std::to_string(c.version) + " size " + std::to_string(c.instance_size) +
      Flags(c.flags) + (c.destructor ? " destructor" : "") + (extra ? " EXTRA FIELDS SET" : ""));
  for (int64_t i = 0; i < c.property_count; ++i) {
    const REALproperty& p = c.properties[i];
    Say(std::string("  ") + p.name + " as " + p.type + Flags(p.flags) + (p.getter ? "" : " NO GETTER") +
        (p.setter ? " writable" : "") + (p.reserved_first || p.reserved_last || p.parameter ? " RESERVED SET" : ""));
  }
  for (int64_t i = 0; i < c.method_count; ++i) SayMethod(c.methods[i]);
}

static double GetVersion() { return host_version; }
static void RegisterVersion(int32_t version) { Say("control version " + std::to_string(version)); }
static void RegisterClass(REALclassDefinition* c) { SayClass("class", *c); }
static void RegisterExtension(REALclassDefinition* c) { SayClass("extension", *c); }
static void RegisterModule(REALmoduleDefinition* m) {
  Say(std::string("module ") + m->name + " version " + std::to_string(m->version));
  for (int64_t i = 0; i < m->method_count; ++i) SayMethod(m->methods[i]);
}
static void RegisterMethod(REALmethodDefinition* m) {
  Say("method");
  SayMethod(*m);
}

static void* Resolve(const char* name) {
  static const std::map<std::string, void*> offered = {
      {"REALGetRBVersion", reinterpret_cast<void*>(GetVersion)},
      {"RegisterPluginVersion", reinterpret_cast<void*>(RegisterVersion)},
      {"PluginRegisterClass", reinterpret_cast<void*>(RegisterClass)},
      {"PluginRegisterClassExtension", reinterpret_cast<void*>(RegisterExtension)},
      {"PluginRegisterModule", reinterpret_cast<void*>(RegisterModule)},
      {"PluginRegisterMethod", reinterpret_cast<void*>(RegisterMethod)}};
  const auto found = offered.find(name);
  const bool is_of_version = std::string(name).ends_with("Version");
  return found == offered.end() || (is_of_version && host_version < 0) ? nullptr : found->second;
}

static void* ResolveNothing(const char*) { return nullptr; }

// Loads the plugin in a process of its own, since a process loads it once, and gives back what it registered.
static std::string RegisteredWith(double version, REALresolver resolver) {
  void* shared = mmap(nullptr, kTextRoom, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  text = static_cast<char*>(shared);
  host_version = version;
  const pid_t child = fork();
  if (child == 0) {
    void* library = dlopen(GIF_PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL);
    auto* entry = library ? reinterpret_cast<void (*)(REALresolver)>(dlsym(library, "REALPluginMain")) : nullptr;
    if (entry) entry(resolver);
    Say(entry ? "done" : dlerror());
    _exit(0);
  }
  int status = 1;
  waitpid(child, &status, 0);
  std::string got = status == 0 ? text : std::string("died: ") + text;
  munmap(shared, kTextRoom);
  return got;
}

static void ReplaceAll(std::string& in, const std::string& from, const std::string& to) {
  for (size_t at = 0; (at = in.find(from, at)) != std::string::npos; at += to.size()) in.replace(at, from.size(), to);
}

// tests/plugin/registered.txt, with its marks (@V, @F, @P, @M) filled in, and the records of the other way of
// registration left out, for a host version.
static std::string Expected(double version, const std::string& control) {
  std::stringstream file;
  file << std::ifstream(GIF_TESTS_FOLDER "/plugin/registered.txt").rdbuf();
  std::string all = file.str();
  const size_t as_module = all.find("module Folderitem"), one_by_one = all.find("extension Folderitem");
  if (version >= 2013.0 && version < 3000.0) {
    all.erase(one_by_one);
  } else {
    all.erase(as_module, one_by_one - as_module);
  }
  ReplaceAll(all, "@V", "version " + control);
  ReplaceAll(all, "@P", version >= 2010.029 ? "flags 4" : "flags 0");
  ReplaceAll(all, "@F", "flags 4");
  ReplaceAll(all, "@M", "flags 20");
  return (version < 0 ? "" : "control version " + control + "\n") + all + "done\n";
}

TEST(WholePlugin, RegistersTheSameTablesOnEveryHost) {
  const struct {
    double version;
    const char* control;
  } hosts[] = {{-1.0, "9"},       {0.0, "9"},      {2010.02, "9"},  {2010.029, "9"}, {2011.99, "9"},
               {2012.0, "10"},    {2012.99, "10"}, {2013.0, "11"},  {2013.02, "11"}, {2013.03, "12"},
               {2013.0399, "12"}, {2013.04, "13"}, {2019.01, "13"}, {2999.9, "13"},  {3000.0, "13"}};
  for (const auto& h : hosts)
    EXPECT_EQ(RegisteredWith(h.version, Resolve), Expected(h.version, h.control)) << h.version;
}

TEST(WholePlugin, ComesUpOnAHostThatHasNothing) {
  EXPECT_EQ(RegisteredWith(0, ResolveNothing), "done\n");
  EXPECT_EQ(RegisteredWith(0, nullptr), "done\n");
}
