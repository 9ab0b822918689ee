// What a client keeps of a request until its response comes.
#pragma once

#include <string>
#include <string_view>

#include "kestrelink/saml/elements/SAMLDate.h"
#include "kestrelink/signin/SignIn.h"

namespace kestrelink::signin {

struct Pending {
  using Kind = Asked;

  Kind kind;
  std::string id;        // of the request
  std::string provider;  // its entity ID
  std::string issuer;    // of the request
  std::string subject;   // the name identifier that a query is about
  SAMLDate begun;

  std::string text() const;
  /// Refused with `request` when the text is not one of `text`.
  static Pending fromText(std::string_view text);
};

}  // namespace kestrelink::signin
