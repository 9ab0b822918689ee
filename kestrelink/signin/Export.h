// Which symbols the library kestrelink-saml-signin exports: its ABI.
#pragma once

#if defined(__GNUC__)
#define KESTRELINK_SIGNIN_EXPORT __attribute__((visibility("default")))
#else
#define KESTRELINK_SIGNIN_EXPORT
#endif
