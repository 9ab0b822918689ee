#include "kestrelink/xml/StoreError.h"

#include <string>

namespace kestrelink {

void storeError(ErrorOut error, std::string_view domain, std::int64_t code) {
  if (error != nullptr) *error = ErrorInfo{std::string(domain), code, {}};
}

void storeError(ErrorOut error, std::string_view domain, std::int64_t code, std::string_view key,
                std::string_view value) {
  if (error == nullptr) return;
  *error = ErrorInfo{std::string(domain), code, {{std::string(key), std::string(value)}}};
}

}  // namespace kestrelink
