// Creation of message documents, which differ in the class of their root element.
#pragma once

#include <memory>
#include <utility>

#include "kestrelink/saml/elements/SAMLElementClasses.h"
#include "kestrelink/saml/elements/SAMLErrors.h"
#include "kestrelink/xml/StoreError.h"
#include "kestrelink/xml/XMLWrapperDoc.h"

namespace kestrelink {

/// A friend of the message documents, with access to their private members.
template <class Message>
struct MessageDocument {
  /// The document parsed from the bytes, or null; its root is stored in `root`. When the root is
  /// not of that class, `root` stays null, with `kSAMLParserErrorWrongRoot`.
  template <class Root>
  static std::shared_ptr<Message> fromData(SharedBytes data, SharedBytes schema,
                                           std::shared_ptr<Root> Message::*root, ErrorOut error) {
    registerSAMLElementClasses();
    auto message = std::make_shared<Message>(typename Message::Making());
    if (!message->startWithData(std::move(data), std::move(schema), error)) return nullptr;
    const auto& element = message->documentElement();
    (*message).*root = std::dynamic_pointer_cast<Root>(element);
    if (!((*message).*root)) {
      storeError(error, kSAMLParserErrorDomain, kSAMLParserErrorWrongRoot, kReceivedClassKey,
                 element->dynamicClass().name());
    }
    return message;
  }

  /// The document around a root element, which may be null.
  template <class Root>
  static std::shared_ptr<Message> fromElement(std::shared_ptr<Root> element, SharedBytes schema,
                                              std::shared_ptr<Root> Message::*root) {
    auto message = std::make_shared<Message>(typename Message::Making());
    (*message).*root = element;
    message->startWithElement(std::move(element), std::move(schema));
    return message;
  }
};

}  // namespace kestrelink
