// Signs a subscriber in at the provider of a metadata file.
//
//     sign_in METADATA
//
// The networking is done by hand: open the URL, and paste here what the provider's page posts
// (the form value SAMLResponse). tv_app/ is a client that sends and receives itself.

#include <kestrelink/signin/SignIn.h>

#include <fstream>
#include <iostream>
#include <iterator>

namespace signin = kestrelink::signin;

namespace {

int giveUp(const std::string& why) {
  std::cout << "not signed in: " << why << "\n";
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return giveUp("no metadata given");
  std::ifstream file(argv[1]);
  const std::string metadata{std::istreambuf_iterator<char>(file), {}};
  std::string reason;
  const auto provider = signin::providerFromMetadata(metadata, "", reason);
  if (!provider) return giveUp(reason);

  const signin::Client client{.entityId = "https://signin.harbour-tv.example",
                              .assertionConsumer = "https://signin.harbour-tv.example/acs",
                              .name = "Harbour"};
  const signin::SignIn signIn(client, *provider);
  const auto started = signIn.begin();
  if (!started) return giveUp(started.reason);
  std::cout << "open " << (started.url.empty() ? started.form : started.url) << "\n" << std::flush;

  std::string posted;
  std::getline(std::cin, posted);
  const auto result = signIn.finish(posted, started.pending);
  if (result.verdict != signin::Verdict::signedIn) return giveUp(result.explanation);
  std::cout << "signed in: " << result.session->subscriber << " at " << result.session->provider
            << "\n";
  for (const auto& [name, values] : result.session->response->attributes()) {
    std::cout << "  " << name << ":";
    for (const std::string& value : values) std::cout << " " << value;
    std::cout << "\n";
  }
}
