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

// SAML 2.0 bindings, section 3.4.4.1.
std::string redirectUrl(const std::string& request, const Sending& sending) {
  std::string query = "SAMLRequest=" + toUrlText(toBase64(deflated(request)));
  if (!sending.relayState.empty()) query += "&RelayState=" + toUrlText(sending.relayState);
  if (!sending.signingKey.empty()) {
    query += "&SigAlg=" + toUrlText(signatureAlgorithmOf(sending.signingKey));
    query += "&Signature=" + toUrlText(toBase64(signatureOver(query, sending.signingKey)));
  }
  const std::string& url = sending.endpoint.url;
  const std::size_t fragment = std::min(url.find('#'), url.size());
  const std::string base = url.substr(0, fragment);
  return base + (base.find('?') == std::string::npos ? "?" : "&") + query + url.substr(fragment);
}

std::string postForm(std::string_view request, const Sending& sending) {
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head><meta "
         "charset=\"utf-8\"><title>Continue</title>"
         "</head>\n<body onload=\"document.forms[0].submit()\">\n<form method=\"post\" action=\"" +
         escapedForHtml(sending.endpoint.url) + "\">\n" +
         hiddenInput("SAMLRequest", toBase64(request)) +
         (sending.relayState.empty() ? "" : hiddenInput("RelayState", sending.relayState)) +
         "<noscript><button type=\"submit\">Continue</button></noscript>\n"
         "</form>\n</body>\n</html>";
}

std::string soapEnvelope(std::string_view request) {
  return "<soap:Envelope xmlns:soap=\"" + std::string(kSoap) + "\">\n<soap:Body>\n" +
         std::string(withoutDeclaration(request)) + "\n</soap:Body>\n</soap:Envelope>";
}

template <class Make>
std::optional<std::string> orReason(Make make, std::string& reason) {
  try {
    return quietly(make);
  } catch (const Refusal& refusal) {
    reason = refusal.what();
    return std::nullopt;
  }
}

}  // namespace

// A browser runs the script in a "javascript:" URL, and a line feed ends a header of HTTP.
bool isWebUrl(std::string_view url) {
  const auto isPart = [](unsigned char each) { return each > ' ' && each != 0x7F; };
  return (url.starts_with("https://") || url.starts_with("http://")) &&
         std::all_of(url.begin(), url.end(), isPart);
}

std::string packed(const std::string& request, const Sending& sending) {
  const Binding binding = sending.endpoint.binding;
  if (binding != Binding::soap) requireUrl(sending.endpoint.url);
  requireRelayState(sending.relayState);
  if (binding == Binding::redirect) return redirectUrl(request, sending);
  const std::string xml = sending.signingKey.empty() ? request
                                                     : withSignature(request, sending.signingKey,
                                                                     sending.signingCertificate);
  return binding == Binding::post ? postForm(xml, sending) : soapEnvelope(xml);
}

std::optional<std::string> encode(const std::string& request, const Sending& sending,
                                  std::string& reason) {
  return orReason([&] { return packed(request, sending); }, reason);
}

std::optional<std::string> signedRequest(const std::string& request, const std::string& keyPem,
                                         const std::string& certificatePem, std::string& reason) {
  return orReason([&] { return withSignature(request, keyPem, certificatePem); }, reason);
}

std::string formValue(std::string_view request) { return toBase64(request); }

}  // namespace kestrelink::signin
