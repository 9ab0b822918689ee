// Many threads in the library at once:
//
//     thread_hammer SECONDS [THREADS [FIRST_USES]]
//
// First FIRST_USES fresh processes, in each of which all threads are released at one instant into
// a first use of something; then THREADS threads for SECONDS. Every answer is compared with the one
// expected. Made for the thread sanitizer.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <barrier>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include "kestrelink/platform/Clock.h"
#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/platform/ResourceBundle.h"
#include "kestrelink/platform/Uuid.h"
#include "kestrelink/saml/KestrelinkSAML.h"
#include "kestrelink/saml/elements/SAMLDateText.h"
#include "kestrelink/xml/XMLWrapperElementFactory.h"
#include "kestrelink/xml/XMLWrapperQuery.h"
#include "kestrelink/xml/XMLWrapperSchema.h"

namespace {

using namespace kestrelink;
using Clock = std::chrono::steady_clock;

constexpr const char* kMarker = "MARKER";
constexpr const char* kUrl = "https://tv.example/1";

// What is expected

std::atomic<long> failures{0};

void expect(bool holds, const char* what, const std::string& detail = {}) {
  if (holds || ++failures > 20) return;
  static std::mutex printing;
  const std::lock_guard lock(printing);
  std::cout << "NOT AS EXPECTED: " << what << " " << detail << std::endl;
}

void expectEqual(const std::string& answer, const std::string& expected, const char* what) {
  expect(answer == expected, what, answer + " instead of " + expected);
}

std::string text(const std::optional<ErrorInfo>& error) {
  return error ? error->domain + " " + std::to_string(error->code) : "none";
}

SharedBytes bytes(std::string_view text) { return std::make_shared<const std::string>(text); }

const std::string& sample() {
  static const std::string text = [] {
    std::ifstream file(SAMPLE);
    return std::string{std::istreambuf_iterator<char>(file), {}};
  }();
  return text;
}

std::string replaced(std::string text, std::string_view what, std::string_view with) {
  return text.replace(text.find(what), what.size(), with);
}

// Messages, and what parseResponse says of each with the schema and without one.
struct Message {
  std::string text;
  const char* withSchema;
  const char* withoutSchema;
};

const char* const kAccepted = "accepted";
const char* const kInvalid = "XMLWrapperErrorDomain 100";

std::vector<Message> messages() {
  const std::string& good = sample();
  const std::string deep = [] {
    std::string text;
    for (int level = 0; level < 400; ++level) text += "<a>";
    return text;
  }();
  return {
      {good, kAccepted, kAccepted},
      {replaced(good, "mara.lindqvist", "m&undefined;MARKER"), kAccepted, kAccepted},
      {replaced(good, "Version=\"2.0\"", "Marker='MARKER'"), kInvalid, kAccepted},
      {good.substr(0, good.size() / 2), kInvalid, "SAMLParserErrorDomain 401"},
      {replaced(good, "2096-01-15T20:20:02Z\">", "2026-01-15T20:20:02Z\">"),
       "SAMLParserErrorDomain 401", "SAMLParserErrorDomain 401"},
      {"", "XMLWrapperErrorDomain 200", "XMLWrapperErrorDomain 200"},
      {"MARKER\xFF", "SAMLParserErrorDomain 100", "SAMLParserErrorDomain 100"},
      {"<Assertion MARKER='MARKER'/>", kInvalid, "SAMLParserErrorDomain 102"},
      {"<MARKER><?MARKER", kInvalid, "SAMLParserErrorDomain 102"},
      {"<!DOCTYPE r SYSTEM 'file:///etc/passwd' [<!ENTITY e SYSTEM 'file:///etc/passwd'>"
       "<!ENTITY % p SYSTEM 'http://host.example/p'>%p;]><r>&e;&MARKER;</r>",
       kInvalid, "SAMLParserErrorDomain 102"},
      {"<!DOCTYPE r [<!ENTITY a 'MARKERMARKER'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'>"
       "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;'>]><r x='&c;&c;&c;'>&c;&c;</r>",
       kInvalid, "SAMLParserErrorDomain 102"},
      {deep, kInvalid, "SAMLParserErrorDomain 102"},
  };
}

void checkMessage(const SAMLParserController& controller, const Message& message, bool schema) {
  std::optional<ErrorInfo> error;
  const auto response = controller.parseResponse(message.text, &error);
  expectEqual(response ? kAccepted : text(error),
              schema ? message.withSchema : message.withoutSchema, message.text.c_str());
  if (schema && !response && text(error) == kInvalid) {
    expect(error->info.at(std::string(kLocalizedDescriptionKey)).rfind("ERROR ", 0) == 0,
           "description");
  }
}

void checkGood(const SAMLResponse& response, bool withXpath) {
  expectEqual(response.userName().value_or("-"), "mara.lindqvist", "user");
  expect(response.attributes().size() == 8, "attributes");
  expect(response.hasValidAuthentication(), "authentication");
  expect(SAMLStringFromDate(response.authenticationTTL()) == "2096-02-14T20:15:01Z", "date");
  if (!withXpath) return;
  const auto found = response.getResultsByXpathQuery("//saml:AttributeValue");
  expect(found && found->size() == 11, "XPath");
}

// The text of a request without what is new each time.
std::string timeless(std::string text, std::string& identifier) {
  for (const std::string_view name : {" ID=\"", " IssueInstant=\""}) {
    const std::size_t start = text.find(name) + name.size();
    const std::size_t end = text.find('"', start);
    if (name == " ID=\"") identifier = text.substr(start, end - start);
    text.erase(start, end - start);
  }
  return text;
}

struct Requests {
  std::array<std::string, 4> texts;
  std::array<std::string, 4> identifiers;
};

Requests makeRequests(const SAMLParserController& controller) {
  const auto authn = controller.newAuthNRequest("I");
  const auto attributes = controller.newAttributeQuery("C");
  const auto authz = controller.newAuthZQuery(kUrl, "C");
  const auto logout = controller.newLogoutRequest();
  authn->setSubjectFromResponse(sample());
  authn->setIsPassive(true);
  attributes->addAttribute("HouseholdID", {"1", "2"});
  attributes->setSubjectFromResponse(sample());
  authz->setSubjectFromResponse(sample());
  authz->addAction(SAMLAuthZDecisionQueryActionPlay);
  logout->setReason("bye");
  const XMLWrapperDoc* const documents[] = {authn.get(), attributes.get(), authz.get(),
                                            logout.get()};
  Requests made;
  for (std::size_t kind = 0; kind < 4; ++kind) {
    const auto written = documents[kind]->xmlString();
    expect(written && written == documents[kind]->xmlString(), "written twice");
    made.texts[kind] = timeless(written.value_or(""), made.identifiers[kind]);
  }
  return made;
}

// The entity loader's rules

void checkLoader() {
  expect(xmlGetExternalEntityLoader() == &XMLWExternalEntityLoader, "loader in force");
  const std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxtPtr)> context(xmlNewParserCtxt(),
                                                                           xmlFreeParserCtxt);
  for (const char* const url : {"/etc/passwd", "http://host.example/x", "..", "x.xsd?"}) {
    expect(XMLWExternalEntityLoader(url, nullptr, context.get()) == nullptr, "loader refuses", url);
  }
  const std::unique_ptr<xmlParserInput, void (*)(xmlParserInputPtr)> served(
      XMLWExternalEntityLoader("http://host.example/saml-schema-assertion-2.0.xsd", nullptr,
                               context.get()),
      xmlFreeInputStream);
  expect(served != nullptr, "loader serves");
}

