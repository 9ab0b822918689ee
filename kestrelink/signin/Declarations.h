#pragma once

#include <string>

#include "kestrelink/signin/XmlTree.h"

namespace kestrelink::signin {

/// The signed text with every namespace declaration that stood on the original's elements, and
/// those in scope around it, put back where it stood. Exclusive canonical form drops a declaration
/// whose prefix only a value uses, as in `xsi:type="xs:string"`, and the schema asks for it.
///
/// Element by element, `original` is what the text was made from; `signature` is the one that is
/// not in it, or null. The declarations are not signed. So the result is refused unless all names,
/// attributes and values in it are the signed ones.
Owned<xmlDoc> withDeclarations(const std::string& signedXml, xmlNode* original,
                               const xmlNode* signature);

}  // namespace kestrelink::signin
