#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/elements/SAMLLogoutRequestElement.h"
#include "kestrelink/xml/XMLWrapperDoc.h"

namespace kestrelink {

/// A request to end the subscriber's session (SAML 2.0 core, section 3.7.1), to be filled in and
/// written.
///
///     auto request = controller.newLogoutRequest(&error);
///     request->setIssuer("https://tv.example");
///     request->requestElement()->setSessionIndex("s-1");
///
/// The next `xmlString` writes what was set. Without a `requestElement` setters do nothing and
/// getters return `std::nullopt`.
///
/// Threads: one thread at a time, like every document.
class KESTRELINK_EXPORT SAMLLogoutRequest : public XMLWrapperDoc {
 public:
  /// Parses the bytes as `XMLWrapperDoc::initWithData` does. When the root is another element, the
  /// document is returned with `kSAMLParserErrorWrongRoot` and without a `requestElement`.
  [[nodiscard]] static std::shared_ptr<SAMLLogoutRequest> initWithData(SharedBytes data,
                                                                       SharedBytes schema,
                                                                       ErrorOut error = nullptr);
  /// Wraps a request element, which may be null. Cannot fail.
  [[nodiscard]] static std::shared_ptr<SAMLLogoutRequest> initWithElement(
      std::shared_ptr<SAMLLogoutRequestElement> element, SharedBytes schema,
      ErrorOut error = nullptr);

  explicit SAMLLogoutRequest(Making);
  ~SAMLLogoutRequest() override;

  /// The request element, for operations not forwarded here; null when the root is another element.
  const std::shared_ptr<SAMLLogoutRequestElement>& requestElement() const;
  void setRequestElement(std::shared_ptr<SAMLLogoutRequestElement> element);

  std::optional<std::string> issuer() const;
  void setIssuer(std::string_view issuer);
  std::optional<std::string> reason() const;
  void setReason(std::string_view reason);
  std::optional<SAMLDate> notOnOrAfter() const;
  void setNotOnOrAfter(std::optional<SAMLDate> date);

 private:
  std::shared_ptr<SAMLLogoutRequestElement> requestElement_;
};

}  // namespace kestrelink
