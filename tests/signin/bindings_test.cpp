// How messages come in and go out.

#include "kestrelink/signin/Bindings.h"
#include "kestrelink/signin/Encoding.h"
#include "kestrelink/signin/Outgoing.h"
#include "kestrelink/signin/Refusal.h"

#include "tests/support/Support.h"

namespace kestrelink::signin {
namespace {

std::string described(const Received& received) {
  constexpr const char* kBindings[] = {"redirect", "post", "soap"};
  std::string text = kBindings[static_cast<int>(received.binding)] + (" " + received.xml);
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
    const auto parts = testing::split(line + " | ", " | ");
    try {
      if (parts[0] == "redirect") return redirectUrl(parts[1], request, parts[2], "");
      if (parts[0] == "post") return postForm(parts[1], request, parts[2]);
      return soapEnvelope(request);
    } catch (const Refusal& refusal) {
      return std::string(refusal.what());
    }
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
