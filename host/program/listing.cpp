#include "host/program/listing.h"

namespace host {
namespace {

Listing List(const Class* known, const MemberTable& table, Members members) {
  Listing listing;
  listing.known = known;
  for (const auto& [name, group] : table.all()) {
    if (group.property && (members == Members::kAll || !group.property->native)) {
      listing.properties.push_back(group.property.get());
    }
    for (const auto& method : group.overloads) {
      if (members == Members::kAll || !method->native) listing.methods.push_back(method.get());
    }
  }
  return listing;
}

}  // namespace

Listing ListClass(const Class& known, Members members) { return List(&known, known.members, members); }

Listing ListGlobals(const Host& host, Members members) { return List(nullptr, host.globals(), members); }

std::vector<Listing> ListRegistered(const Host& host) {
  std::vector<Listing> listings;
  for (const auto& [name, known] : host.classes()) listings.push_back(ListClass(*known, Members::kRegistered));
  listings.push_back(ListGlobals(host, Members::kRegistered));
  std::erase_if(listings, [](const Listing& listing) {
    return !listing.registered() && listing.properties.empty() && listing.methods.empty();
  });
  return listings;
}

}  // namespace host
