#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "kestrelink/saml/elements/SAMLDate.h"
#include "kestrelink/signin/Export.h"

namespace kestrelink::signin {

/// Remembers which requests and assertions were used, so that none is used twice. A client with
/// several processes implements it over what they share.
///
/// Threads: `remember` is called from every thread that uses a `SignIn`.
class KESTRELINK_SIGNIN_EXPORT Memory {
 public:
  enum class Answer {
    remembered,  ///< it was not there, and is now
    known,       ///< it was there
    full,        ///< there is no room: the message is refused
  };

  virtual ~Memory();
  /// Remembers an identifier until that time, in one step: of two calls at once one gets `known`.
  virtual Answer remember(std::string_view identifier, SAMLDate until, SAMLDate now) = 0;
};

/// A memory in this process, of at most so many identifiers. Those whose time is over make room.
KESTRELINK_SIGNIN_EXPORT std::shared_ptr<Memory> newMemory(std::size_t most = 100'000);

}  // namespace kestrelink::signin
