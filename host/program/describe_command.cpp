// The commands "list" and "describe": what the plugin registered, for people and for programs.

#include <cstdio>
#include <functional>
#include <stdexcept>

#include "host/classes/full_host.h"
#include "host/core/exit_status.h"
#include "host/core/text.h"
#include "host/program/commands.h"
#include "host/program/json.h"
#include "host/program/listing.h"
#include "host/program/plugin_file.h"

namespace host {
namespace {

struct Arguments {
  bool json = false;
  std::string class_name;  // empty: none
};

Arguments ParseArguments(const ProgramOptions& options, bool takes_class) {
  Arguments parsed;
  for (const std::string& argument : options.arguments) {
    if (argument == "--json") {
      parsed.json = true;
    } else if (takes_class && parsed.class_name.empty() && !argument.starts_with('-')) {
      parsed.class_name = argument;
    } else {
      throw std::invalid_argument(Text(options.script, " does not take \"", argument, "\"; see --help"));
    }
  }
  return parsed;
}

void Print(const std::string& text) { std::printf("%s\n", text.c_str()); }

template <class Item>
std::string JsonList(const std::vector<Item>& items, const std::function<std::string(const Item&)>& to_json) {
  std::vector<std::string> values;
  values.reserve(items.size());
  for (const Item& item : items) values.push_back(to_json(item));
  return JsonArray(values);
}

// --- One line for each class ---------------------------------------------------------------------------------------

std::string Count(size_t number, const char* one, const char* many) {
  return Text(number, " ", number == 1 ? one : many);
}

void PrintSummary(const Listing& listing) {
  std::string counts;
  if (!listing.properties.empty()) counts = Count(listing.properties.size(), "property", "properties");
  if (!listing.methods.empty()) {
    counts += (counts.empty() ? "" : ", ") + Count(listing.methods.size(), "method", "methods");
  }
  if (listing.known != nullptr && !listing.registered()) counts += " more";
  std::printf("%-24s %s\n", listing.title().c_str(), counts.c_str());
}

// --- Members -------------------------------------------------------------------------------------------------------

void PrintMembers(const Listing& listing) {
  Print(listing.registered() ? "class " + listing.title() : listing.title());
  for (const Property* property : listing.properties) {
    Print(
        Text("  ", property->name, " as ", property->type.name, property->setter == nullptr ? "  (read-only)" : ""));
  }
  for (const Method* method : listing.methods) {
    Print(Text("  ", method->text, method->setter != nullptr ? "  (assignable)" : ""));
  }
}

std::string PropertyJson(const Property* const& property) {
  return JsonObject({{"name", JsonString(property->name)},
                     {"type", JsonString(property->type.name)},
                     {"flags", Text(property->flags)},
                     {"readonly", JsonBoolean(property->setter == nullptr)}});
}

std::string ParameterJson(const Parameter& parameter) {
  return JsonObject({{"name", JsonString(parameter.name)},
                     {"type", JsonString(parameter.type.name)},
                     {"default", parameter.default_value ? Text(*parameter.default_value) : "null"}});
}

std::string MethodJson(const Method* const& method) {
  const Declaration& declaration = method->declaration;
  const bool gives = declaration.result.kind != Type::Kind::kNothing;
  return JsonObject({{"name", JsonString(declaration.name)},
                     {"declaration", JsonString(method->text)},
                     {"parameters", JsonList<Parameter>(declaration.parameters, ParameterJson)},
                     {"result", gives ? JsonString(declaration.result.name) : "null"},
                     {"flags", Text(method->flags)},
                     {"assignable", JsonBoolean(method->setter != nullptr)}});
}

std::string ListingJson(const Listing& listing) {
  const bool is_class = listing.known != nullptr;
  const bool derived = is_class && listing.known->superclass != nullptr;
  return JsonObject({{"class", is_class ? JsonString(listing.known->name) : "null"},
                     {"superclass", derived ? JsonString(listing.known->superclass->name) : "null"},
                     {"registered", JsonBoolean(listing.registered())},
                     {"version", listing.registered() ? Text(listing.known->definition->version) : "null"},
                     {"properties", JsonList<const Property*>(listing.properties, PropertyJson)},
                     {"methods", JsonList<const Method*>(listing.methods, MethodJson)}});
}

std::string SummaryJson(const Listing& listing) {
  return JsonObject({{"class", listing.known == nullptr ? "null" : JsonString(listing.known->name)},
                     {"properties", Text(listing.properties.size())},
                     {"methods", Text(listing.methods.size())}});
}

}  // namespace

int RunList(const ProgramOptions& options) {
  const Arguments arguments = ParseArguments(options, false);
  FullHost host(options.host);
  host.LoadPlugin(PluginFile(options.plugin));
  const std::vector<Listing> listings = ListRegistered(host);
  if (arguments.json) {
    Print(JsonList<Listing>(listings, SummaryJson));
  } else {
    for (const Listing& listing : listings) PrintSummary(listing);
  }
  return kExitSuccess;
}

int RunDescribe(const ProgramOptions& options) {
  const Arguments arguments = ParseArguments(options, true);
  FullHost host(options.host);
  host.LoadPlugin(PluginFile(options.plugin));
  if (!arguments.class_name.empty()) {
    const Listing listing = ListClass(host.RequireClass(arguments.class_name));
    if (arguments.json) {
      Print(ListingJson(listing));
    } else {
      PrintMembers(listing);
    }
    return kExitSuccess;
  }
  const std::vector<Listing> listings = ListRegistered(host);
  if (arguments.json) {
    Print(JsonList<Listing>(listings, ListingJson));
    return kExitSuccess;
  }
  for (const Listing& listing : listings) {
    if (&listing != &listings.front()) Print("");
    PrintMembers(listing);
  }
  return kExitSuccess;
}

}  // namespace host
