#include "fuzz/script_writer.h"

#include <iterator>

namespace {

// In the templates: $e an expression, $b a block, $v a variable, $c $m $g $k a name of the kinds of ScriptNames, $n a
// number, $s a string, $h a metamethod's name, $f a function of Lua's.
constexpr const char* kLeaves[] = {"nil", "true", "$n", "$n", "$s", "$v", "$v", "$v", "$c()", "GIFZKV()", "{}"};

constexpr const char* kExpressions[] = {
    "$n",
    "$s",
    "$v",
    "$c($e)",
    "$c($e, $e)",
    "$g($e)",
    "opened():Clone()",
    "opened().$m",
    "($e).$m",
    "($e).$m",
    "($e):$m()",
    "($e):$m($e)",
    "($e):$m($e)",
    "($e):$m($e, $e)",
    "($e).$m($e, $e)",
    "($e).$m[$e]",
    "($e)[$e]",
    "#($e)",
    "-($e)",
    "($e) == ($e)",
    "($e) .. ($e)",
    "($e) < ($e)",
    "tostring($e)",
    "{ $e, $e, x = $e }",
    "function(...) $b return $e end",
    "setmetatable({ $e }, { $h = $e })",
    "setmetatable({ $e }, { $h = function(...) $b return $e end })",
    "setmetatable({ $e }, { __gc = function(self) $v = self[1] $b end })",
    "setmetatable({ $e }, { __mode = 'kv' })",
    "getmetatable($e)",
    "pcall($e, $e, $e)",
    "select(2, pcall(function() $b end))",
    "select(2, xpcall(function() $b end, function(...) $b return $e end))",
    "coroutine.wrap(function(...) $b coroutine.yield($e) $b return $e end)",
    "coroutine.create(function(...) $b coroutine.yield($e) return $e end)",
    "select(2, coroutine.resume($e, $e))",
    "load($e, 'inner', 't')",
    "load(function() return $e end)",
    "debug.getinfo($n, 'f')",
    "debug.getinfo(pairs($e), 'fSlnu')",
    "debug.traceback($e, $n)",
    "next($e, $e)",
    "$f($e)",
    "$f($e, $e)",
    "$f($e, $e, $e)",
    "host.describe($s)",
    "host.describe()",
    "host.live()",
    "host.class($e)",
    "host.calls('$k')",
    "FolderItem('fuzzed.gif'):OpenAsGIFZKV()",
};

constexpr const char* kStatements[] = {
    "$v = $e;",
    "$v = $e;",
    "$v = $e;",
    ";($e).$m = $e;",
    ";($v).$m = $e;",
    ";($e)[$e] = $e;",
    ";($e).$m[$e] = $e;",
    ";($v):$m($e);",
    "local c <close> = $e;",
    "for k, x in pairs($e) do $v = x $b end",
    "for k, x in ipairs($e) do $b end",
    "for _ = 1, 3 do $b end",
    "try(function() $b end);",
    "if $e then $b end",
    "collectgarbage($s);",
    "collectgarbage();",
    "collectgarbage('step', $n);",
    "coroutine.wrap(function() $b end)();",
    "coroutine.close($e);",
    "error($e);",
    "host.fail('$k', $n);",
    "FolderItem('fuzzed.gif'):SaveAsGIFZKV($e);",
};

constexpr const char* kNumbers[] = {"0",
                                    "1",
                                    "2",
                                    "3",
                                    "4",
                                    "5",
                                    "7",
                                    "8",
                                    "9",
                                    "16",
                                    "100",
                                    "254",
                                    "255",
                                    "256",
                                    "257",
                                    "300",
                                    "-1",
                                    "-2",
                                    "1.5",
                                    "0/0",
                                    "1/0",
                                    "1<<32",
                                    "(1<<31)-1",
                                    "math.maxinteger",
                                    "math.mininteger"};

constexpr const char* kStrings[] = {
    "''",         "'x'",          "'fuzzed.png'",   "'a\\0b'",       "'\\xff\\xfe'",     "('x'):rep(1000)",
    "'Count'",    "'collect'",    "'generational'", "'incremental'", "'count'",          "'__gc'",
    "'return 1'", "opened_bytes", "'GIF89a'",       "'return ...'",  "string.dump(try)", "'%d%s'",
    "'<i4'",      "('\\u{FC}')"};

constexpr const char* kMetamethods[] = {"__gc",    "__index", "__newindex", "__call",     "__tostring",
                                        "__close", "__len",   "__eq",       "__lt",       "__concat",
                                        "__unm",   "__pairs", "__name",     "__metatable"};

constexpr const char* kFunctions[] = {
    "rawget",        "rawset",         "rawequal",      "rawlen",          "type",         "tonumber",
    "ipairs",        "assert",         "select",        "string.byte",     "string.char",  "string.sub",
    "string.len",    "string.reverse", "string.upper",  "string.find",     "string.gsub",  "string.match",
    "string.format", "string.pack",    "string.unpack", "string.packsize", "table.insert", "table.remove",
    "table.concat",  "table.pack",     "table.unpack",  "table.sort",      "math.floor",   "math.tointeger",
    "math.type",     "utf8.char",      "utf8.len",      "utf8.codepoint",  "setmetatable", "os.time",
    "os.date",       "require",        "host.stat",     "host.exists",     "warn",         "print"};

constexpr const char* kPrologue = R"(
local function opened() return GifStringToGifZKV(opened_bytes) end
local copy = opened():Clone()
local v, try = { copy, copy:Block(3).Picture, copy:Block(0).Extension, MemoryBlock("GIF89a"), Picture(5, 3) }, pcall
v[0] = opened()
)";

