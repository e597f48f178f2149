// The heap of counted things: where they lie, and what it does not take for a handle.

#include "host/core/heap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <unordered_set>

#include "host/core/bytes.h"
#include "host/core/exit_status.h"

namespace host {
namespace {

class Thing : public Counted {
 public:
  static constexpr const char* kKind = "thing";
  explicit Thing(size_t /*size*/) {}
  static size_t HandleSize(size_t size) { return size; }

  const char* kind() const override { return kKind; }
  const std::string& type_name() const override {
    static const std::string name = "Thing";
    return name;
  }
  std::byte* bytes() const { return static_cast<std::byte*>(handle()); }
};

constexpr size_t kGraves = 1 << 16;  // so many deaths later a handle is forgotten

// Things of all sizes are made and die in random order: their bytes are zero at first, stay as they were written
// however many others come and go.
TEST(Heap, KeepsThingsApart) {
  constexpr size_t kSizes[] = {16, 16, 24, 48, 100, 1160, 5000, 60000, 65536, 3000000};
  struct Kept {
    Ref<Thing> thing;
    size_t size;
    std::byte fill;
  };
  Heap heap;
  std::mt19937 random(1);
  std::vector<Kept> all;
  for (int step = 0; step < 5000; ++step) {
    if (all.size() > 300 || (!all.empty() && random() % 3 == 0)) {
      std::swap(all[random() % all.size()], all.back());
      const Kept& last = all.back();
      ASSERT_TRUE(AllAre(last.thing->bytes(), last.size, last.fill));
      all.pop_back();
      continue;
    }
    const size_t size = kSizes[random() % (step % 16 == 0 ? std::size(kSizes) : 6)];
    Kept made{heap.Make<Thing>(size), size, std::byte(1 + step % 255)};
    ASSERT_TRUE(AllAre(made.thing->bytes(), size, std::byte{0}));
    ASSERT_EQ(heap.Find<Thing>(made.thing->handle()), made.thing.get());
    std::fill_n(made.thing->bytes(), size, made.fill);
    all.push_back(std::move(made));
  }
  const auto live = heap.Live();
  ASSERT_EQ(live.size(), 1u);
  EXPECT_EQ(live[0].count, static_cast<int64_t>(all.size()));
}

// Gives the handles of as many things as make one forgotten.
std::unordered_set<const void*> DieOften(Heap& heap) {
  std::unordered_set<const void*> handles;
  for (size_t i = 0; i < kGraves; ++i) handles.insert(heap.Make<Thing>(size_t{16})->handle());
  return handles;
}

TEST(Heap, UsesAHandleAgainLongAfterItsDeath) {
  Heap heap;
  const void* first = heap.Make<Thing>(size_t{16})->handle();
  const auto handles = DieOften(heap);
  EXPECT_EQ(handles.size(), kGraves);
  EXPECT_FALSE(handles.contains(first));
  EXPECT_EQ(heap.Make<Thing>(size_t{16})->handle(), first);
}

TEST(Heap, StopsAtWhatIsNoHandle) {
  struct Row {
    const char* what;
    const void* (*handle)(Heap& heap);
    const char* message;
  };
  static Ref<Thing> alive;
  const Row rows[] = {
      {"inside a thing's bytes", [](Heap&) -> const void* { return alive->bytes() + 8; }, "never given out"},
      {"the thing itself", [](Heap&) -> const void* { return alive.get(); }, "never given out"},
      {"behind the last thing", [](Heap&) -> const void* { return alive->bytes() + (size_t{1} << 19); },
       "never given out"},
      {"where the memory begins",
       [](Heap&) -> const void* {
         return alive->bytes() - reinterpret_cast<uintptr_t>(alive->bytes()) % (uintptr_t{1} << 20);
       },
       "never given out"},
      {"on the stack", [](Heap& heap) -> const void* { return &heap; }, "never given out"},
      {"dead", [](Heap& heap) -> const void* { return heap.Make<Thing>(size_t{40})->handle(); },
       "thing Thing#2 is dead"},
      {"dead, and large", [](Heap& heap) -> const void* { return heap.Make<Thing>(size_t{100000})->handle(); },
       "thing Thing#2 is dead"},
      {"long dead",
       [](Heap& heap) -> const void* {
         const void* handle = heap.Make<Thing>(size_t{40})->handle();
         return DieOften(heap), handle;
       },
       "or is long dead"},
      {"written to when dead",
       [](Heap& heap) -> const void* {
         std::byte* bytes = heap.Make<Thing>(size_t{40})->bytes();
         bytes[39] = std::byte{0};
         return DieOften(heap), nullptr;
       },
       "thing Thing#2 was written to after its death"},
  };
  for (const Row& row : rows) {
    EXPECT_EXIT(
        {
          Heap heap;
          alive = heap.Make<Thing>(size_t{40});
          heap.Find<Thing>(row.handle(heap));
        },
        ::testing::ExitedWithCode(kExitFault), row.message)
        << row.what;
  }
}

}  // namespace
}  // namespace host
