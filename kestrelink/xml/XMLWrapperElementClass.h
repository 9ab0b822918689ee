#pragma once

#include <memory>
#include <string_view>

namespace kestrelink {

class XMLWrapperElement;

/// An element class as a value: its name and a way to make an instance. There is one object for
/// each class, so classes compare by address.
class XMLWrapperElementClass {
 public:
  using Maker = std::shared_ptr<XMLWrapperElement> (*)();

  constexpr XMLWrapperElementClass(std::string_view name, Maker maker)
      : name_(name), maker_(maker) {}
  XMLWrapperElementClass(const XMLWrapperElementClass&) = delete;
  XMLWrapperElementClass& operator=(const XMLWrapperElementClass&) = delete;

  std::string_view name() const { return name_; }
  /// A new instance, which knows this as its class.
  std::shared_ptr<XMLWrapperElement> makeInstance() const;

 private:
  std::string_view name_;
  Maker maker_;
};

/// How to make an instance of a class with a constructor that takes nothing.
template <class Element>
std::shared_ptr<XMLWrapperElement> makeElementInstance() {
  return std::make_shared<Element>();
}

}  // namespace kestrelink