constexpr int kDepth = 5;

class Writer {
 public:
  Writer(Input& choices, const ScriptNames& names) : choices_(choices), names_(names) {}

  std::string Program() {
    text_ = kPrologue;
    const int count = 4 + choices_.Below(24);
    for (int i = 0; i < count; ++i) {
      text_ += "try(function() ";
      Expand(kStatements[choices_.Below(std::size(kStatements))], 1);
      text_ += " end);\n";
    }
    return std::move(text_);
  }

 private:
  template <size_t kCount>
  const char* Pick(const char* const (&from)[kCount]) {
    return from[choices_.Below(kCount)];
  }
  const std::string& Pick(const std::vector<std::string>& from) {
    return from[static_cast<size_t>(choices_.Word()) % from.size()];
  }

  void Expand(const char* pattern, int depth) {
    for (const char* at = pattern; *at != '\0'; ++at) {
      if (*at == '$') {
        Fill(*++at, depth);
      } else {
        text_ += *at;
      }
    }
  }

  void Fill(char kind, int depth) {
    switch (kind) {
      case 'e':
        return depth >= kDepth || choices_.Below(3) == 0 ? Expand(Pick(kLeaves), depth + 1)
                                                         : Expand(Pick(kExpressions), depth + 1);
      case 'b':
        for (int i = depth >= kDepth ? 0 : choices_.Below(3); i > 0; --i) {
          text_ += "do ";
          Expand(Pick(kStatements), depth + 1);
          text_ += " end ";
        }
        return;
      case 'v':
        text_.append("v[").append(std::to_string(choices_.Below(6))).append("]");
        return;
      case 'c':
        text_ += Pick(names_.classes);
        return;
      case 'm':
        text_ += Pick(names_.members);
        return;
      case 'g':
        text_ += Pick(names_.globals);
        return;
      case 'k':
        text_ += Pick(names_.functions);
        return;
      case 'n':
        text_.append("(").append(Pick(kNumbers)).append(")");
        return;
      case 's':
        text_.append("(").append(Pick(kStrings)).append(")");
        return;
      case 'h':
        text_ += Pick(kMetamethods);
        return;
      default:
        text_ += Pick(kFunctions);
    }
  }

  Input& choices_;
  const ScriptNames& names_;
  std::string text_;
};

}  // namespace

std::string WriteScript(Input& choices, const ScriptNames& names) { return Writer(choices, names).Program(); }
