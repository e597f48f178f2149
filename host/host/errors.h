#pragma once

// What the host throws while a script is served. Each wing above turns them into its own way of telling.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace host {

// A use of a class or a member that its declaration does not allow; the text is meant for the script's
// author.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A host exception on its way to the script: the class and the values of the exception object.
class RaisedException : public std::runtime_error {
 public:
  RaisedException(std::string raised_class, std::string raised_message, int64_t raised_number = 0)
      : std::runtime_error(raised_class + ": " + raised_message),
        class_name(std::move(raised_class)),
        message(std::move(raised_message)),
        number(raised_number) {}

  std::string class_name;
  std::string message;
  int64_t number;
};

}  // namespace host
