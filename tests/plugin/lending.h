#pragma once

// What the host of a test offers: functions by name, and how often each name was asked for.

#include <atomic>
#include <map>
#include <string>

#include "plugin/host_functions.h"

inline std::map<std::string, void*> lent;
inline std::map<std::string, std::atomic<int>> asked;

// A function, or a lambda without captures.
template <typename Function>
void Lend(const char* name, Function function) {
  lent[name] = reinterpret_cast<void*>(+function);
}

// A host that has nothing but what is lent from here on.
inline void StartLending() {
  lent.clear();
  asked.clear();
  gResolver = [](const char* name) -> void* {
    ++asked[name];
    const auto found = lent.find(name);
    return found == lent.end() ? nullptr : found->second;
  };
}
