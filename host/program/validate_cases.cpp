#include "host/program/validate_cases.h"

#include <algorithm>
#include <set>
#include <stdexcept>

#include "host/core/text.h"
#include "host/functions/host_functions.h"
#include "host/host/dispatch.h"
#include "host/host/string.h"
#include "host/program/exercise.h"
#include "host/program/listing.h"

namespace host {
namespace {

constexpr int kManyCalls = 10000;
constexpr int kSomeCalls = 500;
constexpr int64_t kLargestBlock = 1 << 20;  // bytes; larger ones can't be made, so that nothing hangs on the machine

// One of each kind that plugins have met: "none" does not tell.
constexpr double kVersions[] = {2005.01, 2009.05, 2010.02,  2010.03, 2011.04, 2012.01, 2012.02, 2013.01,
                                2013.03, 2013.04, 2015.021, 2019.01, 2021.02, 2999.99, 3000.0};

[[noreturn]] void Complain(const std::string& what) { throw std::runtime_error(what); }

// --- What is registered --------------------------------------------------------------------------------------------

template <class Record>
void CountNames(std::multiset<std::string>& names, const Record* records, int64_t count, const char* Record::*name) {
  for (int64_t i = 0; records != nullptr && i < count; ++i) names.insert(records[i].*name);
}

// Methods are told apart by their whole declaration, properties by name.
void CheckUnique(const Class& known) {
  const REALclassDefinition& definition = *known.definition;
  std::multiset<std::string> names;
  CountNames(names, definition.properties, definition.property_count, &REALproperty::name);
  CountNames(names, definition.properties2, definition.property_count2, &REALproperty::name);
  CountNames(names, definition.methods, definition.method_count, &REALmethodDefinition::declaration);
  CountNames(names, definition.methods2, definition.method_count2, &REALmethodDefinition::declaration);
  for (const std::string& name : names) {
    if (names.count(name) > 1) Complain(Text(known.name, " has \"", name, "\" twice"));
  }
  for (const auto& [name, group] : known.members.all()) {
    if (group.property && !group.overloads.empty()) Complain(Text(known.name, ".", name, " is property and method"));
  }
}

// That every type is known was seen to when the plugin was loaded.
void CheckDeclarations(Host& host, const Trial& /*trial*/) {
  const std::vector<Listing> listings = ListRegistered(host);
  if (listings.empty()) Complain("nothing is registered");
  for (const Listing& listing : listings) {
    if (!listing.registered()) continue;
    const REALclassDefinition& definition = *listing.known->definition;
    CheckUnique(*listing.known);
    if (definition.instance_size < 0) Complain(listing.title() + " has a negative instance size");
    if (definition.superclass != nullptr) host.RequireClass(definition.superclass);
    for (const Property* property : listing.properties) {
      if (property->getter == nullptr && property->setter == nullptr) Complain(property->get_label + " does nothing");
    }
    for (const Method* method : listing.methods) {
      if (method->handler == nullptr && method->setter == nullptr) Complain(method->label + " does nothing");
    }
  }
}

// --- Single objects ------------------------------------------------------------------------------------------------

// The host makes an object by running what the plugin says about its class, and looks around it when it dies.
void MakeAndDestroy(Host& host, const Trial& trial) {
  Exercise exercise(host, trial.seed, {});
  for (const Listing& listing : ListRegistered(host)) {
    if (listing.registered() && !exercise.Make(*listing.known)) Complain("no " + listing.title() + " was made");
  }
}

bool ReadsTheSame(const Value& before, const Value& after) {
  const Ref<String> text = ValueAs<String>(before);
  const Ref<String> text_after = ValueAs<String>(after);
  if (text && text_after) return text->bytes() == text_after->bytes();
  return Show(before) == Show(after);
}

void ReadAndWriteBack(Host& host, const Property& property, const Ref<Object>& object) {
  Value before;
  try {
    before = GetProperty(host, object, property);
  } catch (const RaisedException&) {
    return;  // a new object has none
  }
  if (property.setter == nullptr) return;
  SetProperty(host, object, property, before);
  const Value after = GetProperty(host, object, property);
  if (!ReadsTheSame(before, after)) {
    Complain(
        Text(property.get_label, " was ", Show(before), " and reads ", Show(after), " once that is written back"));
  }
}

void CheckProperties(Host& host, const Trial& trial) {
  Exercise exercise(host, trial.seed, {});
  for (const Listing& listing : ListRegistered(host)) {
    for (const Property* property : listing.properties) {
      const Ref<Object> object = exercise.Make(*listing.known);
      if (object && property->getter != nullptr) ReadAndWriteBack(host, *property, object);
    }
  }
}

void PassNothing(Host& host, const Trial& trial) { Exercise(host, trial.seed, {}).CallAllWithNothing(); }

template <int calls>
void CallAtRandom(Host& host, const Trial& trial) {
  Exercise(host, trial.seed, trial.samples).CallAtRandom(calls);
}

void CheckVersion(Host& host, const Trial& trial) {
  CheckDeclarations(host, trial);
  MakeAndDestroy(host, trial);
  CallAtRandom<kSomeCalls>(host, trial);
}

// --- The list ------------------------------------------------------------------------------------------------------

// Everything that can be withheld: the host's functions, and the methods and classes that a plugin finds by name.
std::vector<std::string> WithholdableNames() {
  std::vector<std::string> names;
  for (const auto& group : {ObjectFunctions(), StringFunctions(), MemoryBlockFunctions(), FileFunctions(),
                            PictureFunctions(), RegistrationFunctions()}) {
    for (const HostFunction& function : group) names.emplace_back(function.name);
  }
  for (const char* found_by_name : {"LenB", "Constructor", "Operator_Convert", "DrawPicture", "MemoryBlock",
                                    "OutOfBoundsException", "OutOfMemoryException"}) {
    names.emplace_back(found_by_name);
  }
  return names;
}

bool Registers(const std::string& function) { return function.starts_with("PluginRegister"); }

std::vector<Case> VersionCases(const HostOptions& base) {
  std::vector<Case> cases = {{"version.none", base, CheckVersion}};
  cases.front().options.version.reset();
  for (const double version : kVersions) {
    HostOptions options = base;
    options.version = version;
    cases.push_back({Text("version.", version), options, CheckVersion});
  }
  return cases;
}

}  // namespace

std::vector<Case> Cases(const HostOptions& base) {
  HostOptions limited = base;
  limited.largest_block = std::min(limited.largest_block, kLargestBlock);
  std::vector<Case> cases = {{"declarations", limited, CheckDeclarations},
                             {"instances", limited, MakeAndDestroy},
                             {"properties", limited, CheckProperties},
                             {"nil", limited, PassNothing},
                             {"random", limited, CallAtRandom<kManyCalls>}};
  std::vector<Case> versions = VersionCases(limited);
  cases.insert(cases.end(), versions.begin(), versions.end());
  for (const std::string& name : WithholdableNames()) {
    HostOptions options = limited;
    options.without.push_back(name);
    cases.push_back({"without." + name, options, CallAtRandom<kSomeCalls>, Registers(name)});
  }
  return cases;
}

}  // namespace host
