#include "bench/Raw.h"
#include "bench/Work.h"

namespace bench {

std::size_t rawWork(std::string_view work, const std::string& message) {
  if (work == "request") return rawAuthnRequest("https://signin.harbour-tv.example").size();
  const Schema schema = work == "read"           ? Schema::ofPackages
                        : work == "read-compact" ? Schema::ofBundle
                                                 : Schema::none;
  const RawValues values = rawRead(message, schema);
  return values.issuer.size() + values.status.size() + values.sessionEnd.size() +
         values.attributes.size();
}

}  // namespace bench
