#pragma once

#include "host/host/host.h"

namespace host {

// A host with everything that a plugin may look for: all functions, all classes.
class FullHost : public Host {
 public:
  explicit FullHost(HostOptions options = {});
};

}  // namespace host
