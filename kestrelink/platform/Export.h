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

/// An operation that is declared in a public header and not exported. A client that uses it gets a
/// compile error that says what to use instead, where the linker would report an undefined
/// reference. The library and its tests, which link it, define KESTRELINK_BUILDING.
#if !defined(KESTRELINK_BUILDING) && defined(__has_attribute)
#if __has_attribute(unavailable)
#define KESTRELINK_NOT_EXPORTED(instead) __attribute__((unavailable("not exported: " instead)))
#endif
#endif
#ifndef KESTRELINK_NOT_EXPORTED
#define KESTRELINK_NOT_EXPORTED(instead)
#endif

/// The same, for the static operations and constructors of element classes.
#define KESTRELINK_INTERNAL                                                      \
  KESTRELINK_NOT_EXPORTED(                                                       \
      "create elements with standard::newElement or standard::elementFromText, " \
      "tell their classes apart with std::dynamic_pointer_cast")
