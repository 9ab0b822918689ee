#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/elements/SAMLAuthNRequestElement.h"
#include "kestrelink/xml/XMLWrapperDoc.h"

namespace kestrelink {

/// An authentication request (SAML 2.0 core, section 3.4.1), to be filled in and written.
///
///     auto request = controller.newAuthNRequest("https://tv.example", &error);
///     request->setIsPassive(true);
///     send(request->xmlString());
///
/// The next `xmlString` writes what was set. Without a `requestElement` setters do nothing and
/// getters return `std::nullopt`.
///
/// Threads: one thread at a time, like every document.
class KESTRELINK_EXPORT SAMLAuthNRequest : public XMLWrapperDoc {
 public:
  /// Parses the bytes as `XMLWrapperDoc::initWithData` does. When the root is another element, the
  /// document is returned with `kSAMLParserErrorWrongRoot` and without a `requestElement`.
  [[nodiscard]] static std::shared_ptr<SAMLAuthNRequest> initWithData(SharedBytes data,
                                                                      SharedBytes schema,
                                                                      ErrorOut error = nullptr);
  /// Wraps a request element, which may be null. Cannot fail.
  [[nodiscard]] static std::shared_ptr<SAMLAuthNRequest> initWithElement(
      std::shared_ptr<SAMLAuthNRequestElement> element, SharedBytes schema,
      ErrorOut error = nullptr);

  explicit SAMLAuthNRequest(Making);
  ~SAMLAuthNRequest() override;

  /// The request element, for operations not forwarded here; null when the root is another element.
  const std::shared_ptr<SAMLAuthNRequestElement>& requestElement() const;
  void setRequestElement(std::shared_ptr<SAMLAuthNRequestElement> element);

  std::optional<std::string> issuer() const;
  void setIssuer(std::string_view issuer);
  void setIsPassive(bool passive);
  void setForceAuthN(bool force);
  /// Writes the attribute "ProviderID".
  void setProviderName(std::string_view name);
  /// Adds the subject of a response, given as XML text; earlier subjects stay. The response is read
  /// without a schema and is not validated: give it one that `parseResponse` accepted. Does nothing
  /// when the text yields no subject; `standard::setSubjectFrom` says whether there was one.
  void setSubjectFromResponse(std::string_view response);

 private:
  std::shared_ptr<SAMLAuthNRequestElement> requestElement_;
  SharedBytes schemaData_;  // set only when the request was parsed
};

}  // namespace kestrelink
