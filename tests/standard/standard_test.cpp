// What the headers of this folder return where there is nothing to read. The rest is in the golden
// cases of responses and requests.

#include "kestrelink/standard/StandardForms.h"

#include "tests/support/Support.h"

namespace kestrelink::standard {
namespace {

using namespace kestrelink::testing;

TEST(Standard, NothingIsFoundWhereNothingIs) {
  const auto message = read("<Other/>");
  EXPECT_EQ(shown(recipientOf(*message), inResponseTo(*message), destinationOf(*message),
                  decisionForResource(*message, "urn:1"), signedElements(*message)),
            "- - - - []");
  EXPECT_EQ(encryptedAssertions(*message) + unreadDates(*message).size(), 0u);
  EXPECT_EQ(elementFromText("no XML"), nullptr);
  const auto logout = SAMLParserController::sharedInstance().newLogoutRequest();
  EXPECT_FALSE(setNameIdFrom(*logout, *root<SAMLSubject>("<Subject/>")));
  const auto subject = root<SAMLSubject>("<Subject><NameID>n</NameID></Subject>");
  EXPECT_TRUE(setNameIdFrom(*logout, *subject));
  EXPECT_EQ(nameIdOf(*subject)->tagName(), "NameID") << "the response keeps its own";
}

}  // namespace
}  // namespace kestrelink::standard
