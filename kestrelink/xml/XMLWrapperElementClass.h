#pragma once

#include <memory>
#include <string_view>

#include "kestrelink/platform/Export.h"

namespace kestrelink {

class XMLWrapperElement;

/// An element class as a value: its name and a function that makes an instance. There is one object
/// for each class, so classes compare by address.
class XMLWrapperElementClass {
 public:
  using Maker = std::shared_ptr<XMLWrapperElement> (*)();

  constexpr XMLWrapperElementClass(std::string_view name, Maker maker)
      : name_(name), maker_(maker) {}
  XMLWrapperElementClass(const XMLWrapperElementClass&) = delete;
  XMLWrapperElementClass& operator=(const XMLWrapperElementClass&) = delete;

  std::string_view name() const { return name_; }
  /// A new instance; its `dynamicClass` is this.
  std::shared_ptr<XMLWrapperElement> makeInstance() const;  // inline in XMLWrapperElement.h

 private:
  std::string_view name_;
  Maker maker_;
};

/// Makes an instance of a default-constructible class.
template <class Element>
std::shared_ptr<XMLWrapperElement> makeElementInstance() {
  return std::make_shared<Element>();
}

}  // namespace kestrelink
