#include "plugin/host_functions.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "plugin/host_reference.h"
#include "tests/support/lending.h"

static int32_t Seven(int32_t add) { return 7 + add; }

TEST(HostFunctionTable, MissingFunctionsGiveTheNeutralResult) {
  StartLending();
  HostFunction<int32_t(int32_t)> once{"Seven"};
  HostFunctionUntilFound<void*(int32_t)> until_found{"Seven"};
  EXPECT_EQ(once(1), 0);
  EXPECT_EQ(until_found(1), nullptr);
  EXPECT_FALSE(once);
  gResolver = nullptr;
  EXPECT_EQ(until_found(1), nullptr);
}

TEST(HostFunctionTable, OneRuleAsksOnceTheOtherUntilFound) {
  StartLending();
  HostFunction<int32_t(int32_t)> once{"Seven"};
  HostFunctionUntilFound<int32_t(int32_t)> until_found{"Seven"};
  EXPECT_EQ(once(1) + once(1), 0);
  EXPECT_EQ(asked["Seven"], 1);
  EXPECT_EQ(until_found(1) + until_found(1), 0);
  EXPECT_EQ(asked["Seven"], 3);

  Lend("Seven", Seven);
  EXPECT_EQ(once(1), 0);
  EXPECT_EQ(asked["Seven"], 3);
  EXPECT_EQ(until_found(1), 8);
  EXPECT_EQ(until_found(2), 9);
  EXPECT_EQ(asked["Seven"], 4);
}

TEST(HostFunctionTable, ThreadsThatMeetInTheFirstLookUpAskOnceAndAllCall) {
  StartLending();
  Lend("Seven", Seven);
  HostFunction<int32_t(int32_t)> once{"Seven"};
  std::atomic<int> sum = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) threads.emplace_back([&] { sum += once(0); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(sum, 56);
  EXPECT_EQ(asked["Seven"], 1);
}

// --- Holders ---------------------------------------------------------------------------------------------------

// Any two bytes do as objects; the count of each stands in a map.
static std::map<REALobjectStruct*, int> references;

class Holders : public testing::Test {
 protected:
  Holders() {
    StartLending();
    Lend("REALLockObject", [](REALobjectStruct* object) { ++references[object]; });
    Lend("REALUnlockObject", [](REALobjectStruct* object) { --references[object]; });
    references = {{a_, 1}, {b_, 1}};
  }

  char bytes_[2] = {};
  REALobjectStruct* a_ = reinterpret_cast<REALobjectStruct*>(&bytes_[0]);
  REALobjectStruct* b_ = reinterpret_cast<REALobjectStruct*>(&bytes_[1]);
};

TEST_F(Holders, EveryWayOfPassingAReferenceKeepsTheCount) {
  {
    auto adopted = ObjectRef::Adopt(a_);
    EXPECT_EQ(references[a_], 1);
    ObjectRef copy = adopted;
    EXPECT_EQ(references[a_], 2);
    ObjectRef moved = std::move(copy);
    EXPECT_EQ(references[a_], 2);
    auto shared = ObjectRef::Share(b_);
    EXPECT_EQ(references[b_], 2);
    shared = adopted;  // reassignment gives up the old one
    EXPECT_EQ(references[b_], 1);
    EXPECT_EQ(references[a_], 3);
    ObjectRef& self = shared;
    shared = self;
    EXPECT_EQ(references[a_], 3);
    shared = ObjectRef();
    EXPECT_EQ(references[a_], 2);
    EXPECT_EQ(moved.Detach(), a_);
    EXPECT_FALSE(moved);
  }
  EXPECT_EQ(references[a_], 1);  // what Detach handed out is still held
  EXPECT_EQ(references[b_], 1);
}

TEST_F(Holders, FieldsHoldOneReferenceOnWhatTheyName) {
  REALobjectStruct* field = nullptr;
  StoreField(field, a_);
  StoreField(field, a_);
  EXPECT_EQ(references[a_], 2);
  StoreField(field, b_);
  EXPECT_EQ(references[a_], 1);
  EXPECT_EQ(references[b_], 2);
  StoreField<REALobjectStruct>(field, nullptr);
  ClearField(field);
  EXPECT_EQ(field, nullptr);
  EXPECT_EQ(references[b_], 1);
}
