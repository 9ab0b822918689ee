// What libxml2 2.9.14 itself does wrong when one of its allocations fails. `rawOperations` meet
// every one of these without the library.
#pragma once

#include <string_view>

namespace stress {

/// The verdict as the sweep words it, and a `Place`. "?" stands for functions that libxml2 does not
/// export: those beneath xmlSchemaInitTypes and xmlSchemaValidateDoc.
struct KnownFault {
  std::string_view verdict;
  std::string_view place;
};

inline constexpr KnownFault kKnownFaults[] = {
    // A null pointer is followed.
    {"crash", "? > ?"},
    {"crash", "xmlSchemaParse > xmlDictLookup"},
    {"crash", "xmlSchemaParse > xmlSchemaParse"},
    {"crash", "xmlSchemaParse > xmlStrdup"},
    {"crash", "xmlSchemaValPredefTypeNodeNoNorm > xmlStrdup"},
    {"crash", "xmlXPathEval > xmlXPathEval"},
    {"leak", "? > ?"},
    {"leak", "xmlHashAddEntry3 > xmlHashAddEntry3"},  // beneath xmlSchemaInitTypes
    {"leak", "xmlHashCreate > xmlHashCreate"},        // the same
    {"leak", "xmlReadMemory > xmlBufResize"},
    {"leak", "xmlSchemaParse > xmlAutomataNewEpsilon"},
    {"leak", "xmlSchemaParse > xmlAutomataNewState"},
    {"leak", "xmlSchemaParse > xmlAutomataNewTransition2"},
    {"leak", "xmlSchemaParse > xmlBufResize"},
    {"leak", "xmlSchemaParse > xmlSchemaParse"},
    {"leak", "xmlXPathEval > xmlXPathEval"},
    {"leak", "xmlXPathEval > xmlXPathStartsWithFunction"},
    // The schema does not compile, or finds a valid message not valid, without a word of memory.
    {"wrong", "xmlSchemaNewDocParserCtxt > xmlDictCreate"},
    {"wrong", "xmlSchemaParse > xmlAutomataNewTransition2"},
    {"wrong", "xmlSchemaParse > xmlDictLookup"},
    {"wrong", "xmlSchemaParse > xmlHashAddEntry3"},
    {"wrong", "xmlSchemaParse > xmlHashCreateDict"},
    {"wrong", "xmlSchemaParse > xmlNewAutomata"},
    {"wrong", "xmlSchemaParse > xmlSchemaParse"},
    {"wrong", "xmlSchemaParse > xmlSchemaValPredefTypeNodeNoNorm"},
    {"wrong", "xmlSchemaValPredefTypeNodeNoNorm > xmlDictLookup"},
    {"wrong", "xmlSchemaValPredefTypeNodeNoNorm > xmlSchemaValPredefTypeNodeNoNorm"},
    // The schema lacks the type of an element, and a message that is not valid is found valid.
    {"accepted", "xmlSchemaParse > xmlDictLookup"},
};

}  // namespace stress
