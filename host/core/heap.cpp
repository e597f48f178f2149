#include "host/core/heap.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <new>

#include "host/core/fault.h"
#include "host/core/names.h"
#include "host/core/text.h"

namespace host {
namespace {

constexpr std::byte kDeadByte{0xDD};       // what a dead thing's own bytes are filled with
constexpr size_t kGraveBytes = 16u << 20;  // how much is kept back, so that handles are not used again soon
constexpr size_t kGraveCount = 1u << 16;

Memory AllocateZeroed(size_t size) {
  Memory memory(static_cast<std::byte*>(std::calloc(1, size)));
  if (!memory) throw std::bad_alloc();
  return memory;
}

// What is still alive at the end may refer to each other and to a plugin that is gone: it stays as it is, for good.
std::vector<Counted*>& AbandonedThings() {
  static auto& things = *new std::vector<Counted*>;
  return things;
}

}  // namespace

Counted::Counted(size_t handle_size) : memory_(AllocateZeroed(handle_size)), handle_size_(handle_size) {}

std::string Counted::Describe() const { return Text(type_name(), "#", serial_); }

std::string Counted::DescribeWithKind() const {
  return SameName(kind(), type_name()) ? Describe() : Text(kind(), " ", Describe());
}

std::string Heap::Dead::Describe() const { return Text(kind, " ", *type_name, "#", serial); }

Heap::~Heap() {
  while (!graves_.empty()) Exhume();
  live_.ForEach([](Counted& thing) { AbandonedThings().push_back(&thing); });
}

void Heap::Admit(std::unique_ptr<Counted> thing) {
  thing->heap_ = this;
  thing->serial_ = next_serial_++;
  thing->made_by_ = CurrentActivity();
  Touch(*thing);
  live_.Add(thing->handle(), thing.get());
  thing.release();  // NOLINT(*unused-return-value): the table has it
}

const Counted* Heap::Peek(const void* handle) const { return live_.Find(handle); }

Counted* Heap::FindLive(const void* handle) {
  if (handle == nullptr) return nullptr;
  if (Counted* found = live_.Find(handle)) return found;
  for (const Dead& dead : graves_) {
    if (dead.memory.get() != handle) continue;
    Fault(Text(dead.Describe(), " is dead; the last operation on it: ", dead.last_operation.Describe()));
  }
  Fault(Text("the handle ", handle, " was never given out, or is long dead"));
}

void Heap::WrongKind(const Counted& thing, const char* wanted) {
  Fault(Text(thing.DescribeWithKind(), " was given where a handle of kind ", wanted, " is needed"));
}

void* Heap::HandOut(Counted* thing) {
  if (thing == nullptr) return nullptr;
  if (thing->dying_) Fault(Text(thing->Describe(), " is being destroyed and can't get new references"));
  ++thing->plugin_references_;
  Touch(*thing);
  return thing->handle();
}

void Heap::GiveUp(const void* handle) {
  Counted* thing = FindLive(handle);
  if (thing == nullptr) return;
  if (thing->plugin_references_ == 0 && keeps_everything_) return;
  if (thing->plugin_references_ == 0) {
    Fault(Text(thing->DescribeWithKind(),
               ": a reference is given up that the plugin does not have; the last operation on it: ",
               thing->last_operation_.Describe()));
  }
  --thing->plugin_references_;
  Touch(*thing);
  DestroyUnreferenced(*thing);
}

void Heap::DestroyUnreferenced(Counted& thing) {
  if (thing.host_references_ + thing.plugin_references_ > 0 || thing.dying_ || keeps_everything_) return;
  thing.dying_ = true;
  thing.BeforeDeath();
  live_.Remove(thing.handle());
  Bury(std::unique_ptr<Counted>(&thing));
}

void Heap::Bury(std::unique_ptr<Counted> thing) {
  const size_t size = thing->handle_size_;
  std::fill_n(thing->memory_.get(), size, kDeadByte);
  graves_.push_back(
      {thing->kind(), &thing->type_name(), thing->serial_, thing->last_operation_, std::move(thing->memory_), size});
  buried_bytes_ += size;
  while (graves_.size() > kGraveCount || buried_bytes_ > kGraveBytes) Exhume();
}

void Heap::Exhume() {
  const Dead& dead = graves_.front();
  if (!std::all_of(dead.memory.get(), dead.memory.get() + dead.size, [](std::byte b) { return b == kDeadByte; })) {
    Fault(Text(dead.Describe(),
               " was written to after its death; the last operation on it: ", dead.last_operation.Describe()));
  }
  buried_bytes_ -= dead.size;
  graves_.pop_front();
}

std::vector<Heap::LiveCount> Heap::Live() const {
  std::map<std::pair<std::string, std::string>, LiveCount> counts;
  live_.ForEach([&](const Counted& thing) {
    LiveCount& count = counts[{thing.kind(), thing.type_name()}];
    if (count.count++ == 0) {
      count.kind = thing.kind();
      count.type_name = thing.type_name();
      count.example = Text(thing.Describe(), ": made by ", thing.made_by_.Describe(), ", last operation ",
                           thing.last_operation_.Describe());
    }
    count.plugin_references += thing.plugin_references_;
  });
  std::vector<LiveCount> sorted;
  sorted.reserve(counts.size());
  for (auto& [key, count] : counts) sorted.push_back(std::move(count));
  return sorted;
}

}  // namespace host
