#include "host/host/exception.h"

#include "host/host/errors.h"

namespace host {

void Exception::Throw() const { throw RaisedException(type_name(), message ? message->bytes() : "", number); }

}  // namespace host
