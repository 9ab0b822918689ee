#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/elements/SAMLAuthZDecisionQueryElement.h"
#include "kestrelink/xml/XMLWrapperDoc.h"

namespace kestrelink {

/// Asks whether a subscriber may do something with a resource (SAML 2.0 core, section 3.3.2.4); to
/// be filled in and written.
///
///     auto query = controller.newAuthZQuery("https://tv.example/ch/1", "HARBOUR", &error);
///     query->setSubjectFromResponse(responseText);
///     query->addAction(SAMLAuthZDecisionQueryActionPlay);
///
/// The next `xmlString` writes what was set. Without a `requestElement` setters do nothing and
/// getters return `std::nullopt`.
///
/// Threads: one thread at a time, like every document.
class KESTRELINK_EXPORT SAMLAuthZDecisionQuery : public XMLWrapperDoc {
 public:
  /// Parses the bytes as `XMLWrapperDoc::initWithData` does. When the root is another element, the
  /// document is returned with `kSAMLParserErrorWrongRoot` and without a `requestElement`.
  [[nodiscard]] static std::shared_ptr<SAMLAuthZDecisionQuery> initWithData(
      SharedBytes data, SharedBytes schema, ErrorOut error = nullptr);
  /// Wraps a request element, which may be null. Cannot fail.
  [[nodiscard]] static std::shared_ptr<SAMLAuthZDecisionQuery> initWithElement(
      std::shared_ptr<SAMLAuthZDecisionQueryElement> element, SharedBytes schema,
      ErrorOut error = nullptr);

  explicit SAMLAuthZDecisionQuery(Making);
  ~SAMLAuthZDecisionQuery() override;

  /// The request element, for operations not forwarded here; null when the root is another element.
  const std::shared_ptr<SAMLAuthZDecisionQueryElement>& requestElement() const;
  void setRequestElement(std::shared_ptr<SAMLAuthZDecisionQueryElement> element);

  std::optional<std::string> channelId() const;
  /// Adds the subject of a response, given as XML text; earlier subjects stay. The response is
  /// validated against this document's schema. Does nothing when the text yields no subject.
  void setSubjectFromResponse(std::string_view response);
  void addAction(std::string_view action);
  /// The resource's URL (SAML 2.0 core, section 3.3.2.4), written unchanged. For
  /// `std::string_view()`, whose data is null, the attribute has no value.
  void setResource(std::string_view url);

 private:
  std::shared_ptr<SAMLAuthZDecisionQueryElement> requestElement_;
};

}  // namespace kestrelink
