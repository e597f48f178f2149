#pragma once

// What the host of a test offers: functions by name, before those of a script host if there is one, and how often
// each name was asked for.

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <string>

#include "bridge/host_functions.h"
#include "host/classes/full_host.h"

inline std::map<std::string, void*> lent;
inline std::map<std::string, std::atomic<int>> asked;
inline host::Host* lender = nullptr;

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
    if (const auto found = lent.find(name); found != lent.end()) return found->second;
    return lender ? lender->Resolve(name) : nullptr;
  };
}

// A script host for the plugin's own functions, without a plugin; at its end nothing may be alive.
class LendingHost : public host::FullHost {
 public:
  explicit LendingHost(host::HostOptions options = {}) : FullHost(std::move(options)) {
    StartLending();
    lender = this;
  }
  ~LendingHost() {
    EXPECT_TRUE(ReportLeaks());
    lender = nullptr;
  }
};
