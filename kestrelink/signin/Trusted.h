// What the provider signed of a message.
#pragma once

#include "kestrelink/signin/Bindings.h"
#include "kestrelink/signin/Client.h"
#include "kestrelink/signin/Policy.h"
#include "kestrelink/signin/Provider.h"
#include "kestrelink/signin/XmlTree.h"

namespace kestrelink::signin {

/// The message's element in the document: the root, or the only element in the body of a SOAP
/// envelope.
xmlNode* messageIn(xmlDoc* document);

struct Trusted {
  /// A response or logout response made of signed bytes alone, decrypted; an unsigned response only
  /// when it has no assertion.
  Owned<xmlDoc> document;
  bool isSigned = false;
};

/// The part of a response or logout response that may be believed. `document` is `received.xml`,
/// parsed; it is changed.
///
/// - A signed response, or one that came in a signed URL: that response.
/// - An unsigned response with one signed assertion, encrypted or not: that assertion, in a new
///   response that takes nothing from the unsigned one.
/// - An unsigned response without assertions: that response, with `isSigned` false.
Trusted trusted(const Received& received, xmlDoc* document, const Client& client,
                const Provider& provider, const Policy& policy);

}  // namespace kestrelink::signin
