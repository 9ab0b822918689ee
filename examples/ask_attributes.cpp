// Asks the provider for attributes of the subscriber who signed in: ask_attributes RESPONSE.
// Prints the query. Send it, verify what comes back, and read it as read_stored does.
#include <kestrelink/standard/StandardForms.h>

#include <fstream>
#include <iostream>
#include <iterator>

namespace ks = kestrelink;

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  std::ifstream file(argv[1]);
  const std::string text{std::istreambuf_iterator<char>(file), {}};

  const auto& controller = ks::SAMLParserController::sharedInstance();
  const auto response = controller.parseCachedResponse(text);
  const auto query = controller.newAttributeQuery("HARBOUR");  // the channel that asks
  if (!response || !ks::standard::setSubjectFrom(*query, *response)) {
    std::cout << "the response names nobody\n";
    return 1;
  }
  query->addAttribute("HouseholdID");
  query->addAttribute("Language", {"sv", "en"});  // only if it is one of these

  // The form that the standard's schema accepts: not every provider needs it.
  const auto made = ks::standard::toStandardForm(*query);
  if (made != ks::standard::StandardForm::made) {
    std::cout << ks::standard::reasonOf(made) << "\n";
    return 1;
  }
  std::cout << query->xmlString().value_or("not written") << "\n";
}
