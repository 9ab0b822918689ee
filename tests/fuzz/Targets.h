// What is fuzzed. Each target takes whatever bytes arrive and ends the process when the library's
// answer is wrong; the sanitizers end it when memory is.
#pragma once

#include <string_view>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace fuzz {

void responseWithSchema(std::string_view input);
void responseWithoutSchema(std::string_view input);

/// The first line is the XPath expression, the rest the document.
void documentAndXpath(std::string_view input);

/// Read, write, read: the same tree.
void roundTrip(std::string_view input);

/// Every element of the document, read as every class, and every accessor of it.
void everyAccessor(std::string_view input);

/// Three lines are what the four requests are filled with; the rest is the response whose subject
/// they take.
void requests(std::string_view input);

/// Once, before any target runs.
void start();

/// A controller that reads any well-formed message.
const kestrelink::SAMLParserController& withoutSchema();

/// Ends the process, naming what did not hold.
void require(bool holds, const char* what);

}  // namespace fuzz