// Somebody else in the process, who would read files.
void checkNeighbour() {
  static const std::string text =
      "<!DOCTYPE r [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><r>&e;</r>";
  const std::unique_ptr<xmlDoc, void (*)(xmlDocPtr)> doc(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), "", nullptr,
                    XML_PARSE_NOENT | XML_PARSE_DTDLOAD | XML_PARSE_NOERROR | XML_PARSE_RECOVER),
      xmlFreeDoc);
  const std::unique_ptr<xmlChar, void (*)(void*)> content(
      doc ? xmlNodeGetContent(xmlDocGetRootElement(doc.get())) : nullptr, xmlFree);
  expect(content == nullptr || *content == 0, "a neighbour read a file");
}

std::atomic<int> hostCalls{0};

xmlParserInputPtr hostsLoader(const char*, const char*, xmlParserCtxtPtr) {
  ++hostCalls;
  return nullptr;
}

// With no other thread about: a host puts in its own, and it is never asked once we are back.
void checkLoaderComesBack() {
  xmlSetExternalEntityLoader(&hostsLoader);
  checkMessage(SAMLParserController::sharedInstance(), messages().front(), true);
  expect(hostCalls == 0, "the host's loader was called");
  checkLoader();
}

// The namespace table's rules: one for the process, the latest binding of a prefix in force, none
// is ever lost.

