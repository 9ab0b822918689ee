// May the subscriber watch this? may_they_watch RESPONSE DECISION. Prints the query about the
// subscriber of the response, and what the provider's response to it decides.
#include <kestrelink/standard/StandardForms.h>

#include <fstream>
#include <iostream>
#include <iterator>

namespace ks = kestrelink;

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const auto read = [](const char* name) {
    std::ifstream file(name);
    return std::string{std::istreambuf_iterator<char>(file), {}};
  };
  const char* const live = "https://tv.example/ch/1";

  const auto& controller = ks::SAMLParserController::sharedInstance();
  const auto response = controller.parseCachedResponse(read(argv[1]));
  const auto query =
      ks::standard::newDecisionQuery(controller, {.resource = live, .channel = "HARBOUR"});
  if (!response || !ks::standard::setSubjectFrom(*query, *response)) {
    std::cout << "the response names nobody\n";
    return 1;
  }
  std::cout << query->xmlString().value_or("not written") << "\n";

  std::optional<ks::ErrorInfo> error;
  const auto decision = controller.parseResponse(read(argv[2]), &error);
  if (!decision) {
    std::cout << "rejected: " << ks::describe(error) << "\n";
    return 1;
  }
  std::cout << ks::standard::decisionForResource(*decision, live).value_or("no decision") << "\n";
}
