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
#include <set>
#include <thread>
#include <vector>

#include <libxml/tree.h>

#include "kestrelink/platform/Clock.h"
#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/platform/Uuid.h"
#include "kestrelink/standard/StandardForms.h"

#include "tests/stress/Faults.h"
#include "tests/stress/Work.h"
#include "tests/support/Attack.h"
#include "tests/support/LibxmlVersion.h"
#include "tests/support/Reading.h"

namespace {

using namespace kestrelink;
using namespace stress;

// What is done

using Error = std::optional<ErrorInfo>;

struct Operation {
  std::string_view name;
  /// Of how many allocations of libxml2 one fails in a run that must be short.
  long shortStride;
  /// What it may return when memory runs out.
  std::set<std::string> documented;
  /// Opens a fault window around the library's part. The whole result as text. May throw
  /// std::bad_alloc.
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

std::shared_ptr<SAMLResponse> readWithoutSchema(Error* error = nullptr) {
  return SAMLResponse::initWithData(std::make_shared<const std::string>(sample), nullptr, error);
}

std::string read(const std::string& text) {
  Error error;
  const auto response = withFaults(
      [&] { return SAMLParserController::sharedInstance().parseResponse(text, &error); });
  return textOf(response, error);
}

std::string readWithEveryQuestion() {
  Error error;
  return withFaults([&] {
    const auto response = readWithoutSchema(&error);
    return response ? fuzz::shown(fuzz::readingOf(*response)) : none(error);
  });
}

// Also within an element, and of one that was made in memory, which has an empty node.
std::string xpath() {
  const auto response = readWithoutSchema();
  const auto made = XMLWrapperElement::initWithTagName("Made");
  made->setQuery(response->query());
  const char* const query =
      "//a:Attribute[starts-with(@Name, 'u')]/* | //@Recipient | //a:*[.='t']";
  Error error;
  const auto lists = withFaults([&] {
    return std::array{response->getResultsByXpathQuery(query, &error),
                      response->responseElement()->getResultsByXpathQuery("p:Status/*"),
                      made->getResultsByXpathQuery("self::Made")};
  });
  std::string all;
  for (const auto& found : lists) {
    if (!found) return none(error);
    for (const auto& element : *found) all += element->xmlString().value_or("-");
  }
  return all;
}

// A text long enough that libxml2's buffer has to grow, with a character that XML forbids, and an
// attribute with a namespace of its own. Written, and as the root of a libxml2 document.
std::string writeElement() {
  const auto element = readWithoutSchema()->documentElement();
  const auto attribute = std::make_shared<XMLWrapperAttribute>();
  attribute->setName("hint");
  attribute->setNs(std::make_shared<XMLWrapperNamespace>("h", "urn:&hint"));
  const_cast<XMLWrapperElement::AttributeMap&>(element->attributes())
      .emplace_back("hint", attribute);
  element->setTextContent(std::string(20000, 'x') + '\x01');
  const auto doc = XMLWrapperDoc::initWithElement(element, nullptr);
  Error error;
  SharedXmlDoc tree;
  const auto written = withFaults([&] {
    tree = doc->docNode(&error);
    return tree ? doc->xmlString(&error) : std::nullopt;
  });
  if (!written) return none(error);
  const std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)> buffer(xmlBufferCreate(),
                                                                    &xmlBufferFree);
  xmlNodeDump(buffer.get(), tree.get(), xmlDocGetRootElement(tree.get()), 0, 1);
  return *written + reinterpret_cast<const char*>(xmlBufferContent(buffer.get()));
}

// A long entity name and a comment that is not ASCII are copied within libxml2's callbacks.
std::string readWithinBounds() {
  std::string hidden = "<r><!-- \xC3\xA9 <t";
  for (int count = 0; count < 6000; ++count) hidden += " a=''";
  const auto bytesOf = [](const std::string& text) {
    return std::make_shared<const std::string>(text);
  };
  const std::array messages = {
      bytesOf("<!DOCTYPE r [<!ENTITY its-name-is-long 'x'>]><r a='&its-name-is-long;'/>"),
      bytesOf(hidden + "/> --></r>")};
  const auto read = withFaults([&] {
    return std::array{XMLWrapperDoc::initWithData(messages[0], nullptr),
                      XMLWrapperDoc::initWithData(messages[1], nullptr)};
  });
  return read[0] && read[1] ? "both" : "none";
}

// A setter that runs out of memory has changed nothing. The second change has an earlier value.
template <class Message, class Set>
std::string changedTwice(Message& request, Set set) {
  std::string text;
  for (int time = 0; time < 2; ++time) {
    const std::string before = request.xmlString().value();
    try {
      withFaults([&] { set(time); });
    } catch (const std::bad_alloc&) {
      if (request.xmlString() != before) return "half changed";
      throw;
    }
    text += request.xmlString().value();
  }
  return text;
}

std::string setStandardForms() {
  const auto& controller = SAMLParserController::sharedInstance();
  const auto logout = controller.newLogoutRequest();
  const auto authn = controller.newAuthNRequest("https://tv.example");
  for (const auto& root : {logout->documentElement(), authn->documentElement()}) {
    root->setAttributeWithName("IssueInstant", "x");
  }
  const auto response = readWithoutSchema();
  std::string all = changedTwice(*logout, [&](int) {
    static_cast<void>(standard::setNameIdFrom(*logout, *response->subject()));
  });
  all += changedTwice(*authn,
                      [&](int) { static_cast<void>(standard::setSubjectFrom(*authn, *response)); });
  return all + changedTwice(*authn, [&](int time) {
           standard::setAssertionConsumerService(*authn, time == 0 ? "urn:a" : "urn:b");
         });
}

const std::string kNotWritten = "none XMLWrapperErrorDomain 101";
const std::set<std::string> kNotFound = {"none", "none XMLWrapperErrorDomain 201",
                                         "none XMLWrapperErrorDomain 300"};
const std::vector<Operation> operations = {
    {"read", 31, {}, [] { return read(sample); }},
    {"refuse", 61, {}, [] { return read(invalid); }},
    {"read-without-schema", 1, {}, &readWithEveryQuestion},
    {"read-within-bounds", 1, {}, &readWithinBounds},
    {"xpath", 1, kNotFound, &xpath},
    {"requests", 1, {kNotWritten}, [] { return withFaults([] { return requests(sample); }); }},
    {"set-standard-forms", 1, {}, &setStandardForms},
    {"write-element", 1, {kNotWritten}, &writeElement},
};

// What fails

struct Fault {
  const char* name;
  Through way;
  bool lasting;
};
constexpr Fault faults[] = {{"libxml2", throughLibxml2, false},
                            {"operator new", throughOperatorNew, false},
                            {"new and all", throughOperatorNew, true}};

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
};
Shared& shared = *new (::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Shared;

template <class Work>
pid_t inNewProcess(Work work) {
  const pid_t process = ::fork();
  if (process != 0) return process;
  work();
  ::_exit(0);
}

int statusOf(pid_t process) {
  int status = -1;
  ::waitpid(process, &status, 0);
  return status;
}

bool isExpected(const std::string& result) { return result == shared.expected.data(); }
bool isNone(std::string_view result) { return result.substr(0, 4) == "none"; }

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

bool isGood(std::string_view verdict) {
  return verdict == "right" || verdict == "none" || verdict == "bad_alloc";
}

const char* verdictOf(const Operation& operation) try {
  const std::string result = operation.run();
  if (isExpected(result)) return "right";
  if (operation.documented.contains(result)) return "none";
  return isNone(shared.expected.data()) && !isNone(result) ? "accepted" : "wrong";
} catch (const std::bad_alloc&) {
  return "bad_alloc";
}

// Also whether the next call is right, more blocks stay in use than without a failure, or anything
// was written.
void attempt(const Operation& operation, const Fault& fault, long nth, Outcome& outcome) {
  const int output = ::memfd_create("output", 0);
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) ::dup2(output, stream);
  ::alarm(30);
  const Counts before = blocksInUse();
  planFault(fault.way, nth, &outcome.place, fault.lasting);
  const char* verdict = verdictOf(operation);
  planFault(fault.way, 0, nullptr);
  if (isGood(verdict)) {
    if (!isExpected(operation.run())) verdict = "next wrong";
    const Counts gained = gainedSince(before);
    if (gained[0] > shared.gained[0] || gained[1] > shared.gained[1]) verdict = "leak";
    if (::lseek(output, 0, SEEK_END) > 0) verdict = "printed";
  }
  std::strcpy(outcome.verdict.data(), verdict);
}

