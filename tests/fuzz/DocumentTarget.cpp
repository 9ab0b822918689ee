#include <algorithm>

#include "tests/fuzz/Targets.h"

namespace fuzz {
namespace {

using kestrelink::XMLWrapperDoc;

// Steps and predicates multiply: what a client's own expression may cost is the client's choice.
bool isCheap(std::string_view xpath) {
  return xpath.size() <= 100 && std::count_if(xpath.begin(), xpath.end(), [](char byte) {
                                  return byte == '/' || byte == '[' || byte == ':';
                                }) <= 5;
}

void readResult(kestrelink::XMLWrapperElement& element, std::string_view xpath) {
  element.setNamespace(std::make_shared<kestrelink::XMLWrapperNamespace>("f", "urn:fuzz"));
  static_cast<void>(element.xmlString());
  static_cast<void>(element.getResultsByXpathQuery(xpath));
}

}  // namespace

void documentAndXpath(std::string_view input) {
  const std::size_t line = std::min(input.find('\n'), input.size());
  const std::string_view xpath = input.substr(0, line);
  if (!isCheap(xpath) || input.size() > 3000) return;
  const auto text =
      std::make_shared<const std::string>(input.substr(std::min(line + 1, input.size())));
  auto doc = XMLWrapperDoc::initWithData(text, nullptr);
  if (!doc) return;

  std::optional<kestrelink::ErrorInfo> error;
  auto results = doc->getResultsByXpathQuery(xpath, &error);
  require(results.has_value() != error.has_value(), "an XPath query finds or fails");
  const auto first = doc->firstResultByXpathQuery(xpath);
  // Results register their prefixes, so a second query with prefixes may find other nodes.
  const bool isRepeatable = xpath.find(':') == std::string_view::npos;
  require(!isRepeatable || (first != nullptr) == (results && !results->empty()),
          "the first is one of all");
  if (!results) return;
  if (results->size() > 20) results->resize(20);
  for (const auto& element : *results) readResult(*element, xpath);
  doc.reset();
  for (const auto& element : *results) {
    static_cast<void>(element->xmlString());
    require(!element->getResultsByXpathQuery("//*"),
            "without its document an element finds nothing");
  }
}

}  // namespace fuzz
