#pragma once

#include <string>
#include <vector>

#include "fuzz/input.h"

// What a script can name.
struct ScriptNames {
  std::vector<std::string> classes;
  std::vector<std::string> members;    // of all classes
  std::vector<std::string> globals;    // global methods
  std::vector<std::string> functions;  // that the host offers to plugins
};

// A Lua program that uses what there is in every way that the choices say: well-formed, seldom sensible.
std::string WriteScript(Input& choices, const ScriptNames& names);