// In a process that has used the library, or not: each failure of one way in a process of its own.
void sweep(const Operation& operation, bool warm, const Fault& fault, long stride) {
  for (int time = 0; warm && time < 2; ++time) static_cast<void>(operation.run());
  if (statusOf(inNewProcess([&] { learn(operation); })) != 0) ::_exit(1);
  const long workers = std::clamp(static_cast<long>(std::thread::hardware_concurrency()), 1L, 16L);
  for (long worker = 0; worker < workers; ++worker) {
    inNewProcess([&] {
      for (long nth = 1 + worker * stride; nth <= shared.allocations[fault.way];
           nth += workers * stride) {
        Outcome& outcome = shared.outcomes[static_cast<std::size_t>(nth)] = {};
        const int status = statusOf(inNewProcess([&] { attempt(operation, fault, nth, outcome); }));
        if (status != 0) std::strcpy(outcome.verdict.data(), status == SIGALRM ? "hang" : "crash");
      }
    });
  }
  int good = 0;
  for (int status = 0; ::wait(&status) > 0;) good |= status;
  if (good != 0) ::_exit(1);
}

// What libxml2 itself does wrong, as "verdict: place", and whether it was met.
std::map<std::string, bool> knownFaults() {
  std::map<std::string, bool> known;
  std::ifstream file(KNOWN_FAULTS);
  for (std::string line; std::getline(file, line);) {
    line.erase(std::min(line.find('#'), line.size()));
    line.erase(line.find_last_not_of(' ') + 1);
    if (!line.empty()) known.emplace(line, false);
  }
  return known;
}