constexpr int kShared = 8;

std::string sharedUri(int n) { return "urn:shared:" + std::to_string(n); }

std::size_t count(const XMLWrapperDoc& doc, const std::string& xpath) {
  const auto found = doc.getResultsByXpathQuery(xpath);
  return found ? found->size() : 999;
}

void checkNamespaces(int thread, long round) {
  const std::string own = "t" + std::to_string(thread);
  const std::string xml =
      "<" + own + ":r xmlns:" + own + "='urn:own'><" + own + ":c/></" + own + ":r>";
  const auto doc = XMLWrapperDoc::initWithData(bytes(xml), nullptr);
  const std::string query = "//" + own + ":c";
  expect(count(*doc, query) == 1, "as parsed");
  doc->setNamespace({own, "urn:other"});
  expect(count(*doc, query) == 0, "rebound");
  doc->documentElement()->setNamespace(std::make_shared<XMLWrapperNamespace>(own, "urn:own"));
  expect(count(*doc, query) == 1, "bound again");
  XMLWrapperQuery().registerNamespace({own + "-" + std::to_string(round % 5000), "urn:own"});
  const std::string earlier = own + "-" + std::to_string(round % 5000 / 2);
  if (round >= 1) expect(count(*doc, "//" + earlier + ":c") == 1, "an earlier binding", earlier);
  std::optional<ErrorInfo> error;
  doc->getResultsByXpathQuery("//never" + own + ":c", &error);
  expectEqual(text(error), "XMLWrapperErrorDomain 300", "unknown prefix");

  // Every thread binds this one prefix: some binding is in force, and one alone. Without a
  // declaration of it in the document, whose reading would bind it.
  std::string many = "<r>";
  for (int n = 0; n < kShared; ++n) many += "<c xmlns='" + sharedUri(n) + "'/>";
  const auto sharing = XMLWrapperDoc::initWithData(bytes(many + "</r>"), nullptr);
  sharing->setNamespace({"shared", sharedUri(static_cast<int>(round + thread) % kShared)});
  expect(count(*sharing, "//shared:c") == 1, "shared prefix");
}

// The registry of classes

void checkRegistry(int thread, long round) {
  using Factory = XMLWrapperElementFactory;
  const XMLWrapperElementClass* const classes[] = {&SAMLStatus::elementClass,
                                                   &SAMLSubject::elementClass};
  const XMLWrapperElementClass* const mine = classes[round % 2];
  const std::string name = "Own" + std::to_string(thread) + "-" + std::to_string(round % 500);
  Factory::registerClass(mine, name);
  Factory::registerClass(mine, "SharedName");
  expect(Factory::elementClassByTagName(name) == mine, "registered class");
  const auto doc =
      XMLWrapperDoc::initWithData(bytes("<" + name + "><SharedName/></" + name + ">"), nullptr);
  expect(&doc->documentElement()->dynamicClass() == mine, "class of an element");
  const auto* const shared = &doc->documentElement()->elements()[0]->dynamicClass();
  expect(shared == classes[0] || shared == classes[1], "shared name");
}

// What is handed from thread to thread, whole: a document with its elements, or what is left when
// the document went in another thread.
struct Parcel {
  std::shared_ptr<SAMLResponse> response;
  std::shared_ptr<XMLWrapperElement> element;
  std::shared_ptr<XMLWrapperAttribute> attribute;
  std::vector<std::shared_ptr<XMLWrapperElement>> results;
  std::shared_ptr<SAMLAuthNRequest> request;
};

class Exchange {
 public:
  Parcel swap(std::size_t place, Parcel given) {
    const std::lock_guard lock(lock_);
    std::swap(parcels_[place % parcels_.size()], given);
    return given;
  }

 private:
  std::mutex lock_;
  std::array<Parcel, 16> parcels_;
};

