#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/elements/SAMLAttributeQueryElement.h"
#include "kestrelink/xml/XMLWrapperDoc.h"

namespace kestrelink {

template <class Message>
struct MessageDocument;

/// A query for a subscriber's attributes (SAML 2.0 core, section 3.3.2.3), to be filled in and
/// written.
///
///     auto query = controller.newAttributeQuery("HARBOUR", &error);
///     query->setSubjectFromResponse(answer);
///     query->addAttribute("HouseholdID");
///
/// What is set here shows in the next `xmlString`. Without a `requestElement` setters do nothing
/// and getters answer absent.
///
/// Threads: one thread at a time, like every document.
class KESTRELINK_EXPORT SAMLAttributeQuery : public XMLWrapperDoc {
 public:
  /// Parses the bytes as `XMLWrapperDoc::initWithData` does. When the root is no such request: null
  /// with code 102 of `SAMLParserErrorDomain` when the caller wants the error, and otherwise a
  /// document without a `requestElement`.
  static std::shared_ptr<SAMLAttributeQuery> initWithData(SharedBytes data, SharedBytes schema,
                                                          ErrorOut error = nullptr);
  /// Wraps a request element, which may be null. Cannot fail.
  static std::shared_ptr<SAMLAttributeQuery> initWithElement(
      std::shared_ptr<SAMLAttributeQueryElement> element, SharedBytes schema,
      ErrorOut error = nullptr);

  explicit SAMLAttributeQuery(Making);
  ~SAMLAttributeQuery() override;

  /// The request, for what is not forwarded here; null when the root is none.
  const std::shared_ptr<SAMLAttributeQueryElement>& requestElement() const;
  void setRequestElement(std::shared_ptr<SAMLAttributeQueryElement> element);

  std::optional<std::string> channelId() const;
  /// Makes the subject of a response, given as XML text, the query's subject. Nothing happens when
  /// the text yields no subject.
  void setSubjectFromResponse(std::string_view response);
  /// Asks for the attribute of that name, and for those values of it when there are any. Asking
  /// twice writes it twice.
  void addAttribute(std::string_view name);
  void addAttribute(std::string_view name, const std::vector<std::string>& values);

 private:
  template <class Message>
  friend struct MessageDocument;

  std::shared_ptr<SAMLAttributeQueryElement> requestElement_;
  SharedBytes schemaData_;  // set only when parsed: a request that is made reads without a schema
};

}  // namespace kestrelink
