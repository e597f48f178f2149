#pragma once

#include "bridge/gif_plugin_host.h"

namespace host {

// A function as it is called from outside, where nothing may be thrown: after an exception `caught` is called, which
// can look at it, and the result is neutral.
template <auto function, void (*caught)()>
struct Boundary;
template <class Result, class... Arguments, Result (*function)(Arguments...), void (*caught)()>
struct Boundary<function, caught> {
  static Result Call(Arguments... arguments) {
    try {
      return function(arguments...);
    } catch (...) {
      caught();
    }
    return Result();
  }
};

}  // namespace host
