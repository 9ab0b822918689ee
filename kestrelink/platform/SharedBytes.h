#pragma once

#include <memory>
#include <string>

namespace kestrelink {

/// Bytes that several owners read and nobody changes; null is absent.
using SharedBytes = std::shared_ptr<const std::string>;

}  // namespace kestrelink
