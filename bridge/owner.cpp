#include "bridge/owner.h"

#include <cstdint>
#include <memory>
#include <new>
#include <utility>

#include "platform/compiler.h"

namespace {

constexpr int kDeepest = 16;  // releases inside one another

struct Waiting {
  ObjectRef owner;
  Waiting* next;
};

// The releases that are under way on this thread, by the address of each one's frame, outermost first, and the owners
// that are let go of when the innermost has ended.
//
// A host may leave a release by a jump, past the line that takes it off the list. Frames of calls lie below those of
// their callers, so whatever is not above a new frame has been left that way.
struct UnderWay {
  uintptr_t frames[kDeepest];
  int depth;
  Waiting* waiting;
};
thread_local UnderWay under_way;

bool Postpone(ObjectRef& owner) {
  auto* waiting = new (std::nothrow) Waiting{{}, under_way.waiting};
  if (!waiting) return false;
  waiting->owner = std::move(owner);
  under_way.waiting = waiting;
  return true;
}

void ReleaseWaiting() {
  while (under_way.waiting) {
    const std::unique_ptr<Waiting> next(under_way.waiting);
    under_way.waiting = next->next;
  }
}

}  // namespace

void ReleaseOwner(REALobjectStruct*& field) {
  auto owner = ObjectRef::Adopt(std::exchange(field, nullptr));
  if (!owner) return;
  const uintptr_t frame = GIF_FRAME_ADDRESS(owner);
  int& depth = under_way.depth;
  while (depth > 0 && under_way.frames[depth - 1] <= frame) --depth;
  if (depth == kDeepest && Postpone(owner)) return;
  if (depth == kDeepest) --depth;  // no memory to wait in: one more inside the others
  const int outside = depth;
  under_way.frames[depth++] = frame;
  owner = ObjectRef();
  ReleaseWaiting();
  depth = outside;
}
