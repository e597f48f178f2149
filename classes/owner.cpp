#include "classes/owner.h"

#include <exception>
#include <utility>
#include <vector>

// Those that were let go of while another one was being released. Handlers run one at a time.
static std::vector<ObjectRef> waiting;
static bool is_releasing = false;

void ReleaseOwner(REALobjectStruct*& field) {
  auto owner = ObjectRef::Adopt(std::exchange(field, nullptr));
  if (!owner) return;
  if (is_releasing) {
    try {
      waiting.push_back(std::move(owner));
    } catch (const std::exception&) {  // no memory to wait in: `owner` still holds the reference and goes right now
    }
    return;
  }
  is_releasing = true;
  owner = ObjectRef();
  while (!waiting.empty()) {
    owner = std::move(waiting.back());
    waiting.pop_back();
    owner = ObjectRef();
  }
  waiting.shrink_to_fit();
  is_releasing = false;
}
