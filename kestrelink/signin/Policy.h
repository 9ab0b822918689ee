#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>

namespace kestrelink::signin {

/// Every choice that a client has. As made, each is the safe one.
struct Policy {
  /// Believe signatures and digests made with SHA-1. Forgeries of SHA-1 are within reach of a
  /// wealthy attacker; some providers still use it unless they are configured otherwise.
  bool acceptSha1 = false;

  /// The shortest RSA key of a provider, in bits, that is believed. Keys of 1024 bits are within
  /// reach of a wealthy attacker.
  int leastRsaBits = 2048;

  /// How long a session lasts when the provider states no end ("SessionNotOnOrAfter"), from the
  /// moment that its response is accepted. `std::nullopt`: such a response is refused, for the
  /// subscriber would stay signed in for ever.
  std::optional<std::chrono::seconds> sessionWithoutEnd = {};

  /// By how much the clocks of client and provider may differ, in both directions, where a time
  /// window is checked. A larger allowance lets a stolen response be used for longer.
  std::chrono::seconds clockSkew{60};

  /// Accept a sign-in that this client did not ask for. An attacker can then sign a subscriber in
  /// to the attacker's account.
  bool acceptUnsolicited = false;

  /// How long after `begin` a response is accepted.
  std::chrono::seconds longestWait{3600};

  /// Sign requests even where the provider does not ask for it. Needs `Client::signingKey`.
  bool signRequests = false;

  /// The longest message that is read, in bytes, as it came in and after each decoding. Hostile
  /// messages cost time and memory in proportion.
  std::size_t mostBytes = 262'144;

  /// The current time, for a client whose system clock is not to be trusted.
  std::function<std::chrono::system_clock::time_point()> clock = std::chrono::system_clock::now;
};

}  // namespace kestrelink::signin
