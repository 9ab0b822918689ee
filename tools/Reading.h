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
  /// Of a rejected message too; null when the text yields no document, or one that is not valid.
  std::shared_ptr<kestrelink::SAMLResponse> response;
};

/// Reads the XML text once and judges it in the controller's order, so that a rejected message can
/// be shown too. A message in a SOAP 1.1 envelope is read as if it stood alone.
Reading readMessage(kestrelink::SAMLParserController& controller, std::string_view text,
                    const ReadOptions& options);

/// The document of that message, unjudged, read with the schema, or without one when it is null;
/// null as `SAMLResponse::initWithData`.
std::shared_ptr<kestrelink::SAMLResponse> responseFrom(
    const kestrelink::SAMLParserController& controller, std::string_view text,
    kestrelink::SharedBytes schema, kestrelink::ErrorOut error);

/// The audiences of the first assertion.
std::vector<std::string> audiencesOf(const kestrelink::SAMLResponse& response);

}  // namespace ksaml
