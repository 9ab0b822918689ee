#pragma once

#include <memory>
#include <utility>

namespace kestrelink {

/// A new object that lives as long as the process: for what a client's own static objects, or its
/// threads, may still use while the process ends.
template <class Object, class... Arguments>
Object& immortal(Arguments&&... arguments) {
  return *std::make_unique<Object>(std::forward<Arguments>(arguments)...).release();
}

}  // namespace kestrelink
