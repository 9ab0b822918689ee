// Makes the four requests in the form that the standard's schema accepts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/signin/Client.h"
#include "kestrelink/signin/Provider.h"
#include "kestrelink/signin/SignIn.h"

namespace kestrelink::signin {

struct Request {
  std::string id;
  std::string xml;  // unsigned
};

/// All are refused with `notConfigured` when what they are given makes no valid request.
Request signInRequest(const Client& client, const std::string& destination, const Wishes& wishes);
Request logoutRequest(const Client& client, const std::string& destination, const Session& session);
Request attributeQuery(const std::string& issuer, const std::string& destination,
                       const Session& session, const std::vector<std::string>& names);
Request decisionQuery(const std::string& issuer, const std::string& destination,
                      const Session& session, const SignIn::Question& question);

}  // namespace kestrelink::signin
