#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace ksaml {

struct ReadOptions {
  bool cached = false;    // without the time window
  bool noSchema = false;  // without validation
  std::vector<std::string> resources;
};

/// What became of one message.
struct Reading {
  std::string file;
  bool accepted = false;
  bool validated = false;                      // against the schema
  std::optional<kestrelink::ErrorInfo> error;  // of a rejected message; it may have none
  /// The answers, of a rejected message too; null when the text yields no document.
  std::shared_ptr<kestrelink::SAMLResponse> response;
};

/// Hands the text to the controller, as a client would.
Reading readMessage(kestrelink::SAMLParserController& controller, std::string_view text,
                    const ReadOptions& options);

/// The name identifier of a subject under either spelling, or null.
std::shared_ptr<kestrelink::XMLWrapperElement> nameIdentifierOf(
    const kestrelink::SAMLSubject& subject);

/// The value of an attribute of that element, or absent.
std::optional<std::string> attributeText(const kestrelink::XMLWrapperElement& element,
                                         std::string_view name);

}  // namespace ksaml
