#pragma once

#include <optional>
#include <string>

namespace verify_then_read {

enum class Verdict { SignedIn, ShowSignInPage, Denied, LoggedOut, Refused };

struct Outcome {
  Verdict verdict;
  std::string text;  // who until when, the status, or the reason
};

/// What this client expects. What is left out is not compared.
struct Expected {
  std::optional<std::string> audience, issuer, recipient, inResponseTo;
};

/// What a verified response says. It is a sign-in only if every assertion holds at the current
/// time and the first one, from which the library takes the subscriber, says that they signed in.
/// A date that the library does not read is a reason to refuse: to the library it would be none.
Outcome readVerified(const std::string& trusted, const Expected& expected);

}  // namespace verify_then_read
