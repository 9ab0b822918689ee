// What a host must not notice: its standard streams and its process are as they were.

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <locale>
#include <sstream>

#include <libxml/parser.h>
#include <libxml/xmlsave.h>

#include "kestrelink/xml/libxml/LibxmlCompat.h"

#include "tests/support/LibxmlVersion.h"
#include "tests/support/Support.h"

extern char** environ;

namespace kestrelink::testing {
namespace {

// All tests run under the environment's locale, as in a host that asks for it.
[[maybe_unused]] const bool kLocalized = [] {
  const bool known = std::setlocale(LC_ALL, "") != nullptr;
  if (known) std::locale::global(std::locale(""));
  return known;
}();

TEST(Host, TheLocaleAndTimeZoneOfATestElsewhereAreReallyThere) {
  const char* const zone = std::getenv("KESTRELINK_TEST_OFFSET");
  if (zone == nullptr) return;
  ::tzset();
  EXPECT_EQ(std::localeconv()->decimal_point + std::to_string(::timezone), "," + std::string(zone));
}

void hostsHandler(void* /*context*/, const char* /*format*/, ...) {}
void hostsStructured(void* /*context*/, LibxmlErrorRecord /*error*/) {}

// Everything of the process that a library could disturb, as text.
std::string processState() {
  std::ostringstream state;
  state << std::setlocale(LC_ALL, nullptr) << std::locale().name() << ::tzname[0] << ::tzname[1]
        << ::timezone << ::daylight << std::filesystem::current_path();
  for (char** variable = environ; *variable != nullptr; ++variable) state << *variable;
  const mode_t mask = ::umask(0);
  state << ::umask(mask) << mask;
  sigset_t blocked;
  pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action {};
    ::sigaction(number, nullptr, &action);
    state << " " << sigismember(&blocked, number) << action.sa_flags
          << reinterpret_cast<void*>(action.sa_handler);
  }
  for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;  // the one of this loop
    state << descriptor << std::filesystem::read_symlink(descriptor, gone);
  }
  state << reinterpret_cast<void*>(xmlGenericError) << xmlGenericErrorContext
        << reinterpret_cast<void*>(xmlStructuredError) << xmlStructuredErrorContext
        << xmlKeepBlanksDefaultValue << xmlGetWarningsDefaultValue << xmlLineNumbersDefaultValue
        << xmlLoadExtDtdDefaultValue << xmlPedanticParserDefaultValue
        << xmlSubstituteEntitiesDefaultValue << xmlDoValidityCheckingDefaultValue
        << xmlIndentTreeOutput << xmlSaveNoEmptyTags << xmlBufferAllocScheme
        << fuzz::debugEntities();
  return state.str();
}

void useEverything() {
  const auto& controller = SAMLParserController::sharedInstance();
  const std::string good = file("tests/fixtures/answer.xml");
  std::vector<std::string> texts = split(file("tests/golden/cases/marked.txt"), "\n");
  texts.insert(texts.end(), {good, "MARKER\xFF"});
  for (const auto what : {"saml:Subject", "_4c1d7a52e0f94b7f8d3f", "2096-01", "transient"}) {
    texts.push_back(good);
    texts.back().replace(good.find(what), std::string_view(what).size(), "MARKER");
  }
  const auto query = controller.newAttributeQuery("MARKER\x01");
  const auto ignore = [](const auto&...) {};
  for (const std::string& text : texts) {
    std::optional<ErrorInfo> error;
    ignore(controller.parseResponse(text, &error), controller.parseCachedResponse(text));
    query->setSubjectFromResponse(text);
    if (const auto doc = XMLWrapperDoc::initWithData(bytes(text), nullptr)) {
      doc->getResultsByXpathQuery("//MARKER:MARKER[", &error);
      doc->documentElement()->getResultsByXpathQuery("MARKER()");
      doc->documentElement()->addChildElement(XMLWrapperElement::initWithTagName("<MARKER>"));
      doc->documentElement()->addChildElement(doc->documentElement());
      doc->documentElement()->setAttributeWithName("MARKER ", "MARKER\xFF");
      ignore(doc->xmlString(&error));
    }
  }
  ignore(query->xmlString(), controller.newAuthNRequest("MARKER")->xmlString(),
         controller.newAuthZQuery("MARKER :", "C")->xmlString(),
         controller.newLogoutRequest()->xmlString());
}

TEST(Host, NoticesNothingButTheLogAndTheEntityLoader) {
  logDiagnostic("opens the connection to syslog");
  xmlSetGenericErrorFunc(&environ, &hostsHandler);
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

TEST(Host, LivesOnWhenNobodyReadsStandardError) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const int kept = ::dup(STDERR_FILENO);
  ::dup2(ends[1], STDERR_FILENO);
  ::close(ends[0]);
  logDiagnostic("to nobody");
  ::dup2(kept, STDERR_FILENO);
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
  for (const int descriptor : {ends[1], kept}) ::close(descriptor);
}

}  // namespace
}  // namespace kestrelink::testing
