#include "bridge/host_functions.h"

#include <thread>
#include <vector>

#include "bridge/host_reference.h"
#include "tests/support/lending.h"

static int32_t Seven(int32_t add) { return 7 + add; }

TEST(HostFunctionTable, OneRuleAsksOnceTheOtherUntilFound) {
  StartLending();
  HostFunction<int32_t(int32_t)> once{"Seven"};
  HostFunctionUntilFound<int32_t(int32_t)> until_found{"Seven"};
  EXPECT_EQ(once(1), 0);
  EXPECT_EQ(once(1), 0);
  EXPECT_FALSE(once);
  EXPECT_EQ(asked["Seven"], 1);
  EXPECT_EQ(until_found(1), 0);
  EXPECT_EQ(until_found(1), 0);
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
  std::vector<std::thread> threads(8);
  for (std::thread& thread : threads) thread = std::thread([&] { sum += once(0); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(sum, 56);
  EXPECT_EQ(asked["Seven"], 1);
}

// The references that the plugin has on things of a class.
static int64_t References(const char* class_name) {
  for (const auto& live : lender->heap().Live()) {
    if (live.type_name == class_name) return live.plugin_references;
  }
  return 0;
}

TEST(HostReference, HoldersAndFieldsKeepTheCount) {
  const char *const a = "RuntimeException", *const b = "OutOfBoundsException";
  LendingHost host;
  REALobjectStruct* made = nullptr;
  {
    auto adopted = ObjectRef::Adopt(REALnewInstance(a));
    ObjectRef copy = adopted;
    EXPECT_EQ(References(a), 2);
    ObjectRef moved = std::move(copy);
    EXPECT_EQ(References(a), 2);
    auto other = ObjectRef::Adopt(REALnewInstance(b));
    other = adopted;  // gives up the old one
    EXPECT_EQ(References(b), 0);
    EXPECT_EQ(References(a), 3);
    ObjectRef& self = other;
    other = self;
    EXPECT_EQ(References(a), 3);
    other = ObjectRef();
    EXPECT_EQ(References(a), 2);
    made = moved.Detach();
    EXPECT_FALSE(moved);
  }
  EXPECT_EQ(References(a), 1);  // what Detach handed out is still held

  REALobjectStruct* field = nullptr;
  StoreField(field, made);
  StoreField(field, made);
  EXPECT_EQ(References(a), 2);
  StoreField(field, ObjectRef::Adopt(REALnewInstance(b)).get());
  EXPECT_EQ(References(a), 1);
  EXPECT_EQ(References(b), 1);
  StoreField<REALobjectStruct>(field, nullptr);
  EXPECT_EQ(References(b), 0);
  StoreField(field, made);
  ClearField(field);
  EXPECT_EQ(field, nullptr);
  ClearField(made);
}
