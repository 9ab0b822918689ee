// Which symbols the shared library exports: its ABI.
#pragma once

#if defined(__GNUC__)
#define KESTRELINK_VISIBLE __attribute__((visibility("default")))
#else
#define KESTRELINK_VISIBLE
#endif

/// A class or constant that clients link against.
#define KESTRELINK_EXPORT KESTRELINK_VISIBLE

/// A class that clients only receive. They call its virtual operations through the object. The
/// library exports only its type information (cmake/exports.map), so that
/// `std::dynamic_pointer_cast` works across the library's boundary.
#define KESTRELINK_TYPE KESTRELINK_VISIBLE
