// The shortest client: client RESPONSE. The file holds XML text, as parseResponse takes it.
#include <kestrelink/standard/StandardReading.h>

#include <fstream>
#include <iostream>
#include <iterator>

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  std::ifstream file(argv[1]);
  const std::string text{std::istreambuf_iterator<char>(file), {}};

  const auto& controller = kestrelink::SAMLParserController::sharedInstance();
  std::optional<kestrelink::ErrorInfo> error;
  const auto response = controller.parseResponse(text, &error);
  if (!response) {
    std::cerr << "rejected: " << kestrelink::describe(error) << "\n";
    return 1;
  }
  if (!kestrelink::standard::isSignedIn(*response)) {
    std::cerr << "not signed in\n";
    return 1;
  }
  std::cout << "welcome, " << kestrelink::standard::subscriberOf(*response).value_or("subscriber")
            << "\n";
}
