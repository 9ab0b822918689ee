#pragma once

#include <string>
#include <string_view>

#include "kestrelink/xml/ErrorInfo.h"

namespace kestrelink {

/// Store an error, if the caller wants one; the second with one entry in its information map.
inline void storeError(ErrorOut error, std::string_view domain, std::int64_t code) {
  if (error != nullptr) *error = ErrorInfo{std::string(domain), code, {}};
}

inline void storeError(ErrorOut error, std::string_view domain, std::int64_t code,
                       std::string_view key, std::string_view value) {
  if (error == nullptr) return;
  *error = ErrorInfo{std::string(domain), code, {{std::string(key), std::string(value)}}};
}

}  // namespace kestrelink
