// What a host must not notice: its standard streams and its process are as they were.

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <locale>
#include <sstream>

#include <libxml/parser.h>
#include <libxml/xmlsave.h>

#include "Support.h"

extern char** environ;

namespace kestrelink::testing {
namespace {

// All tests run under the environment's locale, as in a host that asks for it.
[[maybe_unused]] const bool kLocalized = [] {
  const bool known = std::setlocale(LC_ALL, "") != nullptr;
  if (known) std::locale::global(std::locale(""));
  return known;
}();

TEST(Host, TheEnvironmentsLocaleAndTimeZoneAreReallyThere) {
  const char* const locale = std::getenv("LC_ALL");
  const std::string_view point = locale && std::string_view(locale).starts_with("de") ? "," : ".";
  EXPECT_EQ(std::localeconv()->decimal_point, point);
  const char* const zone = std::getenv("KESTRELINK_TEST_OFFSET");
  ::tzset();
  EXPECT_TRUE(zone == nullptr || std::to_string(::timezone) == zone);
}

void hostsGeneric(void* /*context*/, const char* /*format*/, ...) {}
void hostsStructured(void* /*context*/, xmlErrorPtr /*error*/) {}

// Everything of the process that a library could disturb, as text.
std::string processState() {
  std::ostringstream state;
  state << std::setlocale(LC_ALL, nullptr) << std::locale().name() << ::tzname[0] << ::tzname[1]
        << ::timezone << ::daylight << std::filesystem::current_path();
  for (char** variable = environ; *variable != nullptr; ++variable) state << *variable << "\n";
  const mode_t mask = ::umask(0);
  ::umask(mask);
  state << mask;
  sigset_t blocked;
  pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action {};
    ::sigaction(number, nullptr, &action);
    state << " " << sigismember(&blocked, number) << action.sa_flags
          << reinterpret_cast<void*>(action.sa_handler);
  }
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    std::error_code closed;
    const auto file =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), closed);
    if (!closed) state << "\n" << descriptor << file;
  }
  state << "\n"
        << reinterpret_cast<void*>(xmlGenericError) << xmlGenericErrorContext
        << reinterpret_cast<void*>(xmlStructuredError) << xmlStructuredErrorContext
        << xmlKeepBlanksDefaultValue << xmlGetWarningsDefaultValue << xmlLineNumbersDefaultValue
        << xmlLoadExtDtdDefaultValue << xmlPedanticParserDefaultValue << xmlParserDebugEntities
        << xmlSubstituteEntitiesDefaultValue << xmlDoValidityCheckingDefaultValue
        << xmlIndentTreeOutput << xmlSaveNoEmptyTags << xmlBufferAllocScheme
        << reinterpret_cast<void*>(xmlMalloc) << reinterpret_cast<void*>(xmlFree);
  return state.str();
}

void useEverything() {
  const auto& controller = SAMLParserController::sharedInstance();
  std::ifstream file(SOURCE_DIR "/examples/answer.xml");
  const std::string good{std::istreambuf_iterator<char>(file), {}};
  std::vector<std::string> texts = {
      good,
      "",
      "MARKER",
      "MARKER\xFF",
      "<MARKER",
      "<a>&MARKER;",
      "<a MARKER=MARKER b='MARKER",
      "<a b='&MARKER;' b='MARKER'/><!-- MARKER -- --><?MARKER",
      "<?xml version='MARKER'?><a/>",
      "<?xml version='1.0' encoding='MARKER'?><a/>",
      "<MARKER:a xmlns:b='MARKER :/'/></MARKER>",
      "<!DOCTYPE MARKER SYSTEM '/MARKER' [<!ENTITY MARKER SYSTEM 'http://MARKER'><!ELEMENT MARKER>"
      "<!ATTLIST MARKER MARKER MARKER #MARKER>%MARKER;]><a>&MARKER;]]>MARKER</a>MARKER",
      "<!DOCTYPE a [<!ENTITY MARKER 'MARKER&b;'><!ENTITY b '&MARKER;'>]><a b='&b;'>&MARKER;</a>",
      "<a xmlns:x='http://www.w3.org/2001/XMLSchema-instance' x:schemaLocation='MARKER MARKER'/>"};
  for (const auto what : {"saml:Subject", "_4c1d7a52e0f94b7f8d3f", "2096-01", "transient"}) {
    texts.push_back(good);
    texts.back().replace(good.find(what), std::string_view(what).size(), "MARKER");
  }
  const auto query = controller.newAttributeQuery("MARKER\x01");
  for (const std::string& text : texts) {
    std::optional<ErrorInfo> error;
    controller.parseResponse(text, &error);
    controller.parseCachedResponse(text);
    query->setSubjectFromResponse(text);
    if (const auto doc = XMLWrapperDoc::initWithData(bytes(text), nullptr)) {
      doc->getResultsByXpathQuery("//MARKER:MARKER[", &error);
      doc->documentElement()->getResultsByXpathQuery("MARKER()");
      doc->documentElement()->addChildElement(XMLWrapperElement::initWithTagName("<MARKER>"));
      doc->documentElement()->addChildElement(doc->documentElement());
      doc->documentElement()->setAttributeWithName("MARKER ", "MARKER\xFF");
      doc->xmlString(&error);
    }
  }
  query->xmlString();
  controller.newAuthNRequest("MARKER")->xmlString();
  controller.newAuthZQuery("MARKER :", "C")->xmlString();
  controller.newLogoutRequest()->xmlString();
}

TEST(Host, NoticesNothingButTheLogAndTheEntityLoader) {
  logDiagnostic("opens the connection to syslog");
  xmlSetGenericErrorFunc(&environ, &hostsGeneric);
  xmlSetStructuredErrorFunc(&environ, &hostsStructured);
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  const std::string before = processState();
  useEverything();
  const std::string after = processState();
  std::istringstream log(::testing::internal::GetCapturedStderr());
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  xmlSetGenericErrorFunc(nullptr, nullptr);
  xmlSetStructuredErrorFunc(nullptr, nullptr);
  EXPECT_EQ(after, before);
  int lines = 0;
  for (std::string line; std::getline(log, line); ++lines) {
    EXPECT_TRUE(line.starts_with("kestrelink-saml: ")) << line;
    EXPECT_EQ(line.find("MARKER"), std::string::npos) << line;
  }
  EXPECT_GT(lines, 20);
}

}  // namespace
}  // namespace kestrelink::testing
