// The highest use of each allowance of MessageCost over the files given: how many times a message
// may cost what the dearest of them does, with and without what any message may cost; and its file.
#include <cstdio>

#include "kestrelink/xml/libxml/BoundedParse.h"

#include "tests/support/Attack.h"

using kestrelink::MessageCost;

int main(int count, char** files) {
  for (std::size_t kind = 0; kind < MessageCost::kKinds; ++kind) {
    const MessageCost::Allowance& allowance = MessageCost::kAllowances[kind];
    double share = 0, perByte = 0;
    const char* file = "none";
    for (int index = 1; index < count; ++index) {
      const std::string bytes = fuzz::contentOf(files[index]);
      MessageCost cost(bytes.size());
      kestrelink::boundedParse(bytes, cost);
      const auto each = static_cast<MessageCost::Kind>(kind);
      const auto spent = static_cast<double>(cost.spent(each));
      perByte = std::max(perByte, spent / static_cast<double>(bytes.size()));
      if (spent <= share * static_cast<double>(cost.allowed(each))) continue;
      share = spent / static_cast<double>(cost.allowed(each));
      file = files[index];
    }
    std::printf("%-52s %10.1f %10.1f  %s\n", allowance.of, 1 / share,
                static_cast<double>(allowance.perByte) / perByte, file);
  }
}
