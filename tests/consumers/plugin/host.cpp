// A host that lets each plugin read a response, closes it, and then uses libxml2 itself.

#include <dlfcn.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include <libxml/parser.h>

int main(int argc, char** argv) {
  std::ifstream file(argv[1]);
  const std::string message{std::istreambuf_iterator<char>(file), {}};
  for (int plugin = 2; plugin < argc; ++plugin) {
    void* const opened = dlopen(argv[plugin], RTLD_NOW);
    void* const symbol = opened ? dlsym(opened, "readsValidated") : nullptr;
    const bool fine = symbol && reinterpret_cast<bool (*)(const char*)>(symbol)(message.c_str());
    if (!fine || dlclose(opened) != 0) {
      std::cout << "wrong: " << argv[plugin] << "\n";
      return 1;
    }
    // The library's entity loader is asked, and knows no such file.
    if (xmlReadFile(argv[1], nullptr, XML_PARSE_NOERROR) != nullptr) return 1;
  }
  std::cout << "fine\n";
}
