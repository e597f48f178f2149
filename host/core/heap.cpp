#include "host/core/heap.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "host/core/bytes.h"
#include "host/core/fault.h"
#include "host/core/names.h"
#include "host/core/text.h"

namespace host {
namespace {

constexpr std::byte kDeadByte{0xDD};       // what a dead thing's own bytes are filled with
constexpr size_t kGraveBytes = 16u << 20;  // how much is kept back, so that handles are not used again soon
constexpr size_t kGraveCount = 1u << 16;

}  // namespace

std::string Counted::Describe() const { return Text(type_name(), "#", serial_); }

std::string Counted::DescribeWithKind() const {
  return SameName(kind(), type_name()) ? Describe() : Text(kind(), " ", Describe());
}

std::string Heap::Dead::Describe() const { return Text(kind, " ", *type_name, "#", serial); }

Heap::~Heap() {
  while (graves_ > 0) Exhume();
  if (!empty()) slots_.Abandon();
}

void Heap::Admit(Counted& thing, size_t handle_at, size_t handle_size) {
  ++live_;
  thing.handle_at_ = static_cast<uint16_t>(handle_at);
  thing.handle_size_ = static_cast<uint32_t>(handle_size);
  std::memset(thing.handle(), 0, handle_size);
  thing.serial_ = next_serial_++;
  thing.made_by_ = thing.last_operation_ = NumberOf(CurrentActivity());
}

const Counted* Heap::Peek(const void* handle) const {
  const SlotMemory::Place place = slots_.Find(handle);
  if (place.state != SlotState::kLive) return nullptr;
  const auto* thing = static_cast<const Counted*>(place.slot);
  return thing->handle() == handle ? thing : nullptr;
}

Counted* Heap::FindLive(const void* handle) {
  if (handle == nullptr) return nullptr;
  const SlotMemory::Place place = slots_.Find(handle);
  if (place.state == SlotState::kLive) {
    auto* thing = static_cast<Counted*>(place.slot);
    if (thing->handle() == handle) return thing;
  }
  Unusable(handle, place);
}

void Heap::Unusable(const void* handle, SlotMemory::Place place) {
  if (place.state == SlotState::kEnding) Fault(Text("the handle ", handle, " is of something that is just dying"));
  auto* dead = place.state == SlotState::kDead ? static_cast<Dead*>(place.slot) : nullptr;
  if (dead != nullptr && dead->handle() == handle) {
    Fault(
        Text(dead->Describe(), " is dead; the last operation on it: ", ActivityOf(dead->last_operation).Describe()));
  }
  Fault(Text("the handle ", handle, " was never given out, or is long dead"));
}

void Heap::WrongKind(const Counted& thing, const char* wanted) {
  Fault(Text(thing.DescribeWithKind(), " was given where a handle of kind ", wanted, " is needed"));
}

void* Heap::HandOut(Counted* thing) {
  if (thing == nullptr) return nullptr;
  if (thing->dying_) Fault(Text(thing->Describe(), " is being destroyed and can't get new references"));
  if (thing->plugin_references_ == UINT32_MAX) Fault(Text(thing->Describe(), " has too many references to count"));
  ++thing->plugin_references_;
  Touch(*thing);
  return thing->handle();
}

void Heap::GiveUp(Counted* thing) {
  if (thing == nullptr) return;
  if (thing->plugin_references_ == 0 && keeps_everything_) return;
  if (thing->plugin_references_ == 0) {
    Fault(Text(thing->DescribeWithKind(),
               ": a reference is given up that the plugin does not have; the last operation on it: ",
               ActivityOf(thing->last_operation_).Describe()));
  }
  --thing->plugin_references_;
  Touch(*thing);
  if ((thing->plugin_references_ | thing->host_references_) == 0) Destroy(*thing);
}

void Heap::Destroy(Counted& thing) {
  if (thing.dying_ || keeps_everything_) return;
  thing.dying_ = true;
  thing.BeforeDeath();
  const Dead dead{nullptr,         thing.kind(),          &thing.type_name(),
                  thing.serial_,   thing.last_operation_, thing.handle_size_,
                  thing.handle_at_};
  SlotState& state = SlotMemory::StateOf(&thing);
  state = SlotState::kEnding;
  thing.~Counted();
  state = SlotState::kDead;
  --live_;
  Bury(*new (&thing) Dead(dead));
}

void Heap::Bury(Dead& dead) {
  std::memset(dead.handle(), std::to_integer<int>(kDeadByte), dead.handle_size);
  (last_grave_ == nullptr ? first_grave_ : last_grave_->next) = &dead;
  last_grave_ = &dead;
  ++graves_;
  buried_bytes_ += dead.size();
  while (graves_ > kGraveCount || buried_bytes_ > kGraveBytes) Exhume();
}

void Heap::Exhume() {
  Dead& dead = *first_grave_;
  if (!AllAre(dead.handle(), dead.handle_size, kDeadByte)) {
    Fault(Text(dead.Describe(), " was written to after its death; the last operation on it: ",
               ActivityOf(dead.last_operation).Describe()));
  }
  first_grave_ = dead.next;
  if (first_grave_ == nullptr) last_grave_ = nullptr;
  --graves_;
  buried_bytes_ -= dead.size();
  slots_.Return(&dead);
}

std::vector<Heap::LiveCount> Heap::Live() const {
  std::map<std::pair<std::string, std::string>, LiveCount> counts;
  slots_.ForEachLive([&](void* slot) {
    const auto& thing = *static_cast<const Counted*>(slot);
    LiveCount& count = counts[{thing.kind(), thing.type_name()}];
    if (count.count++ == 0) {
      count.kind = thing.kind();
      count.type_name = thing.type_name();
      count.example = Text(thing.Describe(), ": made by ", ActivityOf(thing.made_by_).Describe(), ", last operation ",
                           ActivityOf(thing.last_operation_).Describe());
    }
    count.plugin_references += thing.plugin_references_;
  });
  std::vector<LiveCount> sorted;
  sorted.reserve(counts.size());
  for (auto& [key, count] : counts) sorted.push_back(std::move(count));
  return sorted;
}

}  // namespace host
