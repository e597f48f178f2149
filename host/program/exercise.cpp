#include "host/program/exercise.h"

#include <fstream>

#include "host/host/dispatch.h"

namespace host {
namespace {

// Sizes among them stay small enough to be worked on quickly.
const std::vector<int64_t> kIntegers = {INT64_MIN, INT32_MIN, -1, 0,   1,   2,   3,   4,
                                        5,         8,         16, 100, 255, 256, 257, INT64_MAX};
// In the current folder: a sample, files that may be written, a folder, nothing.
const std::vector<std::string> kPaths = {"sample", "written", "also written", ".", "missing/file"};
constexpr size_t kMutations = 4;
constexpr int kBlocks = 10;

// A use that the host itself refuses is none of the plugin's business; what a handler raises is its answer.
template <class Use>
void Try(Use use) {
  try {
    use();
  } catch (const RaisedException&) {
  } catch (const UsageError&) {
  }
}

}  // namespace

Exercise::Exercise(Host& host, uint64_t seed, std::vector<std::string> samples)
    : host_(host), random_(seed), samples_(std::move(samples)), listings_(ListRegistered(host)) {}

Ref<Object> Exercise::Make(const Class& wanted) {
  if (wanted.maker == nullptr) return {};
  std::vector<Value> arguments;
  if (wanted.name == "FolderItem") arguments = {HandleValue(host_.NewString(PickOne(kPaths)))};
  if (wanted.name == "Picture") arguments = {int64_t{4}, int64_t{3}};
  return NewObject(host_, wanted.name, std::move(arguments));
}

// --- Arguments -----------------------------------------------------------------------------------------------------

Value Exercise::Nothing(const Type& type, const Object* /*self*/) {
  if (type.IsHandle()) return {};
  return type.kind == Type::Kind::kBoolean ? Value(false) : Value(int64_t{0});
}

Value Exercise::Anything(const Type& type, const Object* self) {
  switch (type.kind) {
    case Type::Kind::kBoolean:
      return Below(2) == 1;
    case Type::Kind::kColor:
      return static_cast<int64_t>(random_() & 0xFFFFFFFF);
    case Type::Kind::kString:
      return Below(8) == 0 ? Value() : HandleValue(host_.NewString(AnyText()));
    case Type::Kind::kObject:
      return AnyObject(type, self);
    default:
      return PickOne(kIntegers);
  }
}

// Some bytes, a sample, or a sample with some bytes changed.
std::string Exercise::AnyText() {
  std::string text = samples_.empty() || Below(3) == 0 ? std::string() : PickOne(samples_);
  if (text.empty()) {
    text.resize(Below(400));
    for (char& c : text) c = static_cast<char>(random_());
  } else if (Below(2) == 0) {
    for (size_t i = 0; i < kMutations; ++i) text[Below(text.size())] = static_cast<char>(random_());
  }
  return text;
}

// Of what is older than the object that gets it, so that no two can come to hold each other.
Value Exercise::AnyObject(const Type& type, const Object* self) {
  const Class* wanted = host_.FindClass(type.name);
  if (wanted == nullptr || Below(8) == 0) return {};
  std::vector<Ref<Object>> fitting;
  for (const Ref<Object>& object : objects_) {
    const bool older = self == nullptr || object->serial() < self->serial();
    if (older && object->object_class().IsA(type.name)) fitting.push_back(object);
  }
  return fitting.empty() ? Value() : HandleValue(PickOne(fitting));
}

void Exercise::Keep(const Value& value) {
  if (const Ref<Object> object = ValueAs<Object>(value)) objects_.push_back(object);
}

// --- Calls ---------------------------------------------------------------------------------------------------------

void Exercise::Get(const Ref<Object>& self, const Property& property) {
  Try([&] { Keep(GetProperty(host_, self, property)); });
}

void Exercise::Set(const Ref<Object>& self, const Property& property, Picker pick) {
  Try([&] { SetProperty(host_, self, property, (this->*pick)(property.type, self.get())); });
}

const MemberGroup& Exercise::GroupOf(const Ref<Object>& self, const Method& method) const {
  const std::string& name = method.declaration.name;
  return *(self ? self->object_class().Find(name) : host_.globals().Find(name));
}

void Exercise::Call(const Ref<Object>& self, const Method& method, Picker pick) {
  std::vector<Value> arguments;
  for (const Parameter& parameter : method.declaration.parameters) {
    arguments.push_back((this->*pick)(parameter.type, self.get()));
  }
  Try([&] { Keep(CallMethod(host_, self, GroupOf(self, method), arguments)); });
}

void Exercise::Assign(const Ref<Object>& self, const Method& method, Picker pick) {
  std::vector<Value> arguments;
  for (const Parameter& parameter : method.declaration.parameters) {
    arguments.push_back((this->*pick)(parameter.type, self.get()));
  }
  const Value value = (this->*pick)(method.declaration.result, self.get());
  Try([&] { AssignMethod(host_, self, GroupOf(self, method), arguments, value); });
}

void Exercise::CallAllWithNothing() {
  for (const Listing& listing : listings_) {
    const auto self = [&] { return listing.known == nullptr ? Ref<Object>() : Make(*listing.known); };
    for (const Property* property : listing.properties) {
      Get(self(), *property);
      Set(self(), *property, &Exercise::Nothing);
    }
    for (const Method* method : listing.methods) {
      Call(self(), *method, &Exercise::Nothing);
      if (method->setter != nullptr) Assign(self(), *method, &Exercise::Nothing);
    }
  }
}

// --- At random -----------------------------------------------------------------------------------------------------

// An object that is there already, most of the time.
Ref<Object> Exercise::AnyOf(const Class& wanted) {
  const Value there = AnyObject({Type::Kind::kObject, wanted.name}, nullptr);
  if (Ref<Object> object = ValueAs<Object>(there)) return object;
  Ref<Object> made = Make(wanted);
  if (made) objects_.push_back(made);
  return made;
}

void Exercise::CallOneAtRandom() {
  const Listing& listing = PickOne(listings_);
  const Ref<Object> self = listing.known == nullptr ? Ref<Object>() : AnyOf(*listing.known);
  if (!self && listing.known != nullptr) return;
  const size_t count = listing.properties.size() + listing.methods.size();
  if (count == 0) return;
  const size_t member = Below(count);
  const bool writes = Below(2) == 0;
  if (member < listing.properties.size()) {
    const Property& property = *listing.properties[member];
    return writes ? Set(self, property, &Exercise::Anything) : Get(self, property);
  }
  const Method& method = *listing.methods[member - listing.properties.size()];
  if (writes && method.setter != nullptr) return Assign(self, method, &Exercise::Anything);
  Call(self, method, &Exercise::Anything);
}

void Exercise::CallAtRandom(int times) {
  if (!samples_.empty()) std::ofstream(kPaths.front(), std::ios::binary) << PickOne(samples_);
  for (int i = 0; i < kBlocks; ++i)
    objects_.push_back(NewObject(host_, "MemoryBlock", {HandleValue(host_.NewString(AnyText()))}));
  for (int i = 0; i < times && !listings_.empty(); ++i) CallOneAtRandom();
}

}  // namespace host
