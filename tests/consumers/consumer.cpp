// A client: it reads a response, reads its elements, and makes a request.

#include <kestrelink/saml/KestrelinkSAML.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  std::ifstream file(argv[1]);
  const std::string text{std::istreambuf_iterator<char>(file), {}};

  std::filesystem::current_path("/");  // what was loaded by a relative path is elsewhere from here

  const auto& controller = kestrelink::SAMLParserController::sharedInstance();
  std::optional<kestrelink::ErrorInfo> error;
  const auto response = controller.parseResponse(text, &error);
  if (!controller.schema() || !response) return 1;

  const auto nameId = response->firstResultByXpathQuery("//saml:NameID");
  const auto confirmation = std::dynamic_pointer_cast<kestrelink::SAMLSubjectConfirmation>(
      response->subject()->elements().at(1));
  const auto query = controller.newAttributeQuery("HARBOUR", &error);
  query->setSubjectFromResponse(text);
  query->addAttribute("HouseholdID");
  const std::string written = query->xmlString().value();

  const bool fine = nameId && confirmation && confirmation->recipient() && !error &&
                    response->attributeValuesForName("HouseholdID") &&
                    written.find(nameId->textContent().value()) != std::string::npos;
  std::cout << (fine ? "fine: " : "wrong: ") << response->userName().value_or("") << "\n";
  return fine ? 0 : 1;
}