// False when something went wrong that is not a known fault.
bool report(std::map<std::string, bool>& known, Through way, long stride) {
  std::map<std::string, long> times, bad;
  for (long nth = 1; nth <= shared.allocations[way]; nth += stride) {
    const Outcome& outcome = shared.outcomes[static_cast<std::size_t>(nth)];
    const std::string verdict = outcome.verdict.data(),
                      what = verdict + ": " + outcome.place.data();
    ++times[verdict];
    if (isGood(verdict) || (way == throughLibxml2 && !fuzz::faultsAreKnown())) continue;
    const auto place = known.find(what);
    if (place == known.end()) bad.emplace(what, nth);
    if (place != known.end()) place->second = true;
  }
  for (const auto& [verdict, count] : times) std::printf(" %ld %s", count, verdict.c_str());
  for (const auto& [what, nth] : bad) std::printf("\n  FAULT %s, at %ld", what.c_str(), nth);
  std::printf("\n");
  return bad.empty();
}

}  // namespace

int main(int count, char** words) {
  installHooks();
  setDiagnosticObserverForTesting([](std::string_view) noexcept {});
  setClockForTesting(std::chrono::system_clock::time_point(std::chrono::seconds(1768508160)));
  setUuidSourceForTesting([] { return std::string("C6E4D1C0-0B2B-4F0E-9D54-2E7C3A1B5F60"); });
  std::set<std::string_view> wanted(words + 1, words + count);
  const bool isShort = wanted.erase("--short") > 0;
  std::map<std::string, bool> known = knownFaults();
  bool good = !known.empty();
  if (!fuzz::faultsAreKnown()) {
    std::puts("Skipped: libxml2's own faults, which are known of Debian 12's");
  }
  for (const Operation& operation : operations) {
    if (!wanted.empty() && !wanted.contains(operation.name)) continue;
    for (const int run : {0, 1, 2, 3, 4, 5}) {
      const bool warm = run >= 3;
      const Fault& fault = faults[run % 3];
      const Through way = fault.way;
      const long stride = isShort && way == throughLibxml2 ? operation.shortStride : 1;
      good = statusOf(inNewProcess([&] { sweep(operation, warm, fault, stride); })) == 0 && good;
      std::printf("%-20s %s %-12s %6ld:", operation.name.data(), warm ? "warm" : "cold", fault.name,
                  shared.allocations[way]);
      good = report(known, way, stride) && good;
      std::fflush(stdout);
    }
  }
  for (const auto& [what, met] : known) {
    if (met || !fuzz::faultsAreKnown() || isShort || !wanted.empty()) continue;
    std::printf("known fault not met: %s\n", what.c_str());
    good = false;
  }
  return good ? 0 : 1;
}
