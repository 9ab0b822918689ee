#pragma once

#include <cstdint>
#include <string_view>

#include "kestrelink/xml/ErrorInfo.h"

namespace kestrelink {

/// Store an error if the caller wants one; the second adds one entry to its `info`.
void storeError(ErrorOut error, std::string_view domain, std::int64_t code);
void storeError(ErrorOut error, std::string_view domain, std::int64_t code, std::string_view key,
                std::string_view value);

}  // namespace kestrelink
