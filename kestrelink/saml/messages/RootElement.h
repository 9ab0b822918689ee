#pragma once

#include <memory>

#include "kestrelink/saml/elements/SAMLErrors.h"
#include "kestrelink/xml/StoreError.h"
#include "kestrelink/xml/XMLWrapperDoc.h"

namespace kestrelink {

/// The root of a parsed message, if it is of that class; else null with
/// `kSAMLParserErrorWrongRoot`.
template <class Root>
std::shared_ptr<Root> rootElement(const XMLWrapperDoc& message, ErrorOut error) {
  const auto& element = message.documentElement();
  auto root = std::dynamic_pointer_cast<Root>(element);
  if (!root) {
    storeError(error, SAMLParserErrorDomain, kSAMLParserErrorWrongRoot, kReceivedClassKey,
               element->dynamicClass().name());
  }
  return root;
}

}  // namespace kestrelink