Parcel makeParcel(long round) {
  const auto& controller = SAMLParserController::sharedInstance();
  Parcel parcel;
  parcel.response = controller.parseResponse(sample());
  if (!parcel.response) return {};
  parcel.element = parcel.response->subject();
  parcel.attribute = (*parcel.response->assertions())[0]->attributeWithName("ID");
  parcel.results =
      parcel.response->getResultsByXpathQuery("//saml:Attribute[@Name='PostalCodes']").value();
  parcel.request = controller.newAuthNRequest("I");
  parcel.request->requestElement()->setSubject(parcel.response->subject());
  if (round % 2 == 0) parcel.response.reset();
  return parcel;
}

void checkParcel(Parcel parcel) {
  if (!parcel.request) return;
  const bool whole = parcel.response != nullptr;
  if (whole) checkGood(*parcel.response, true);
  expectEqual(parcel.element->elements()[0]->textContent().value_or("-"), "t-58f20c7be1",
              "subject");
  expect(parcel.element->getResultsByXpathQuery("saml:NameID").has_value() == whole, "tree gone");
  parcel.response.reset();
  expect(!parcel.element->getResultsByXpathQuery("saml:NameID"), "tree gone");
  expectEqual(parcel.attribute->value().value_or("-"), "_7b0c2f9e61a84d55", "attribute");
  expect(parcel.results.size() == 1 && parcel.results[0]->elements().size() == 2, "results");
  expect(parcel.request->requestElement()->subject() == parcel.element, "moved subject");
  expect(parcel.request->xmlString()->find("<saml:Subject ") != std::string::npos, "written");
}

// First use

const std::vector<std::function<void()>>& firstUses() {
  static const std::vector<std::function<void()>> uses = {
      [] { checkMessage(SAMLParserController::sharedInstance(), messages()[0], true); },
      [] { checkMessage(SAMLParserController(), messages()[2], true); },
      [] {
        const auto response = SAMLResponse::initWithData(bytes(sample()), nullptr);
        expect(response && response->responseElement(), "a response without the controller");
      },
      [] { expect(XMLWrapperSchema::initWithSchemaData(bytes("<r/>")) == nullptr, "no schema"); },
      [] {
        const auto doc = XMLWrapperDoc::initWithData(bytes("<x:r xmlns:x='urn:x'/>"), nullptr);
        expect(doc && count(*doc, "/x:r") == 1, "XPath");
      },
      [] {
        const auto element = XMLWrapperElement::initWithTagName("made");
        element->setQuery(std::make_shared<XMLWrapperQuery>());
        expect(element->getResultsByXpathQuery(".")->size() == 1, "XPath on a made element");
      },
      [] { expect(XMLWrapperElement::initWithTagName("r")->xmlString() == "<r/>", "written"); },
      [] { makeRequests(SAMLParserController::sharedInstance()); },
      [] { expect(randomUuid().size() == 36, "UUID"); },
      [] { expect(currentTime().time_since_epoch().count() > 0, "clock"); },
      [] { logDiagnostic("first line"); },
      [] { checkRegistry(0, 1); },
      [] { expect(ResourceBundle::ofLibrary() != nullptr, "bundle"); },
      [] {
        XMLWrapperQuery().registerNamespace({"first", "urn:first"});
      },
  };
  return uses;
}

// In a fresh process.
int useFirst(int threads, int turn) {
  sample();
  firstUses();
  messages();
  std::barrier released(threads);
  std::vector<std::thread> running;
  for (int thread = 0; thread < threads; ++thread) {
    running.emplace_back([&released, thread, turn] {
      const std::size_t size = firstUses().size();
      released.arrive_and_wait();
      for (std::size_t step = 0; step < size; ++step) {
        // At times all begin with the same, at times each with another.
        const auto shift = static_cast<std::size_t>(turn % 2 == 0 ? turn / 2 : turn + thread * 3);
        firstUses()[(step + shift) % size]();
      }
    });
  }
  for (std::thread& thread : running) thread.join();
  checkLoader();
  return failures == 0 ? 0 : 1;
}

