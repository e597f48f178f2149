#pragma once

// A script host: loads one plugin, takes what it registers, and calls it. There is at most one host at a time
// in a process, because host functions have no way to tell hosts apart.

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/core/handle_table.h"
#include "host/core/heap.h"
#include "host/host/class.h"
#include "host/host/errors.h"
#include "host/host/exception.h"
#include "host/host/object.h"
#include "host/host/options.h"
#include "host/host/string.h"
#include "host/host/value.h"

namespace host {

struct Module {
  std::string name;
  uint32_t version;
  std::vector<std::string> declarations;  // as registered
};

class Host {
 public:
  // The function of exactly that name, or null when there is none.
  using FunctionFinder = REALproc (*)(const char* name);

  // It has no classes yet.
  Host(HostOptions options, FunctionFinder find_function);
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  // For C functions that are told nothing else; everything else is handed its host.
  static Host& Current();

  // Loads the shared library and lets it register. Throws std::runtime_error when that is not possible or
  // when what it registers cannot be understood, std::invalid_argument when there is nothing that an option could
  // hide from it.
  void LoadPlugin(const std::string& path);
  // The same for a plugin that is linked in.
  void StartPlugin(void (*plugin_main)(REALresolver));

  Ref<String> NewString(std::string_view bytes);  // UTF-8 where the bytes are that, else of unknown encoding

  // The function of that name for the plugin, or null.
  void* Resolve(const char* name);
  bool IsWithheld(std::string_view name) const;  // from the plugin, by an option

  // Exceptions. A raised one stays pending until the handler that runs has returned.
  void Raise(Ref<Object> exception) { pending_ = std::move(exception); }
  void Raise(const RaisedException& exception);
  Ref<Object> TakePending() { return std::move(pending_); }

  Class& AddClass(std::string_view name, Class::Maker maker);
  Class* FindClass(std::string_view name);
  const Class& RequireClass(std::string_view name);  // throws UsageError
  template <class T>
  Ref<T> Make(std::string_view class_name) {
    return heap_.Make<T>(RequireClass(class_name));
  }
  const NameMap<std::unique_ptr<Class>>& classes() const { return classes_; }
  MemberTable& globals() { return globals_; }
  const MemberTable& globals() const { return globals_; }
  std::vector<Module>& modules() { return modules_; }
  size_t NextClassNumber() { return class_count_++; }

  struct CallCount {
    int64_t resolved = 0;
    int64_t called = 0;
    int64_t failing_call = 0;  // the call, counted from 1, that finds nothing and makes nothing; 0: none
  };
  CallCount& call_count(std::string_view function);
  // The same for a name that stays where it is: every call of a function comes by here.
  CallCount& CountOf(const char* function);

  Heap& heap() { return heap_; }
  const HostOptions& options() const { return options_; }
  int32_t plugin_version() const { return plugin_version_; }  // as the plugin told; 0: not told
  void set_plugin_version(int32_t version) { plugin_version_ = version; }

  // Lists on stderr everything that is still alive; false when that is nothing.
  bool ReportLeaks() const;

 private:
  void CheckWithheld() const;
  void CheckTypes() const;

  HostOptions options_;
  FunctionFinder find_function_;
  NameMap<std::unique_ptr<Class>> classes_;
  std::unordered_map<std::string_view, Class*> classes_as_written_;  // found sooner, where letter case is the same
  MemberTable globals_;
  std::vector<Module> modules_;
  std::map<std::string, CallCount, std::less<>> call_counts_;
  HandleTable<CallCount> counts_by_place_;  // of the names
  size_t class_count_ = 0;
  int32_t plugin_version_ = 0;
  void* library_ = nullptr;
  Heap heap_;  // behind the classes, whose names it uses to its end
  Ref<Object> pending_;
};

}  // namespace host
