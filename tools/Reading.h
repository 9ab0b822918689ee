#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/KestrelinkSAML.h"
#include "kestrelink/signin/Result.h"

namespace ksaml {

struct ReadOptions {
  bool cached = false;    // do not check the time window
  bool noSchema = false;  // do not validate
  std::vector<std::string> resources;
};

/// The result of reading one message.
struct Reading {
  std::string file;
  bool accepted = false;
  bool validated = false;                      // against the schema
  std::optional<kestrelink::ErrorInfo> error;  // a rejected message may have none
  /// Set for a rejected message too; null when the text yields no document, or one that is not
  /// valid.
  std::shared_ptr<kestrelink::SAMLResponse> response;
  /// Set when the message was verified: it decides `accepted`, and what it believes is `response`.
  std::optional<kestrelink::signin::Result> result;
};

/// Reads the XML text once and makes the controller's checks in the same order, so that a rejected
/// message can be shown too. A message in a SOAP 1.1 envelope is read as if it were alone.
Reading readMessage(kestrelink::SAMLParserController& controller, std::string_view text,
                    const ReadOptions& options);

/// Lets the verdict of the second library stand for that of the controller.
void believe(Reading& reading, kestrelink::signin::Result result);

/// The document of that message, validated unless `schema` is null; no other check is made. Null in
/// the cases of `SAMLResponse::initWithData`.
std::shared_ptr<kestrelink::SAMLResponse> responseFrom(
    const kestrelink::SAMLParserController& controller, std::string_view text,
    kestrelink::SharedBytes schema, kestrelink::ErrorOut error);

/// The audiences of the first assertion.
std::vector<std::string> audiencesOf(const kestrelink::SAMLResponse& response);

}  // namespace ksaml
