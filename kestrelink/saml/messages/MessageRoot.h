#pragma once

#include <memory>

#include "kestrelink/saml/elements/SAMLErrors.h"
#include "kestrelink/xml/StoreError.h"
#include "kestrelink/xml/XMLWrapperDoc.h"

namespace kestrelink {

/// The root of a parsed document as the message it should be; null with code 102 when it is none.
template <class Element>
std::shared_ptr<Element> messageRoot(const XMLWrapperDoc& doc, ErrorOut error) {
  auto root = std::dynamic_pointer_cast<Element>(doc.documentElement());
  if (!root) {
    storeError(error, kSAMLParserErrorDomain, kSAMLParserErrorWrongRoot, kReceivedClassKey,
               doc.documentElement()->dynamicClass().name());
  }
  return root;
}

}  // namespace kestrelink
