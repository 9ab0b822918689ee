// Reads a response that the client stored when the subscriber signed in: read_stored RESPONSE.
// Its time window may be over; the authentication must not have expired.
#include <kestrelink/standard/StandardReading.h>

#include <fstream>
#include <iostream>
#include <iterator>

namespace ks = kestrelink;

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  std::ifstream file(argv[1]);
  const std::string text{std::istreambuf_iterator<char>(file), {}};

  std::optional<ks::ErrorInfo> error;
  const auto response =
      ks::SAMLParserController::sharedInstance().parseCachedResponse(text, &error);
  if (!response || !ks::standard::isSignedIn(*response)) {
    std::cout << "sign in again: " << (response ? "nobody is signed in" : ks::describe(error))
              << "\n";
    return 1;
  }
  std::cout << ks::standard::subscriberOf(*response).value_or("a subscriber");
  if (const auto until = response->authenticationTTL()) std::cout << ", until " << *until;
  std::cout << "\n";
  for (const auto& [name, values] : response->attributes()) {
    std::cout << name << ":";
    for (const std::string& value : values) std::cout << " " << value;
    std::cout << "\n";
  }
}
