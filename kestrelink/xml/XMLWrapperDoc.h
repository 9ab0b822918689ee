#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "kestrelink/platform/Export.h"
#include "kestrelink/platform/SharedBytes.h"
#include "kestrelink/xml/ErrorInfo.h"
#include "kestrelink/xml/XMLWrapperElement.h"

namespace kestrelink {

/// An XML document: parsed from bytes, or built around an element to be written. The base of every
/// SAML message.
///
///     std::optional<ErrorInfo> error;
///     auto doc = XMLWrapperDoc::initWithData(bytes, nullptr, &error);
///     if (doc) std::puts(doc->xmlString()->c_str());
///
/// Ownership: a parsed document owns its libxml2 tree. Its elements may outlive it (see
/// `XMLWrapperElement`); the raw handles may not.
///
/// Threads: a document and its elements are used by one thread at a time; different documents are
/// independent.
class KESTRELINK_EXPORT XMLWrapperDoc {
 protected:
  /// Only this class and those derived from it make documents.
  struct Making {};

 public:
  /// Parses the bytes in recovery mode: malformed text still yields a document when libxml2 can
  /// make a tree of it. With schema bytes the tree is then validated. Null with
  /// - `kXMLWrapperErrorNoTree`: no tree results, or parsing would take too much time or memory
  ///   (the bounds are in docs/security.md);
  /// - `kXMLWrapperErrorNotValid`: the document is not valid;
  /// - no error: the document has no root element and there is no schema.
  [[nodiscard]] static std::shared_ptr<XMLWrapperDoc> initWithData(SharedBytes data,
                                                                   SharedBytes schema,
                                                                   ErrorOut error = nullptr);

  /// Wraps an element made in memory. Cannot fail.
  [[nodiscard]] static std::shared_ptr<XMLWrapperDoc> initWithElement(
      std::shared_ptr<XMLWrapperElement> element, SharedBytes schema, ErrorOut error = nullptr);

  explicit XMLWrapperDoc(Making);
  virtual ~XMLWrapperDoc();
  XMLWrapperDoc(const XMLWrapperDoc&) = delete;
  XMLWrapperDoc& operator=(const XMLWrapperDoc&) = delete;

  /// Parses `xmlData` again, and validates it when there are schema bytes. False with the errors of
  /// `initWithData`. Elements of an earlier parse then behave as if their document were destroyed.
  [[nodiscard]] bool createDocument(ErrorOut error = nullptr);
  /// The same without validation.
  [[nodiscard]] bool setXMLDoc(ErrorOut error = nullptr);
  /// Builds the element tree of the parsed document; null without an error when it has no root.
  [[nodiscard]] std::shared_ptr<XMLWrapperElement> createDocumentElement(ErrorOut error = nullptr);

  /// A new libxml2 document of the current element tree; null with `kXMLWrapperErrorNotWritten`
  /// when the tree cannot be written.
  [[nodiscard]] SharedXmlDoc docNode(ErrorOut error = nullptr) const;
  /// The element tree as indented XML text, without an XML declaration; `std::nullopt` with
  /// `kXMLWrapperErrorNotWritten` when the tree cannot be written. When the text is returned
  /// without an attribute or a namespace, the error is `kXMLWrapperErrorAttributeNotWritten` or
  /// `kXMLWrapperErrorNamespaceNotWritten`.
  [[nodiscard]] std::optional<std::string> xmlString(ErrorOut error = nullptr) const;

  /// Registers a prefix for XPath; does nothing in a document built around an element.
  void setNamespace(const XMLWrapperNamespace& ns);
  /// Always null: a document keeps no namespaces of its own.
  const NamespaceMap* namespaces() const;

  /// The nodes that the XPath 1.0 expression selects, each as a new element; the root element is
  /// the context. `std::nullopt` with one of the `kXMLWrapperErrorXPath...` codes; without an error
  /// in a document that was not parsed.
  std::optional<XMLWrapperElement::List> getResultsByXpathQuery(std::string_view xpath,
                                                                ErrorOut error = nullptr) const;
  /// The first of these elements, or null.
  std::shared_ptr<XMLWrapperElement> firstResultByXpathQuery(std::string_view xpath,
                                                             ErrorOut error = nullptr) const;

  const SharedBytes& xmlData() const;
  void setXmlData(SharedBytes data);
  const SharedBytes& schemaData() const;
  void setSchemaData(SharedBytes data);
  /// The root of the element tree.
  const std::shared_ptr<XMLWrapperElement>& documentElement() const;
  void setDocumentElement(std::shared_ptr<XMLWrapperElement> element);
  /// What evaluates XPath. `XMLWrapperQuery` has no public header: a client can only pass it on.
  const std::shared_ptr<XMLWrapperQuery>& query() const;
  void setQuery(std::shared_ptr<XMLWrapperQuery> query);

  /// The parse tree and its root, owned by the document; null when it was not parsed.
  _xmlDoc* docPtr() const;
  _xmlNode* nodePtr() const;

 protected:
  /// What `initWithData` and `initWithElement` do, for a new document of a derived class.
  bool startWithData(SharedBytes data, SharedBytes schema, ErrorOut error);
  void startWithElement(std::shared_ptr<XMLWrapperElement> element, SharedBytes schema);

 private:
  SharedXmlDoc doc_;
  _xmlNode* docNode_ = nullptr;
  SharedBytes xmlData_;
  SharedBytes schemaData_;
  std::shared_ptr<XMLWrapperElement> documentElement_;
  std::shared_ptr<XMLWrapperQuery> query_;
};

}  // namespace kestrelink
