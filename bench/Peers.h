// The library's authentication request, made and written with other libraries.
#pragma once

#include <string>

namespace bench {

std::string libxmlppRequest(const std::string& issuer);
std::string lassoRequest(const std::string& issuer);

}  // namespace bench
