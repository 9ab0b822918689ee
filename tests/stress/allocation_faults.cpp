// Lets one allocation after the other fail under everything the library does, each in a process of
// its own, before the first use and after. See docs/reliability.md.
//
//   allocation-faults [--short] [OPERATION...]

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <thread>
#include <vector>

#include "kestrelink/platform/Clock.h"
#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/platform/Uuid.h"
#include "kestrelink/saml/KestrelinkSAML.h"
#include "kestrelink/saml/elements/SAMLDateText.h"

#include "tests/fuzz/Answers.h"
#include "tests/stress/Faults.h"
#include "tests/support/Attack.h"
#include "tests/support/LibxmlVersion.h"

namespace {

using namespace kestrelink;
using namespace stress;

// What is asked

using Error = std::optional<ErrorInfo>;
using Response = std::shared_ptr<SAMLResponse>;

struct Operation {
  std::string_view name;
  /// Of how many allocations of libxml2 one fails in a run that must be short.
  long shortStride;
  /// How it may return nothing for want of memory.
  std::vector<std::string_view> documented;
  /// Opens a fault window around the library's part. The whole result as text; "none" and the
  /// error for nothing. May throw std::bad_alloc.
  std::function<std::string()> run;
};

const std::string sample = fuzz::contentOf(SAMPLE);
// Well-formed and not valid: must be refused, whatever fails.
const std::string invalid = std::string(sample).insert(sample.find("<a:Subject>"), "<a:Stranger/>");

template <class Work>
auto withFaults(Work work) {
  const FaultWindow faults;
  return work();
}

std::string none(const Error& error) {
  return "none" + (error ? " " + error->domain + " " + std::to_string(error->code) : "");
}
bool isNone(std::string_view result) { return result.substr(0, 4) == "none"; }

std::string textOf(const Response& response, const Error& error) {
  if (!response) return none(error);
  return response->xmlString().value() + fuzz::shown(fuzz::answersOf(*response));
}

std::string textOf(const std::optional<XMLWrapperElement::List>& found, const Error& error) {
  if (!found) return none(error);
  std::string all;
  for (const auto& element : *found) all += element->xmlString().value_or("-");
  return all;
}

Response readWithoutSchema(Error* error = nullptr) {
  return SAMLResponse::initWithData(std::make_shared<const std::string>(sample), nullptr, error);
}

std::string read(const std::string& text) {
  Error error;
  const auto response = withFaults(
      [&] { return SAMLParserController::sharedInstance().parseResponse(text, &error); });
  return textOf(response, error);
}

std::string readSampleWithoutSchema() {
  Error error;
  const auto response = withFaults([&] { return readWithoutSchema(&error); });
  return textOf(response, error);
}

std::string everyQuestion() {
  const Response response = readWithoutSchema();
  const FaultWindow faults;
  const auto confirmation = response->subject()->subjectConfirmations().front();
  return fuzz::shown(fuzz::answersOf(*response)) + std::to_string(response->expectedAction()) +
         SAMLStringFromDate(response->authenticationTTL()).value_or("-") +
         response->authorizationStatusForResource("https://tv.example/1").value_or("-") +
         confirmation->recipient().value_or("-") +
         (response->isValid() && response->assertionMeetsConditions() ? "valid" : "-");
}

std::string xpath() {
  const Response response = readWithoutSchema();
  const char* const query =
      "//a:Attribute[starts-with(@Name, 'u')]/* | //@Recipient | //a:*[.='t']";
  Error error;
  const auto found = withFaults([&] { return response->getResultsByXpathQuery(query, &error); });
  return textOf(found, error);
}

// Also of an element that was made in memory, which has an empty node.
std::string xpathOfElements() {
  const Response response = readWithoutSchema();
  const auto made = XMLWrapperElement::initWithTagName("Made");
  made->setQuery(response->query());
  const auto [found, self] = withFaults([&] {
    return std::pair(response->responseElement()->getResultsByXpathQuery("p:Status/*"),
                     made->getResultsByXpathQuery("self::Made"));
  });
  return self ? textOf(found, {}) : none({});
}

template <class Written>
std::string written(const Written& document) {
  Error error;
  const auto text = document->xmlString(&error);
  return text ? *text : none(error);
}

std::string requests() {
  const auto& controller = SAMLParserController::sharedInstance();
  const FaultWindow faults;
  const auto authn = controller.newAuthNRequest("https://tv.example");
  authn->setIsPassive(true);
  authn->requestElement()->setDestination("https://idp.example/sso?a=1&b=<2>");
  authn->requestElement()->setScoping(SAMLScoping::createElement());
  authn->requestElement()->scoping()->addRequesterId("line\nbreak");
  authn->setSubjectFromResponse(sample);
  const auto attributes = controller.newAttributeQuery("HARBOUR");
  attributes->addAttribute("PostalCodes", {"55802", "55804"});
  const auto authz = controller.newAuthZQuery("https://tv.example/live", "HARBOUR");
  authz->addAction(SAMLAuthZDecisionQueryActionPlay);
  const auto logout = controller.newLogoutRequest();
  logout->setNotOnOrAfter(currentTime());
  std::string all;
  for (const std::shared_ptr<XMLWrapperDoc>& each :
       std::initializer_list<std::shared_ptr<XMLWrapperDoc>>{authn, attributes, authz, logout}) {
    const std::string text = written(each);
    if (isNone(text)) return text;
    all += text;
  }
  return all;
}

// A text long enough that libxml2's buffer has to grow, with a character that XML forbids, and an
// attribute with a namespace of its own.
std::string writeElement() {
  const auto element = readWithoutSchema()->documentElement();
  const auto attribute = std::make_shared<XMLWrapperAttribute>();
  attribute->setName("hint");
  attribute->setNs(std::make_shared<XMLWrapperNamespace>("h", "urn:hint"));
  const_cast<XMLWrapperElement::AttributeMap&>(element->attributes())
      .emplace_back("hint", attribute);
  element->setTextContent(std::string(20000, 'x') + '\x01');
  return withFaults([&] { return written(element); });
}

constexpr std::string_view kNotWritten = "none XMLWrapperErrorDomain 101";
const std::vector<Operation> operations = {
    {"read", 31, {}, [] { return read(sample); }},
    {"refuse", 61, {}, [] { return read(invalid); }},
    {"read-without-schema", 1, {}, &readSampleWithoutSchema},
    {"every-question", 1, {}, &everyQuestion},
    {"xpath", 1, {"none XMLWrapperErrorDomain 201", "none XMLWrapperErrorDomain 300"}, &xpath},
    {"xpath-of-elements", 1, {"none"}, &xpathOfElements},
    {"requests", 1, {kNotWritten}, &requests},
    {"write-element", 1, {kNotWritten}, &writeElement},
};

// What comes of it

struct Outcome {
  std::array<char, 16> verdict{};
  Place place{};
};

// What the processes tell each other.
struct Shared {
  std::array<char, 1 << 16> expected{};
  Counts allocations{}, gained{};
  std::array<Outcome, 1 << 15> outcomes{};
  std::array<bool, 64> met{};  // of the known faults
};
Shared& shared = *new (::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Shared;

// What libxml2 itself does wrong, as "verdict: place".
std::vector<std::string> knownFaults() {
  std::vector<std::string> known;
  std::ifstream file(KNOWN_FAULTS);
  for (std::string line; std::getline(file, line);) {
    line.erase(std::min(line.find('#'), line.size()));
    line.erase(line.find_last_not_of(' ') + 1);
    if (!line.empty()) known.push_back(line);
  }
  return known;
}
const std::vector<std::string> known = knownFaults();

template <class Work>
pid_t inNewProcess(Work work) {
  std::fflush(stdout);
  const pid_t process = ::fork();
  if (process != 0) return process;
  work();
  std::fflush(stdout);
  ::_exit(0);
}

int statusOf(pid_t process) {
  int status = -1;
  ::waitpid(process, &status, 0);
  return status;
}

bool isExpected(const std::string& result) { return result == shared.expected.data(); }

Counts gainedSince(const Counts& before) {
  const Counts after = blocksInUse();
  return {after[0] - before[0], after[1] - before[1]};
}

// The result without a failure, and the blocks that two of them leave in use.
void learn(const Operation& operation) {
  const Counts before = blocksInUse();
  planFault(throughLibxml2, 0, nullptr);
  std::snprintf(shared.expected.data(), shared.expected.size(), "%s", operation.run().c_str());
  shared.allocations = allocationsSeen();
  const bool refused = isNone(shared.expected.data());
  if (refused != (operation.name == "refuse") || !isExpected(operation.run())) std::abort();
  shared.gained = gainedSince(before);
}

const char* verdictOf(const Operation& operation) {
  try {
    const std::string result = operation.run();
    if (isExpected(result)) return "right";
    const auto& codes = operation.documented;
    if (std::find(codes.begin(), codes.end(), result) != codes.end()) return "none";
    return isNone(shared.expected.data()) && !isNone(result) ? "accepted" : "wrong";
  } catch (const std::bad_alloc&) {
    return "bad_alloc";
  }
}

bool isGood(std::string_view verdict) {
  return verdict == "right" || verdict == "none" || verdict == "bad_alloc";
}

// Also whether the next call is right, more blocks stay in use than without a failure, or anything
// was written.
void attempt(const Operation& operation, Through way, long nth, Outcome& outcome) {
  const int output = ::memfd_create("output", 0);
  ::dup2(output, STDOUT_FILENO);
  ::dup2(output, STDERR_FILENO);
  ::alarm(30);
  const Counts before = blocksInUse();
  planFault(way, nth, &outcome.place);
  const char* verdict = verdictOf(operation);
  planFault(way, 0, nullptr);
  if (isGood(verdict)) {
    if (!isExpected(operation.run())) verdict = "next wrong";
    const Counts gained = gainedSince(before);
    if (gained[0] > shared.gained[0] || gained[1] > shared.gained[1]) verdict = "leak";
    if (::lseek(output, 0, SEEK_END) > 0) verdict = "printed";
  }
  std::strcpy(outcome.verdict.data(), verdict);
}

// False when something went wrong that is not a known fault.
bool report(const Operation& operation, bool warm, Through way, long stride) {
  std::map<std::string, long> times, bad;
  for (long nth = 1; nth <= shared.allocations[way]; nth += stride) {
    const Outcome& outcome = shared.outcomes[static_cast<std::size_t>(nth)];
    const std::string verdict = outcome.verdict.data();
    ++times[verdict];
    if (isGood(verdict) || (way == throughLibxml2 && !fuzz::faultsAreKnown())) continue;
    const std::string what = verdict + ": " + outcome.place.data();
    const auto place = std::find(known.begin(), known.end(), what);
    if (place == known.end()) {
      bad.emplace(what, nth);
    } else {
      shared.met[static_cast<std::size_t>(place - known.begin())] = true;
    }
  }
  std::printf("%-20s %s %-12s %6ld:", operation.name.data(), warm ? "warm" : "cold",
              way == throughLibxml2 ? "libxml2" : "operator new", shared.allocations[way]);
  for (const auto& [verdict, count] : times) std::printf(" %ld %s", count, verdict.c_str());
  std::printf("\n");
  for (const auto& [what, nth] : bad) std::printf("  FAULT %s, at %ld\n", what.c_str(), nth);
  return bad.empty();
}

bool sweep(const Operation& operation, bool warm, Through way, long stride) {
  const long workers = std::clamp(static_cast<long>(std::thread::hardware_concurrency()), 1L, 16L);
  std::vector<pid_t> running;
  for (long worker = 0; worker < workers; ++worker) {
    running.push_back(inNewProcess([&] {
      for (long nth = 1 + worker * stride; nth <= shared.allocations[way];
           nth += workers * stride) {
        Outcome& outcome = shared.outcomes[static_cast<std::size_t>(nth)] = {};
        const int status = statusOf(inNewProcess([&] { attempt(operation, way, nth, outcome); }));
        if (status != 0) std::strcpy(outcome.verdict.data(), status == SIGALRM ? "hang" : "crash");
      }
    }));
  }
  bool good = true;
  for (const pid_t process : running) good = statusOf(process) == 0 && good;
  return report(operation, warm, way, stride) && good;
}

bool sweepAll(const Operation& operation, bool warm, bool isShort) {
  return statusOf(inNewProcess([&] {
           for (int time = 0; warm && time < 2; ++time) static_cast<void>(operation.run());
           bool good = statusOf(inNewProcess([&] { learn(operation); })) == 0;
           good =
               good && sweep(operation, warm, throughLibxml2, isShort ? operation.shortStride : 1);
           good = sweep(operation, warm, throughOperatorNew, 1) && good;
           std::fflush(stdout);
           if (!good) ::_exit(1);
         })) == 0;
}

}  // namespace

int main(int count, char** words) {
  installHooks();
  setDiagnosticObserverForTesting([](std::string_view) noexcept {});
  setClockForTesting(std::chrono::system_clock::time_point(std::chrono::seconds(1768508160)));
  setUuidSourceForTesting([] { return std::string("C6E4D1C0-0B2B-4F0E-9D54-2E7C3A1B5F60"); });
  std::vector<std::string_view> wanted(words + 1, words + count);
  const bool isShort = std::erase(wanted, "--short") > 0;
  bool good = !known.empty();
  if (!fuzz::faultsAreKnown())
    std::puts("Skipped: libxml2's own faults, which are known of Debian 12's");
  for (const Operation& operation : operations) {
    const bool isWanted = std::find(wanted.begin(), wanted.end(), operation.name) != wanted.end();
    if (!wanted.empty() && !isWanted) continue;
    for (const bool warm : {false, true}) good = sweepAll(operation, warm, isShort) && good;
  }
  for (std::size_t each = 0;
       each < known.size() && !isShort && wanted.empty() && fuzz::faultsAreKnown(); ++each) {
    if (shared.met[each]) continue;
    std::printf("known fault not met: %s\n", known[each].c_str());
    good = false;
  }
  return good ? 0 : 1;
}
