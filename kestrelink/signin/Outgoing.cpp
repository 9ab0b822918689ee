#include "kestrelink/signin/Outgoing.h"

#include <algorithm>

#include "kestrelink/signin/Encoding.h"
#include "kestrelink/signin/Refusal.h"
#include "kestrelink/signin/Signature.h"
#include "kestrelink/signin/XmlTree.h"

namespace kestrelink::signin {
namespace {

void requireRelayState(std::string_view relayState) {
  require(relayState.size() <= 80, Reason::notConfigured,
          "the relay state has more than 80 bytes (SAML 2.0 bindings, section 3.4.3)");
}

void requireUrl(const std::string& endpoint) {
  if (isWebUrl(endpoint)) return;
  refuse(Reason::notConfigured, "the endpoint is no http or https URL: " + quoted(endpoint));
}

std::string escapedForHtml(std::string_view text) {
  std::string escaped;
  for (const char each : text) {
    const bool isPlain = std::string_view("&<>\"'").find(each) == std::string_view::npos;
    escaped += isPlain ? std::string(1, each) : "&#" + std::to_string(each) + ";";
  }
  return escaped;
}

std::string hiddenInput(const char* name, std::string_view value) {
  return std::string("<input type=\"hidden\" name=\"") + name + "\" value=\"" +
         escapedForHtml(value) + "\">\n";
}

std::string_view withoutDeclaration(std::string_view xml) {
  if (!xml.starts_with("<?xml ")) return xml;
  xml.remove_prefix(std::min(xml.find("?>") + 2, xml.size()));
  xml.remove_prefix(std::min(xml.find('<'), xml.size()));
  return xml;
}

}  // namespace

// A browser runs the script in a "javascript:" URL, and a line feed ends a header of HTTP.
bool isWebUrl(std::string_view url) {
  const auto isPart = [](unsigned char each) { return each > ' ' && each != 0x7F; };
  return (url.starts_with("https://") || url.starts_with("http://")) &&
         std::all_of(url.begin(), url.end(), isPart);
}

std::string redirectUrl(const std::string& endpoint, std::string_view request,
                        std::string_view relayState, const std::string& keyPem) {
  requireUrl(endpoint);
  requireRelayState(relayState);
  std::string query = "SAMLRequest=" + toUrlText(toBase64(deflated(request)));
  if (!relayState.empty()) query += "&RelayState=" + toUrlText(relayState);
  if (!keyPem.empty()) {
    query += "&SigAlg=" + toUrlText(signatureAlgorithmOf(keyPem));
    query += "&Signature=" + toUrlText(toBase64(signatureOver(query, keyPem)));
  }
  const std::size_t fragment = std::min(endpoint.find('#'), endpoint.size());
  const std::string base = endpoint.substr(0, fragment);
  return base + (base.find('?') == std::string::npos ? "?" : "&") + query +
         endpoint.substr(fragment);
}

std::string postForm(const std::string& endpoint, std::string_view request,
                     std::string_view relayState) {
  requireUrl(endpoint);
  requireRelayState(relayState);
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head><meta "
         "charset=\"utf-8\"><title>Continue</title>"
         "</head>\n<body onload=\"document.forms[0].submit()\">\n<form method=\"post\" action=\"" +
         escapedForHtml(endpoint) + "\">\n" + hiddenInput("SAMLRequest", toBase64(request)) +
         (relayState.empty() ? "" : hiddenInput("RelayState", relayState)) +
         "<noscript><button "
         "type=\"submit\">Continue</button></noscript>\n</form>\n</body>\n</html>\n";
}

std::string soapEnvelope(std::string_view request) {
  return "<soap:Envelope xmlns:soap=\"" + std::string(kSoap) + "\">\n<soap:Body>\n" +
         std::string(withoutDeclaration(request)) + "\n</soap:Body>\n</soap:Envelope>\n";
}

}  // namespace kestrelink::signin
