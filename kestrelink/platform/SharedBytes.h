#pragma once

#include <memory>
#include <string>

namespace kestrelink {

/// Immutable bytes with shared ownership; may be null.
using SharedBytes = std::shared_ptr<const std::string>;

}  // namespace kestrelink
