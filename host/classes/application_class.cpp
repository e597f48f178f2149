// The application's class: a name by which a plugin tells the kinds of host apart.

#include "host/classes/host_classes.h"

namespace host {

void AddApplicationClass(Host& host) {
  const HostOptions& options = host.options();
  const bool desktop = options.pictures == PictureKind::kDesktop;
  const std::string name = options.application.value_or(desktop ? "Application" : "ConsoleApplication");
  if (!name.empty()) host.AddClass(name, nullptr);
}

}  // namespace host
