// Letting go of documents on a host that does more in a release than it should.

#include "bridge/owner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>

namespace {

int released, depth, deepest;
int chain_left;  // owners that each release lets go of, one inside the other
bool leaves;     // the next release by a jump
std::jmp_buf way_out;

// Handles are only counted here.
REALobjectStruct* SomeObject() {
  static char object;
  return reinterpret_cast<REALobjectStruct*>(&object);
}

void LetGo() {
  REALobjectStruct* field = SomeObject();
  ReleaseOwner(field);
}

void Unlock(REALobjectStruct*) {
  if (std::exchange(leaves, false)) std::longjmp(way_out, 1);
  ++released;
  deepest = std::max(deepest, ++depth);
  if (chain_left > 0) {
    --chain_left;
    LetGo();
  }
  --depth;
}

void* Resolve(const char* name) {
  return std::strcmp(name, "REALUnlockObject") == 0 ? reinterpret_cast<void*>(Unlock) : nullptr;
}

void LetGoInsideOthers(int calls) {
  volatile char room[256] = {};  // a frame of its own
  if (calls > 0) return LetGoInsideOthers(calls - 1), void(room[0]);
  LetGo();
}

class Owner : public testing::Test {
 protected:
  void SetUp() override {
    gResolver = Resolve;
    released = depth = deepest = chain_left = 0;
  }
};

TEST_F(Owner, LongChainsGoOneAfterTheOther) {
  chain_left = 100000;
  LetGo();
  EXPECT_EQ(released, 100001);
  EXPECT_LE(deepest, 16);
}

// Each time from another depth, so that every jump leaves a release behind that lies elsewhere.
TEST_F(Owner, LaterReleasesTakePlaceAfterOneThatWasLeftByAJump) {
  static int calls;  // survives the jumps
  for (calls = 0; calls < 50; ++calls) {
    leaves = true;
    if (setjmp(way_out) == 0) LetGoInsideOthers(calls);
    ASSERT_FALSE(leaves);
    const int before = released;
    LetGo();
    EXPECT_EQ(released, before + 1) << "after a jump from depth " << calls;
    LetGoInsideOthers(60);
    EXPECT_EQ(released, before + 2) << "after a jump from depth " << calls;
  }
}

}  // namespace
