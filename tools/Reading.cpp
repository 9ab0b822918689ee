#include "Reading.h"

#include <utility>

#include "kestrelink/standard/StandardReading.h"

namespace ksaml {
namespace {

using kestrelink::ErrorInfo;
using kestrelink::SAMLResponse;
using kestrelink::SharedBytes;

// A SOAP 1.1 envelope with one SAML message in its body (SAML 2.0 bindings, section 3.2.2), or what
// else the protocol schema accepts as a root. The imports are found in the library's resource
// bundle.
constexpr const char* kEnvelopeSchema = R"(
<schema xmlns="http://www.w3.org/2001/XMLSchema"
    targetNamespace="http://schemas.xmlsoap.org/soap/envelope/" elementFormDefault="qualified">
  <import namespace="urn:oasis:names:tc:SAML:2.0:protocol"
      schemaLocation="saml-schema-protocol-2.0.xsd"/>
  <import namespace="urn:oasis:names:tc:SAML:2.0:assertion"
      schemaLocation="saml-schema-assertion-2.0.xsd"/>
  <element name="Envelope">
    <complexType>
      <sequence>
        <element name="Header" minOccurs="0">
          <complexType>
            <sequence>
              <any namespace="##any" processContents="skip" minOccurs="0" maxOccurs="unbounded"/>
            </sequence>
            <anyAttribute namespace="##any" processContents="skip"/>
          </complexType>
        </element>
        <element name="Body">
          <complexType>
            <sequence>
              <any processContents="strict" namespace="urn:oasis:names:tc:SAML:2.0:protocol
                  urn:oasis:names:tc:SAML:2.0:assertion"/>
            </sequence>
            <anyAttribute namespace="##any" processContents="skip"/>
          </complexType>
        </element>
      </sequence>
      <anyAttribute namespace="##any" processContents="skip"/>
    </complexType>
  </element>
</schema>)";

constexpr std::string_view kSoapNamespace = "http://schemas.xmlsoap.org/soap/envelope/";

bool isSoapEnvelope(const kestrelink::XMLWrapperElement& root) {
  return root.tagName() == "Envelope" && !root.namespaces().empty() &&
         root.namespaces().at(0)->href() == kSoapNamespace;
}

// Makes the message in the body the document's root. When that is not a response, stores the error
// that the controller stores for such a root.
void openEnvelope(SAMLResponse& response, kestrelink::ErrorOut error) {
  const auto body = response.documentElement()->firstElementByTagName("Body");
  if (!body || body->elements().empty()) return;
  const auto message = body->elements().front();
  response.setDocumentElement(message);
  response.setResponseElement(std::dynamic_pointer_cast<kestrelink::SAMLResponseElement>(message));
  error->reset();
  if (response.responseElement()) return;
  *error = ErrorInfo{
      std::string(kestrelink::SAMLParserErrorDomain),
      kestrelink::kSAMLParserErrorWrongRoot,
      {{std::string(kestrelink::kReceivedClassKey), std::string(message->dynamicClass().name())}}};
}

}  // namespace

std::shared_ptr<SAMLResponse> responseFrom(const kestrelink::SAMLParserController& controller,
                                           std::string_view text, SharedBytes schema,
                                           kestrelink::ErrorOut error) {
  SharedBytes bytes = controller.dataFromString(text, error);
  if (!bytes) return nullptr;
  if (schema) schema = std::make_shared<const std::string>(kEnvelopeSchema);
  auto response = SAMLResponse::initWithData(std::move(bytes), std::move(schema), error);
  if (response && isSoapEnvelope(*response->documentElement())) openEnvelope(*response, error);
  return response;
}

Reading readMessage(kestrelink::SAMLParserController& controller, std::string_view text,
                    const ReadOptions& options) {
  if (options.noSchema) controller.setSchemaData(nullptr);
  Reading reading;
  reading.validated = controller.schema() != nullptr;
  reading.response = responseFrom(controller, text, controller.schema(), &reading.error);
  // In the controller's order: each step may store an error, and the last one stored is kept.
  reading.accepted =
      reading.response &&
      (options.cached || reading.response->assertionMeetsConditions(&reading.error)) &&
      reading.response->isValid(&reading.error);
  if (reading.accepted) reading.error.reset();
  return reading;
}

void believe(Reading& reading, kestrelink::signin::Result result) {
  using kestrelink::signin::Verdict;
  reading.accepted = result.verdict == Verdict::signedIn || result.verdict == Verdict::answered ||
                     result.verdict == Verdict::loggedOut;
  reading.error.reset();
  if (result.response) reading.response = result.response;
  reading.result = std::move(result);
}

std::vector<std::string> audiencesOf(const SAMLResponse& response) {
  const auto assertions = kestrelink::standard::assertionsOf(response);
  if (assertions.empty()) return {};
  return kestrelink::standard::audiencesOf(*assertions.front());
}

}  // namespace ksaml
