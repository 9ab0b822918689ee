#include <gtest/gtest.h>

#include "kestrelink/xml/libxml/OverfullTag.h"

namespace kestrelink::testing {
namespace {

TEST(OverfullTag, CountsTheAttributesOfRealTags) {
  const std::pair<std::string_view, bool> rows[] = {
      {"<r a='' b='' c=''/>", false},
      {"<r a='' b='' c='' d=''/>", true},
      {"<r\na = \"'\"\tb='\"' c='>' d=''></r>", true},
      {"<r a='' b='' c='' d='", false},  // libxml2 reads no value without an end
      {"<r a='' b='' c='' d=", false},
      {"<r>a='' b='' c='' d=''</r>", false},
      {"<r></r a='' b='' c='' d=''>", false},
      {"<r a=\"b='' c='' d='' e=''\"/>", false},
      {"<r><!-- <c a='' b='' c='' d=''/> --></r>", false},
      {"<r><![CDATA[<c a='' b='' c='' d=''/>]]></r>", false},
      {"<r><?i <c a='' b='' c='' d=''/>?></r>", false},
      {"<r><!-- --><c a='' b='' c='' d=''/></r>", true},
      {"<r><![CDATA[]]><?i ?><c a='' b='' c='' d=''/></r>", true},
      {"<r><!-- <c a='' b='' c='' d=''/> --><c a='' b='' c='' d=''/></r>", true},
      // libxml2 stops reading attributes at the first that is damaged.
      {"<r a=''b='' c='' d='' e=''/>", false},
      {"<r a='' b='' c d='' e='' f=''/>", false},
      {"<r a='' b='' c='' &d='' e=''/>", false},
      // It ends a damaged section early, and may take the rest for tags.
      {"<r><!-- \1 <c a='' b='' c='' d=''/> --></r>", true},
      {"<r><![CDATA[ \xFF <c a='' b='' c='' d=''/>]]></r>", true},
      {"<r><?1 <c a='' b='' c='' d=''/>?></r>", true},
      {"<r><!-- <c a='' b='' c='' d=''/></r>", true},
      {"<r><!-- \1 --><!-- <c a='' b='' c='' d=''/> --></r>", true},
  };
  for (const auto& [message, expected] : rows) {
    EXPECT_EQ(hasTagWithMoreAttributes(message, 3), expected) << message;
  }
}

}  // namespace
}  // namespace kestrelink::testing
