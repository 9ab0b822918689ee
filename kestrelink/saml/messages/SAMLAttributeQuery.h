#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/elements/SAMLAttributeQueryElement.h"
#include "kestrelink/xml/XMLWrapperDoc.h"

namespace kestrelink {

/// A query for a subscriber's attributes (SAML 2.0 core, section 3.3.2.3), to be filled in and
/// written.
///
///     auto query = controller.newAttributeQuery("HARBOUR", &error);
///     query->setSubjectFromResponse(responseText);
///     query->addAttribute("HouseholdID");
///
/// The next `xmlString` writes what was set. Without a `requestElement` setters do nothing and
/// getters return `std::nullopt`.
///
/// Threads: one thread at a time, like every document.
class KESTRELINK_EXPORT SAMLAttributeQuery : public XMLWrapperDoc {
 public:
  /// Parses the bytes as `XMLWrapperDoc::initWithData` does. When the root is another element: null
  /// with `kSAMLParserErrorWrongRoot` when the caller passes `error`, and otherwise a document
  /// without a `requestElement`.
  [[nodiscard]] static std::shared_ptr<SAMLAttributeQuery> initWithData(SharedBytes data,
                                                                        SharedBytes schema,
                                                                        ErrorOut error = nullptr);
  /// Wraps a request element, which may be null. Cannot fail.
  [[nodiscard]] static std::shared_ptr<SAMLAttributeQuery> initWithElement(
      std::shared_ptr<SAMLAttributeQueryElement> element, SharedBytes schema,
      ErrorOut error = nullptr);

  explicit SAMLAttributeQuery(Making);
  ~SAMLAttributeQuery() override;

  /// The request element, for operations not forwarded here; null when the root is another element.
  const std::shared_ptr<SAMLAttributeQueryElement>& requestElement() const;
  void setRequestElement(std::shared_ptr<SAMLAttributeQueryElement> element);

  std::optional<std::string> channelId() const;
  /// Sets the subject to that of a response, given as XML text. The response is read without
  /// a schema and is not validated: give it one that `parseResponse` accepted. Does nothing when
  /// the text yields no subject; `standard::setSubjectFrom` says whether there was one.
  void setSubjectFromResponse(std::string_view response);
  /// Asks for the attribute of that name, and only for those values when there are any. Asking
  /// twice writes it twice.
  void addAttribute(std::string_view name);
  void addAttribute(std::string_view name, const std::vector<std::string>& values);

 private:
  std::shared_ptr<SAMLAttributeQueryElement> requestElement_;
  SharedBytes schemaData_;  // set only when the query was parsed
};

}  // namespace kestrelink
