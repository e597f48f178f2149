// Runs scripts against the sample plugin: what they may do works, and each broken rule is found.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "host/fault.h"
#include "host/script.h"

namespace host {
namespace {

// The script's error, or "" when it succeeded; ends with a failure when something is still alive.
std::string RunScript(const std::string& code, HostOptions options = {}) {
  Host host(std::move(options));
  host.LoadPlugin(SAMPLE_PLUGIN);
  std::string error;
  {
    Script script(host, "test", {});
    if (!script.RunCode(code, "=test")) error = script.error().substr(0, script.error().find('\n'));
  }
  EXPECT_TRUE(host.ReportLeaks()) << code;
  return error;
}

TEST(Script, UsesClassesMembersAndMemoryBlocks) {
  const char* const kScripts[] = {
      "local b = Bag() b.width = 5 assert(b.WIDTH == 5 and #b == 4 and b.Item == nil)",
      "local b = bag() b.Cell[2] = 7 assert(b:Cell(2) == 7 and b.cell[2] == 7)",
      "local b = Bag() b.Item = WideBag() assert(b.Item == b.Item and b.Item.Width == 80)",
      "local b = Bag() b.Item = b; b.Item = nil",
      "local n = 0 for i, e in pairs(Bag()) do assert(e.Width == i) n = n + 1 end assert(n == 4)",
      R"(local ok, e = pcall(function() return Bag().Cell[4] end)
         assert(not ok and e.class == 'OutOfBoundsException' and e.message == 'no such cell' and e.number == 7)
         assert(tostring(e) == 'test:1: OutOfBoundsException: no such cell'))",
      R"(local m = MemoryBlock('a\0c') assert(#m == 3 and m[1] == 0 and tostring(m) == 'a\0c') m[1] = 98
         assert(m:String() == 'abc' and m:String(1, 1) == 'b' and not pcall(function() return m[3] end)))",
      "assert(MemoryBlock(5).Size == 5 and LenB('h\\u{E9}') == 3)",
      "host.fail('PluginNewInstance', 2) local kept = WideBag(1) assert(WideBag(2) == nil and WideBag(3))",
  };
  for (const char* script : kScripts) EXPECT_EQ(RunScript(script), "") << script;
}

TEST(Script, SaysWhatIsWrong) {
  const struct {
    const char* script;
    const char* error;
  } kCases[] = {
      {"Bag().Widht = 1", "test:1: Bag has no member \"Widht\"; did you mean \"Width\"?"},
      {"Bag().Count = 1", "test:1: Bag.Count can't be set"},
      {"Bag().Width = 'x'", "test:1: Bag.Width is an Integer, not a String"},
      {"Bag():Cell({})", "test:1: Bag.Cell: parameter index is an integer, not a table"},
      {"Bag():Cell()", "test:1: Bag.Cell takes (index as integer), not 0 arguments"},
      {"MemoryBlock(-1)", "test:1: OutOfMemoryException: A MemoryBlock of -1 bytes can't be made."},
  };
  for (const auto& test : kCases) EXPECT_EQ(RunScript(test.script), test.error) << test.script;
}

TEST(AccountingDeathTest, FindsEachBrokenRule) {
  const struct {
    const char* script;
    const char* message;
  } kCases[] = {
      {"Bag():Break(1)",
       "REALUnlockObject in Bag.Break: object Bag#2 is dead; the last operation on it: REALUnlockObject in "
       "Bag.Break"},
      {"Bag():Break(2)", "object Bag#1: a reference is given up that the plugin does not have"},
      {"Bag():Break(3)",
       "REALLockString in Bag.Break: object Bag#2 was given where a handle of kind string is needed"},
      {"Bag():Break(4)", "something was written outside the instance data of Bag#2"},
      {"Bag():Break(5)", "the handle 0x[0-9a-f]+ was never given out"},
      {"local b = Bag() b:GiveBorrowed(b)",
       "returning a result in Bag.GiveBorrowed: object Bag#1: a reference is given up that the plugin does not have"},
  };
  for (const auto& test : kCases) {
    EXPECT_EXIT(RunScript(test.script), testing::ExitedWithCode(kExitFault), test.message);
  }
}

TEST(AccountingDeathTest, ListsWhatIsStillAlive) {
  EXPECT_EXIT(
      {
        Host host;
        host.LoadPlugin(SAMPLE_PLUGIN);
        { Script(host, "test", {}).RunCode("Bag():Break(0) os.exit(3)", "=test"); }
      },
      testing::ExitedWithCode(kExitLeak), "leak: 1 Bag \\(object\\).*made by PluginNewInstance in Bag.Break");
}

}  // namespace
}  // namespace host
