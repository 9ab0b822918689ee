// A client: it reads an answer, reads the elements it is handed, and makes a request.

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
  const auto subject = response->subject();
  const bool sameIdentifier = nameId && subject && subject->elements().size() == 2 &&
                              subject->elements()[0]->textContent() == nameId->textContent();
  const auto confirmation =
      std::dynamic_pointer_cast<kestrelink::SAMLSubjectConfirmation>(subject->elements()[1]);
  const auto household =
      response->attributeValuesForName(kestrelink::SAMLAttributePropertyNameHouseholdID);

  const auto query = controller.newAttributeQuery("HARBOUR", &error);
  query->setSubjectFromResponse(text);
  query->addAttribute("HouseholdID");
  const auto written = query->xmlString();
  const bool asksAboutSubject =
      written && written->find(*nameId->textContent()) != std::string::npos;

  const bool fine = sameIdentifier && confirmation && confirmation->recipient() && household &&
                    asksAboutSubject && error == std::nullopt;
  std::cout << (fine ? "fine: " : "wrong: ") << response->userName().value_or("") << "\n";
  return fine ? 0 : 1;
}
