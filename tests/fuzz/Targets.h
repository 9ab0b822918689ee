// What is fuzzed. Each target takes whatever bytes arrive and ends the process when what the
// library returns is wrong; the sanitizers end it when memory is.
#pragma once

#include <string_view>

#include <libxml/tree.h>

#include "kestrelink/saml/KestrelinkSAML.h"

#include "tests/support/Reading.h"

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

/// Also what the message signs in once it is signed, and once a bit of that is changed.
void signIn(std::string_view input);

/// Once, before any target runs.
void start();

/// A controller that reads any well-formed message.
const kestrelink::SAMLParserController& withoutSchema();

/// Who signed in, until when, with which attributes and status, as libxml2's tree has it: written
/// anew here, sharing no code with the library but what it does to a text or a date.
Reading readingByHand(const xmlDoc* doc);

/// Ends the process, naming what did not hold.
void require(bool holds, const char* what);

}  // namespace fuzz
