// How messages come in and go out.

#include "kestrelink/signin/Bindings.h"
#include "kestrelink/signin/Encoding.h"

#include "tests/support/Support.h"

namespace kestrelink::signin {
namespace {

std::string described(const Received& received) {
  std::string text = received.xml;
  if (!received.relayState.empty()) text += " relay state '" + received.relayState + "'";
  if (const auto& signature = received.signature) {
    text += "\nsigned " + signature->octets + " with " + signature->algorithm + ": '" +
            signature->value + "'";
  }
  return text;
}

TEST(SignInBindings, GoldenIncoming) {
  testing::expectCases("tests/signin/cases/incoming.txt", [](const std::string& line) {
    Policy policy;
    policy.mostBytes = 300;
    std::string reason;
    const auto received = decode(line, reason, policy);
    return received ? described(*received) : reason;
  });
}

TEST(SignInBindings, GoldenOutgoing) {
  const std::string request = "<?xml version=\"1.0\"?>\n<r/>";
  testing::expectCases("tests/signin/cases/outgoing.txt", [&](const std::string& line) {
    const auto parts = testing::split(line + " |  | ", " | ");
    const Binding binding = parts[0] == "redirect" ? Binding::redirect
                            : parts[0] == "post"   ? Binding::post
                                                   : Binding::soap;
    std::string reason;
    return encode(request, {{binding, parts[1]}, parts[2]}, reason).value_or(reason);
  });
}

// Each side of the limit, as it comes in and inflated; and every byte survives.
TEST(SignInBindings, Limits) {
  const std::string xml = "<r>" + std::string(100'000, 'x') + "</r>";
  const std::string packed = toBase64(deflated(xml));
  for (const auto& [carried, shortest] :
       {std::pair{xml, xml.size()}, std::pair{toBase64(xml), toBase64(xml).size()},
        std::pair{packed, xml.size()}}) {
    std::string reason;
    Policy policy;
    policy.mostBytes = shortest;
    const auto received = decode(carried, reason, policy);
    EXPECT_TRUE(received && received->xml == xml) << reason;
    --policy.mostBytes;
    EXPECT_FALSE(decode(carried, reason, policy));
    EXPECT_NE(reason.find("bytes"), std::string::npos) << reason;
  }
  std::string every;
  for (int byte = 0; byte < 256; ++byte) {
    every += static_cast<char>(byte);
    EXPECT_EQ(fromBase64(toBase64(every)), every);
    EXPECT_EQ(fromUrlText(toUrlText(every)), every);
    EXPECT_EQ(inflated(deflated(every), every.size()), every);
  }
}

}  // namespace
}  // namespace kestrelink::signin
