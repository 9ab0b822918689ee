#include "kestrelink/signin/LibraryForm.h"

#include "kestrelink/signin/Dates.h"
#include "kestrelink/signin/XmlTree.h"

namespace kestrelink::signin {
namespace {

void mendDate(xmlNode* element, const char* name, Rounding rounding) {
  if (!hasAttribute(element, name)) return;
  const std::string text = attribute(element, name);
  const auto date = dateFromText(text, rounding);
  if (!date) refuse(Reason::malformedDate, std::string(name) + " " + quoted(text) + " is no date");
  const std::string mended = textOf(*date);
  if (mended != text) xmlSetNsProp(element, nullptr, xmlText(name), xmlText(mended));
}

void mendWindow(xmlNode* element) {
  mendDate(element, "NotBefore", Rounding::up);
  mendDate(element, "NotOnOrAfter", Rounding::down);
}

void mendSubject(xmlNode* assertion) {
  for (xmlNode* subject : children(assertion, kAssertion, "Subject")) {
    for (xmlNode* confirmation : children(subject, kAssertion, "SubjectConfirmation")) {
      for (xmlNode* data : children(confirmation, kAssertion, "SubjectConfirmationData")) {
        mendWindow(data);
      }
    }
  }
}

void mendStatement(xmlNode* statement, const Policy& policy, SAMLDate now) {
  constexpr const char* kSessionEnd = "SessionNotOnOrAfter";
  mendDate(statement, "AuthnInstant", Rounding::down);
  mendDate(statement, kSessionEnd, Rounding::down);
  if (!policy.sessionWithoutEnd || hasAttribute(statement, kSessionEnd)) return;
  const std::string end = textOf(SAMLDate(now.seconds() + *policy.sessionWithoutEnd));
  xmlSetNsProp(statement, nullptr, xmlText(kSessionEnd), xmlText(end));
}

}  // namespace

std::string inLibraryForm(xmlDoc* verified, const Policy& policy, SAMLDate now) {
  xmlNode* const root = xmlDocGetRootElement(verified);
  mendDate(root, "IssueInstant", Rounding::down);
  for (xmlNode* assertion : children(root, kAssertion, "Assertion")) {
    mendDate(assertion, "IssueInstant", Rounding::down);
    mendSubject(assertion);
    for (xmlNode* conditions : children(assertion, kAssertion, "Conditions")) {
      mendWindow(conditions);
    }
    for (xmlNode* statement : children(assertion, kAssertion, "AuthnStatement")) {
      mendStatement(statement, policy, now);
    }
  }
  return written(verified);
}

}  // namespace kestrelink::signin
