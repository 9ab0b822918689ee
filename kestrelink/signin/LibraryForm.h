// Gives a verified response the form that the first library reads.
#pragma once

#include <string>

#include <libxml/tree.h>

#include "kestrelink/saml/elements/SAMLDate.h"
#include "kestrelink/signin/Policy.h"

namespace kestrelink::signin {

/// The response as XML text. The first library reads dates in whole seconds of UTC alone, and takes
/// an authentication without "SessionNotOnOrAfter" for one that has expired. So
///
/// - a date with a fraction of a second or an offset becomes one in whole seconds of UTC: the start
///   of a time window is rounded up, every other date down, so that nothing lasts longer than what
///   was signed;
/// - an authentication statement without "SessionNotOnOrAfter" gets one, `now` and
///   `Policy::sessionWithoutEnd`, when the policy has that.
///
/// Nothing else is changed. Refused: `malformedDate`. Changes the document.
std::string inLibraryForm(xmlDoc* verified, const Policy& policy, SAMLDate now);

}  // namespace kestrelink::signin
