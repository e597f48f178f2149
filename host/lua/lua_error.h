#pragma once

// The way of errors in Lua: what the host throws becomes a Lua error at the script's line. Lua is the build that
// throws C++ exceptions itself, so that what a C function holds is given back on every way out.

#include <lua.hpp>

#include <exception>
#include <string>

#include "host/lua/lua_state.h"

namespace host {

// Makes the metatable of host exceptions.
void OpenErrors(lua_State* lua);

// Pushes "script:12: " for the innermost function that has lines; C functions such as pcall may stand in between.
void PushWhere(lua_State* lua);

// Pushes the error value for an exception: for a host exception a table with `class`, `message`, `number` and `where`
// (the script's line), which reads well with tostring; else the message with the line in front.
void PushError(lua_State* lua, const std::exception& error);

// What an error value says. One that cannot say it is told by its type.
std::string ErrorText(lua_State* lua, int index);

// For a global that is nil: "; did you mean ...?", or nothing when no name comes close.
std::string SuggestGlobal(lua_State* lua, const std::string& wanted);

// For lua_pcall: adds the traceback to a message that nobody caught.
int AddTraceback(lua_State* lua);

// Counts the C functions that run inside each other: what they hold is still alive when a script ends the program.
class RunningCall {
 public:
  explicit RunningCall(lua_State* lua) : context_(ContextOf(lua)) { ++context_.running_calls; }
  ~RunningCall() { --context_.running_calls; }
  RunningCall(const RunningCall&) = delete;
  RunningCall& operator=(const RunningCall&) = delete;

 private:
  ScriptContext& context_;
};

// Runs a C function's body and turns what it throws into Lua errors.
template <int (*body)(lua_State*)>
int Guarded(lua_State* lua) {
  try {
    const RunningCall running(lua);
    return body(lua);
  } catch (const std::exception& error) {
    PushError(lua, error);
  }
  return lua_error(lua);
}

}  // namespace host
