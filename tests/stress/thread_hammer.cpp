// Many threads in the library at once:
//
//     thread_hammer [SECONDS [THREADS [FIRST_USES]]]
//
// First FIRST_USES fresh processes, in each of which all threads are released at one instant into
// the first use of everything; then THREADS threads for SECONDS. Each result must be the one that
// a single thread gets. Made for the thread sanitizer.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <barrier>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <set>
#include <thread>

#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/platform/Uuid.h"
#include "kestrelink/saml/KestrelinkSAML.h"
#include "kestrelink/xml/XMLWrapperElementFactory.h"
#include "kestrelink/xml/XMLWrapperQuery.h"

#include "tests/stress/Work.h"
#include "tests/support/Attack.h"

namespace {

using namespace kestrelink;
using Clock = std::chrono::steady_clock;

/// Gives the same text in every thread and round.
using Job = std::function<std::string(int thread, long round)>;

std::shared_ptr<XMLWrapperDoc> document(const std::string& xml) {
  return XMLWrapperDoc::initWithData(std::make_shared<const std::string>(xml), nullptr);
}

std::string read(const std::string& message, bool schema) {
  SAMLParserController withoutSchema;
  withoutSchema.setSchemaData(nullptr);
  const auto& controller = schema ? SAMLParserController::sharedInstance() : withoutSchema;
  std::optional<ErrorInfo> error;
  const auto response = controller.parseResponse(message, &error);
  return stress::textOf(response, error);
}

std::string queryMade(int, long) {
  const auto made = XMLWrapperElement::initWithTagName("made");
  made->setQuery(std::make_shared<XMLWrapperQuery>());
  return std::to_string(made->getResultsByXpathQuery(".").value().size());
}

// An accepted message, then ones that are rejected for an element, for the time, as no XML, and as
// hostile; and an accepted one that has to be recovered.
std::vector<std::string> messages() {
  std::vector<std::string> all;
  for (const char* const name :
       {"golden/success.xml", "golden/invalid.xml", "golden/expired.xml", "golden/no-xml.xml",
        "attacks/external-entity-in-text.xml", "attacks/character-references-xml-forbids.xml"}) {
    all.push_back(fuzz::contentOf(std::string(TESTS) + name));
  }
  return all;
}

// The prefixes of XPath are one table for the process: the latest binding of each is in force, and
// none is ever lost.

std::string count(const XMLWrapperDoc& doc, const std::string& xpath) {
  std::optional<ErrorInfo> error;
  const auto found = doc.getResultsByXpathQuery(xpath, &error);
  return std::to_string(found ? static_cast<long>(found->size()) : error.value().code);
}

std::string ownPrefixes(int thread, long round) {
  const auto name = [&](long number) {
    return "t" + std::to_string(thread) + "-" + std::to_string(number);
  };
  const std::string own = name(round % 5000);
  const auto doc = document("<" + own + ":r xmlns:" + own + "='urn:own'/>");
  const std::string query = "/" + own + ":r";
  std::string found = count(*doc, query);
  doc->setNamespace({own, "urn:other"});
  found += " " + count(*doc, query);
  XMLWrapperQuery().registerNamespace({own, "urn:own"});
  found += " " + count(*doc, query) + " " + count(*doc, "/" + name(round % 5000 / 2) + ":r");
  return found + " " + count(*doc, "//never-" + query.substr(1));
}

// Some thread's binding is in force, and one alone.
std::string sharedPrefix(int thread, long round) {
  std::string children;
  for (int n = 0; n < 8; ++n) children += "<c xmlns='urn:shared:" + std::to_string(n) + "'/>";
  const auto doc = document("<r>" + children + "</r>");
  doc->setNamespace({"shared", "urn:shared:" + std::to_string((round + thread) % 8)});
  return count(*doc, "//shared:c");
}

std::string registry(int thread, long round) {
  const std::string own = "Own" + std::to_string(thread) + "-" + std::to_string(round % 500);
  XMLWrapperElementFactory::registerClass(&SAMLStatus::elementClass, own);
  XMLWrapperElementFactory::registerClass(&SAMLStatus::elementClass, "Shared");
  const auto root = document("<" + own + "><Shared/></" + own + ">")->documentElement();
  const auto isStatus = [](const auto& e) {
    return &e->dynamicClass() == &SAMLStatus::elementClass;
  };
  return isStatus(root) && isStatus(root->elements()[0]) ? "both" : "not both";
}

std::vector<Job> makeJobs() {
  const std::vector<std::string> all = messages();
  std::vector<Job> jobs = {&queryMade, &ownPrefixes, &sharedPrefix, &registry};
  jobs.emplace_back([good = all[0]](int, long) { return stress::requests(good); });
  for (const std::string& message : all) {
    for (const bool schema : {true, false}) {
      jobs.emplace_back([message, schema](int, long) { return read(message, schema); });
    }
  }
  return jobs;
}

// Each thread does every job at least once, until the end comes. At times all begin with the same,
// at times each with another. The threads share nothing of this: a lock would order them.
bool hammer(const std::vector<Job>& jobs, int threads, int turn, Clock::time_point end) {
  const std::size_t size = jobs.size();
  using Seen = std::vector<std::set<std::string>>;  // of each job, and the identifiers
  std::vector<Seen> seen(static_cast<std::size_t>(threads), Seen(size + 1));
  std::barrier released(threads);
  std::vector<std::thread> running;
  for (int thread = 0; thread < threads; ++thread) {
    running.emplace_back([&, thread, mine = &seen[static_cast<std::size_t>(thread)]] {
      const auto shift = static_cast<std::size_t>(turn % 2 == 0 ? turn / 2 : turn + thread * 3);
      released.arrive_and_wait();
      long round = 0;
      do {
        for (std::size_t step = 0; step < size; ++step) {
          const std::size_t job = (step + shift) % size;
          (*mine)[job].insert(jobs[job](thread, round));
        }
        mine->back().insert(randomUuid());
      } while (++round, Clock::now() < end);
    });
  }
  for (std::thread& thread : running) thread.join();

  // All results of each job are those of a single thread, and no identifier came twice.
  std::size_t identifiers = 0;
  for (Seen& each : seen) identifiers += each.back().size();
  for (Seen& each : seen) seen.front().back().merge(each.back());
  bool good = seen.front().back().size() == identifiers;
  for (std::size_t job = 0; job < size; ++job) {
    std::set<std::string> results = {jobs[job](0, 0)};
    for (Seen& each : seen) results.merge(each[job]);
    if (results.size() == 1) continue;
    for (const auto& result : results) std::cout << "job " << job << ": " << result << std::endl;
    good = false;
  }
  return good;
}

bool firstUse(const std::vector<Job>& jobs, int threads, int turn) {
  const pid_t child = ::fork();
  if (child == 0) std::exit(hammer(jobs, threads, turn, Clock::now()) ? 0 : 1);
  int status = -1;
  ::waitpid(child, &status, 0);
  if (status != 0) std::cout << "first use " << turn << " ended with " << status << std::endl;
  return status == 0;
}

}  // namespace

int main(int count, char** arguments) {
  const auto number = [&](int position, int otherwise) {
    return count > position ? std::atoi(arguments[position]) : otherwise;
  };
  const int threads = number(2, 6), processes = number(3, 12);
  const std::vector<Job> jobs = makeJobs();
  bool good = true;
  for (int turn = 0; turn < processes; ++turn) good = firstUse(jobs, threads, turn) && good;
  std::cout << processes << " first uses by " << threads << " threads" << std::endl;
  setDiagnosticObserverForTesting([](std::string_view) noexcept {});
  good = hammer(jobs, threads, 0, Clock::now() + std::chrono::seconds(number(1, 3))) && good;
  std::cout << (good ? "all as a single thread does it" : "FAILED") << std::endl;
  return good ? 0 : 1;
}
