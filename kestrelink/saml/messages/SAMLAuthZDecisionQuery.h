#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/elements/SAMLAuthZDecisionQueryElement.h"
#include "kestrelink/xml/XMLWrapperDoc.h"

namespace kestrelink {

template <class Message>
struct MessageDocument;

/// A query whether a subscriber may do something with a resource (SAML 2.0 core, section 3.3.2.4),
/// to be filled in and written.
///
///     auto query = controller.newAuthZQuery("https://tv.example/ch/1", "HARBOUR", &error);
///     query->setSubjectFromResponse(answer);
///     query->addAction(SAMLAuthZDecisionQueryActionPlay);
///
/// What is set here shows in the next `xmlString`. Without a `requestElement` setters do nothing
/// and getters answer absent.
///
/// Threads: one thread at a time, like every document.
class KESTRELINK_EXPORT SAMLAuthZDecisionQuery : public XMLWrapperDoc {
 public:
  /// Parses the bytes as `XMLWrapperDoc::initWithData` does. When the root is no such request, the
  /// document is returned all the same, with code 102 of `SAMLParserErrorDomain`: it has no
  /// `requestElement`.
  static std::shared_ptr<SAMLAuthZDecisionQuery> initWithData(SharedBytes data, SharedBytes schema,
                                                              ErrorOut error = nullptr);
  /// Wraps a request element, which may be null. Cannot fail.
  static std::shared_ptr<SAMLAuthZDecisionQuery> initWithElement(
      std::shared_ptr<SAMLAuthZDecisionQueryElement> element, SharedBytes schema,
      ErrorOut error = nullptr);

  explicit SAMLAuthZDecisionQuery(Making);
  ~SAMLAuthZDecisionQuery() override;

  /// The request, for what is not forwarded here; null when the root is none.
  const std::shared_ptr<SAMLAuthZDecisionQueryElement>& requestElement() const;
  void setRequestElement(std::shared_ptr<SAMLAuthZDecisionQueryElement> element);

  std::optional<std::string> channelId() const;
  /// Adds the subject of a response, given as XML text, to those there are. The response is read
  /// with the schema this document was made with. Nothing happens when the text yields no subject.
  void setSubjectFromResponse(std::string_view response);
  void addAction(std::string_view action);
  /// The resource's URL (SAML 2.0 core, section 3.3.2.4), written as it stands. A view without
  /// text, `std::string_view()`, is no URL: the attribute is written without a value.
  void setResource(std::string_view url);

 private:
  template <class Message>
  friend struct MessageDocument;

  std::shared_ptr<SAMLAuthZDecisionQueryElement> requestElement_;
};

}  // namespace kestrelink
