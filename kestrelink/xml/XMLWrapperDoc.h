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
/// Ownership: a parsed document owns its libxml2 tree. Its elements may outlive it and stay
/// readable (see `XMLWrapperElement`); the raw handles may not.
///
/// Threads: a document and its elements are used by one thread at a time; different documents are
/// independent.
class KESTRELINK_EXPORT XMLWrapperDoc {
 protected:
  /// Only this class and those derived from it make documents.
  struct Making {};

 public:
  /// Parses the bytes, in recovery mode: what is not well-formed still yields a document when
  /// libxml2 can make a tree of it. With schema bytes the tree is then validated. Null when no
  /// tree results or the message is made to cost libxml2 too much (code 200; the bounds are in
  /// docs/security.md), when it is not valid (code 100), both of "XMLWrapperErrorDomain", or when
  /// the tree has no root element (no error).
  static std::shared_ptr<XMLWrapperDoc> initWithData(SharedBytes data, SharedBytes schema,
                                                     ErrorOut error = nullptr);

  /// Wraps an element made in memory. Parses nothing and cannot fail.
  static std::shared_ptr<XMLWrapperDoc> initWithElement(std::shared_ptr<XMLWrapperElement> element,
                                                        SharedBytes schema,
                                                        ErrorOut error = nullptr);

  explicit XMLWrapperDoc(Making);
  virtual ~XMLWrapperDoc();
  XMLWrapperDoc(const XMLWrapperDoc&) = delete;
  XMLWrapperDoc& operator=(const XMLWrapperDoc&) = delete;

  /// Parses `xmlData` anew, and validates it when there are schema bytes. False with codes 200 and
  /// 100 as above. The elements of an earlier parse are as if their document were gone.
  bool createDocument(ErrorOut error = nullptr);
  /// The same without validating.
  bool setXMLDoc(ErrorOut error = nullptr);
  /// Builds the element tree of what was parsed; null, without an error, when it has no root.
  std::shared_ptr<XMLWrapperElement> createDocumentElement(ErrorOut error = nullptr);

  /// A new libxml2 document of the element tree as it is now; null with code 101 when the tree
  /// cannot be written.
  SharedXmlDoc docNode(ErrorOut error = nullptr) const;
  /// The element tree as indented XML text, without an XML declaration; absent with code 101 when
  /// the tree cannot be written. Codes 204 and 205 may stay when an attribute or a namespace could
  /// not be, though the rest was.
  std::optional<std::string> xmlString(ErrorOut error = nullptr) const;

  /// Makes a prefix known to XPath; nothing happens in a document built around an element.
  void setNamespace(const XMLWrapperNamespace& ns);
  /// Always null: a document keeps no namespaces of its own, they are known to XPath alone.
  const NamespaceMap* namespaces() const;

  /// What the XPath 1.0 expression selects, with the root element as context; each node comes as a
  /// new element. Absent with code 201, 300 or 301, and without an error in a document that was
  /// not parsed.
  std::optional<XMLWrapperElement::List> getResultsByXpathQuery(std::string_view xpath,
                                                                ErrorOut error = nullptr) const;
  /// The first of them, or null.
  std::shared_ptr<XMLWrapperElement> firstResultByXpathQuery(std::string_view xpath,
                                                             ErrorOut error = nullptr) const;

  const SharedBytes& xmlData() const;
  void setXmlData(SharedBytes data);
  const SharedBytes& schemaData() const;
  void setSchemaData(SharedBytes data);
  /// The top of the element tree.
  const std::shared_ptr<XMLWrapperElement>& documentElement() const;
  void setDocumentElement(std::shared_ptr<XMLWrapperElement> element);
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
