#include "bench/Raw.h"
#include "bench/Work.h"

namespace bench {

std::size_t rawWork(std::string_view work, const std::string& message) {
  if (work == "request") return rawAuthnRequest("https://signin.harbour-tv.example").size();
  const RawAnswer answer = rawRead(message, work == "read");
  return answer.issuer.size() + answer.status.size() + answer.sessionEnd.size() +
         answer.attributes.size();
}

}  // namespace bench
