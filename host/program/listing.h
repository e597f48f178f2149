#pragma once

// What a plugin registered, for commands that show or use it.

#include <string>
#include <vector>

#include "host/host/host.h"

namespace host {

// A class with its members, or the global methods.
struct Listing {
  const Class* known = nullptr;  // null: the global methods
  std::vector<const Property*> properties;
  std::vector<const Method*> methods;

  std::string title() const { return known == nullptr ? "global methods" : known->name; }
  bool registered() const { return known != nullptr && known->definition != nullptr; }
};

enum class Members { kAll, kRegistered };

Listing ListClass(const Class& known, Members members = Members::kAll);
Listing ListGlobals(const Host& host, Members members = Members::kAll);

// Every class that the plugin registered or extended, with what it registered of it; the global methods last, where
// it registered any.
std::vector<Listing> ListRegistered(const Host& host);

}  // namespace host
