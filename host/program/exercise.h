#pragma once

// Makes objects of every class and calls what the plugin registered, with nil or at random.

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "host/host/host.h"
#include "host/program/listing.h"

namespace host {

// Same seed, same calls. Exceptions that handlers raise are as good as results.
class Exercise {
 public:
  Exercise(Host& host, uint64_t seed, std::vector<std::string> samples);

  // A new object, with nothing set; null for a class that scripts can't make.
  Ref<Object> Make(const Class& wanted);

  // Calls every getter, setter and method once on a new object, with nil, 0 and false for arguments.
  void CallAllWithNothing();
  // Makes objects and calls random members on them with random arguments.
  void CallAtRandom(int times);

 private:
  using Picker = Value (Exercise::*)(const Type& type, const Object* self);

  size_t Below(size_t limit) { return static_cast<size_t>(random_() % limit); }
  template <class T>
  const T& PickOne(const std::vector<T>& from) {
    return from[Below(from.size())];
  }

  Value Nothing(const Type& type, const Object* self);
  Value Anything(const Type& type, const Object* self);
  std::string AnyText();
  Value AnyObject(const Type& type, const Object* self);
  void Keep(const Value& value);

  const MemberGroup& GroupOf(const Ref<Object>& self, const Method& method) const;
  Ref<Object> AnyOf(const Class& wanted);
  void Get(const Ref<Object>& self, const Property& property);
  void Set(const Ref<Object>& self, const Property& property, Picker pick);
  void Call(const Ref<Object>& self, const Method& method, Picker pick);
  void Assign(const Ref<Object>& self, const Method& method, Picker pick);
  void CallOneAtRandom();

  Host& host_;
  std::mt19937_64 random_;
  std::vector<std::string> samples_;
  std::vector<Listing> listings_;
  std::vector<Ref<Object>> objects_;  // all that were made or given
};

}  // namespace host
