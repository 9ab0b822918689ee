#pragma once

#include <memory>
#include <utility>

namespace kestrelink {

/// A new object that is never destroyed: a client's own static objects, or its threads, may still
/// use it while the process ends.
template <class Object, class... Arguments>
Object& noDestructor(Arguments&&... arguments) {
  return *std::make_unique<Object>(std::forward<Arguments>(arguments)...).release();
}

}  // namespace kestrelink
