// kestrelink-saml: reads and writes the SAML 2.0 messages with which a client signs a television
// subscriber in. Include this header; start at `SAMLParserController`.
//
// The library verifies no signature. Pass it only what has been verified.
#pragma once

#if __cplusplus < 202002L
#error "kestrelink-saml needs C++20: compile with -std=c++20, by GCC 11, Clang 14 or later"
#else

#include "kestrelink/saml/Describe.h"               // IWYU pragma: export
#include "kestrelink/saml/SAMLConstants.h"          // IWYU pragma: export
#include "kestrelink/saml/SAMLParserController.h"   // IWYU pragma: export
#include "kestrelink/saml/elements/SAMLEvidence.h"  // IWYU pragma: export
#include "kestrelink/saml/elements/SAMLKeyInfo.h"   // IWYU pragma: export

#endif
