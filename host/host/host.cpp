#include "host/host/host.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>

#include "host/core/encoding.h"
#include "host/core/messages.h"
#include "host/core/text.h"
#include "host/core/trace.h"

namespace host {
namespace {

Host* current_host = nullptr;

void* ResolveForPlugin(const char* name) { return Host::Current().Resolve(name); }

void CheckType(const Host& host, const Type& type, const std::string& where) {
  if (type.kind != Type::Kind::kObject || host.classes().find(type.name) != host.classes().end()) return;
  throw std::runtime_error(Text(where, ": there is no class ", type.name));
}

void CheckGroup(const Host& host, const MemberGroup& group) {
  if (group.property) CheckType(host, group.property->type, group.property->get_label);
  for (const auto& method : group.overloads) {
    CheckType(host, method->declaration.result, method->label);
    for (const Parameter& parameter : method->declaration.parameters) {
      CheckType(host, parameter.type, method->label);
    }
  }
}

}  // namespace

Host::Host(HostOptions options, FunctionFinder find_function)
    : options_(std::move(options)), find_function_(find_function) {
  if (current_host != nullptr) throw std::logic_error("there is a host already");
  for (const char* counting :
       {"REALLockObject", "REALUnlockObject", "REALLockString", "REALUnlockString", "unlockPictureDescription"}) {
    if (IsWithheld(counting)) heap_.KeepEverything();
  }
  EnableTrace(options_.trace);
  current_host = this;
}

Host::~Host() {
  pending_ = {};
  if (library_ != nullptr) dlclose(library_);
  EnableTrace(false);
  current_host = nullptr;
}

Host& Host::Current() { return *current_host; }

void Host::LoadPlugin(const std::string& path) {
  library_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library_ == nullptr) throw std::runtime_error(Text("can't load the plugin: ", dlerror()));
  void* entry = dlsym(library_, "REALPluginMain");
  if (entry == nullptr) throw std::runtime_error(Text(path, " is no plugin: it has no REALPluginMain"));
  StartPlugin(reinterpret_cast<void (*)(REALresolver)>(entry));
}

void Host::StartPlugin(void (*plugin_main)(REALresolver)) {
  {
    const HandlerScope scope("REALPluginMain", [] { return "resolver"; });
    plugin_main(ResolveForPlugin);
  }
  CheckTypes();
  CheckWithheld();
}

// A name that hides nothing is a slip of the pen. The plugin's own classes can be hidden too, so this comes last.
void Host::CheckWithheld() const {
  for (const std::string& name : options_.without) {
    const bool is_member = std::any_of(classes_.begin(), classes_.end(), [&](const auto& known) {
      return known.second->members.Find(name) != nullptr;
    });
    if (is_member || globals_.Find(name) != nullptr || classes_.contains(name) ||
        find_function_(name.c_str()) != nullptr) {
      continue;
    }
    throw std::invalid_argument(Text("there is no host function, class or method \"", name, "\" to be without"));
  }
}

void Host::CheckTypes() const {
  for (const auto& [name, known_class] : classes_) {
    for (const auto& [member, group] : known_class->members.all()) CheckGroup(*this, group);
  }
  for (const auto& [name, group] : globals_.all()) CheckGroup(*this, group);
}

Ref<String> Host::NewString(std::string_view bytes) {
  return heap_.Make<String>(std::string(bytes), IsUtf8(bytes) ? kEncodingUtf8 : kEncodingUnknown);
}

void* Host::Resolve(const char* name) {
  if (name == nullptr) return nullptr;
  ++call_count(name).resolved;
  const bool hides_version = SameName(name, "REALGetRBVersion") && !options_.version;
  const REALproc function = hides_version || IsWithheld(name) ? nullptr : find_function_(name);
  if (IsTracing()) {
    TraceEnter(Text("resolve ", name));
    TraceLeave(function == nullptr ? "nil" : "");
  }
  return reinterpret_cast<void*>(function);
}

Host::CallCount& Host::call_count(std::string_view function) {
  const auto found = call_counts_.find(function);
  return found != call_counts_.end() ? found->second : call_counts_[std::string(function)];
}

Host::CallCount& Host::CountOf(const char* function) {
  CallCount* count = counts_by_place_.Find(function);
  if (count == nullptr) counts_by_place_.Add(function, count = &call_count(function));
  return *count;
}

bool Host::IsWithheld(std::string_view name) const {
  return std::any_of(options_.without.begin(), options_.without.end(),
                     [&](const std::string& withheld) { return SameName(withheld, name); });
}

void Host::Raise(const RaisedException& exception) {
  const Class& raised_class = RequireClass(exception.class_name);
  Ref<Object> made = raised_class.maker(heap_, raised_class);
  auto& raised = dynamic_cast<Exception&>(*made);
  raised.message = NewString(exception.message);
  raised.number = exception.number;
  Raise(std::move(made));
}

Class& Host::AddClass(std::string_view name, Class::Maker maker) {
  auto added = std::make_unique<Class>();
  added->name = name;
  added->destructor_label = Text(name, " destructor");
  added->maker = maker;
  if (const Class* before = FindClass(name)) classes_as_written_.erase(before->name);
  Class& kept = *(classes_[added->name] = std::move(added));
  classes_as_written_[kept.name] = &kept;
  return kept;
}

Class* Host::FindClass(std::string_view name) {
  const auto as_written = classes_as_written_.find(name);
  if (as_written != classes_as_written_.end()) return as_written->second;
  const auto found = classes_.find(name);
  return found == classes_.end() ? nullptr : found->second.get();
}

const Class& Host::RequireClass(std::string_view name) {
  if (const Class* found = FindClass(name)) return *found;
  throw UsageError(Text("there is no class ", name));
}

bool Host::ReportLeaks() const {
  if (heap_.keeps_everything()) return true;
  const auto live = heap_.Live();
  for (const Heap::LiveCount& count : live) {
    std::fprintf(stderr, "leak: %lld %s (%s), %lld references held by the plugin; %s\n",
                 static_cast<long long>(count.count), count.type_name.c_str(), count.kind.c_str(),
                 static_cast<long long>(count.plugin_references), Shown(count.example).c_str());
  }
  return live.empty();
}

}  // namespace host