// What the processes log, which are lines of ours alone and none of a message.
bool linesAreOurs(const std::string& path) {
  std::ifstream log(path);
  bool ours = true;
  for (std::string line; std::getline(log, line);) {
    if (line.rfind("kestrelink-saml: ", 0) == 0 && line.find(kMarker) == std::string::npos)
      continue;
    std::cout << "standard error: " << line << std::endl;
    ours = false;
  }
  return ours;
}

bool firstUsesInFreshProcesses(int threads, int processes) {
  std::string path = "/tmp/thread_hammer.XXXXXX";
  const int log = ::mkostemp(path.data(), O_APPEND);
  bool good = log >= 0;
  for (int turn = 0; turn < processes; ++turn) {
    const pid_t child = ::fork();
    if (child == 0) {
      ::dup2(log, STDERR_FILENO);
      std::exit(useFirst(threads, turn));
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0) {
      std::cout << "first use " << turn << " ended with " << status << std::endl;
      good = false;
    }
  }
  if (!linesAreOurs(path)) good = false;
  ::close(log);
  ::unlink(path.c_str());
  return good;
}

// The hammer

std::atomic<long> loggedLines{0};

void watchLog(std::string_view line) noexcept {
  ++loggedLines;
  if (line.empty() || line.find(kMarker) != std::string_view::npos) ++failures;
}

struct Work {
  const Requests expected;
  const std::vector<Message> all = messages();
  Exchange exchange;
  std::atomic<long> rounds{0};
  std::atomic<long> parsed{0};
  std::mutex lock;
  std::set<std::string> identifiers;
  long made = 0;
};

void hammer(Work& work, int thread, Clock::time_point end) {
  const auto& controller = SAMLParserController::sharedInstance();
  std::vector<std::string> identifiers;
  for (long round = 0; Clock::now() < end; ++round, ++work.rounds) {
    const Message& message = work.all[static_cast<std::size_t>(round + thread) % work.all.size()];
    checkMessage(controller, message, true);
    SAMLParserController own;
    own.setSchemaData(nullptr);
    checkMessage(own, message, false);
    checkNamespaces(thread, round);
    checkRegistry(thread, round);
    checkLoader();
    checkNeighbour();
    const Requests made = makeRequests(controller);
    expect(made.texts == work.expected.texts, "requests", made.texts[0]);
    if (identifiers.size() < 100000) {
      identifiers.insert(identifiers.end(), made.identifiers.begin(), made.identifiers.end());
    }
    Parcel parcel = makeParcel(round);
    expect(parcel.request != nullptr, "parcel");
    checkParcel(
        work.exchange.swap(static_cast<std::size_t>(round * 7 + thread), std::move(parcel)));
    work.parsed += 9;
  }
  const std::lock_guard lock(work.lock);
  work.made += static_cast<long>(identifiers.size());
  work.identifiers.insert(identifiers.begin(), identifiers.end());
}

void hammerFor(std::chrono::seconds length, int threads) {
  setDiagnosticObserverForTesting(&watchLog);
  checkLoaderComesBack();
  Work work{
      makeRequests(SAMLParserController::sharedInstance()), messages(), {}, {}, {}, {}, {}, 0};
  const Clock::time_point end = Clock::now() + length;
  std::vector<std::thread> running;
  for (int thread = 0; thread < threads; ++thread) {
    running.emplace_back([&work, thread, end] { hammer(work, thread, end); });
  }
  for (std::thread& thread : running) thread.join();
  checkLoaderComesBack();
  expect(static_cast<long>(work.identifiers.size()) == work.made, "identifiers are unique");
  std::cout << threads << " threads, " << length.count() << " s: " << work.rounds << " rounds, "
            << work.parsed << " messages read, " << 4 * work.rounds << " requests written, "
            << loggedLines << " lines logged" << std::endl;
}

}  // namespace

int main(int count, char** arguments) {
  const auto number = [&](int position, int otherwise) {
    return count > position ? std::atoi(arguments[position]) : otherwise;
  };
  const int seconds = number(1, 3);
  const int threads = number(2, 6);
  const int processes = number(3, 12);
  const bool good = firstUsesInFreshProcesses(threads, processes);
  std::cout << processes << " first uses by " << threads << " threads" << std::endl;
  hammerFor(std::chrono::seconds(seconds), threads);
  std::cout << failures << " answers not as expected" << std::endl;
  return good && failures == 0 ? 0 : 1;
}
