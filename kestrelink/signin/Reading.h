// From what came in to a response that may be read: the whole way but the checks.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kestrelink/saml/messages/SAMLResponse.h"
#include "kestrelink/signin/Checks.h"

namespace kestrelink::signin {

struct Reading {
  Envelope envelope;  // as it came
  bool isSigned;
  std::string relayState;
  std::string text;                        // what may be believed, in the first library's form
  std::shared_ptr<SAMLResponse> response;  // the same, read
};

/// Decodes, parses, verifies, decrypts and reads a message whose root must have that name.
Reading readMessage(std::string_view received, const char* root, const Client& client,
                    const Provider& provider, const Policy& policy, SAMLDate now);

/// Reads a response in the first library's form: the one time that it is parsed there. Refused:
/// `schemaMissing`, `notValid`.
std::shared_ptr<SAMLResponse> readResponse(std::string text);

}  // namespace kestrelink::signin
