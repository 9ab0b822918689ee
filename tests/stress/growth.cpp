// Searches for messages whose cost grows faster than their size. See docs/reliability.md.
//
//   growth SECONDS SEED    tries the shape of the seed, and of those after it until the time is up
//
// A find is made as small as it stays one, and printed as a recipe (tests/support/Attack.h).
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>
#include <new>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "kestrelink/standard/StandardForms.h"

#include "tests/fuzz/Targets.h"
#include "tests/stress/Work.h"
#include "tests/support/Attack.h"

namespace {

using namespace kestrelink;

// What is done with a message

const SAMLParserController& controller() { return SAMLParserController::sharedInstance(); }

std::shared_ptr<SAMLResponse> read(const std::string& text, const SharedBytes& schema = nullptr) {
  std::optional<ErrorInfo> error;
  return SAMLResponse::initWithData(std::make_shared<const std::string>(text), schema, &error);
}

void write(const std::string& text) {
  if (const auto message = read(text); message && message->xmlString())
    static_cast<void>(message->docNode());
}

template <class Request>
void standardForm(const std::string& text, const std::shared_ptr<Request>& made) {
  const auto bytes = std::make_shared<const std::string>(text);
  if constexpr (requires { made->setSubjectFromResponse(text); }) {
    made->setSubjectFromResponse(text);
  } else if (const auto response = read(text); response && response->subject()) {
    static_cast<void>(standard::setNameIdFrom(*made, *response->subject()));
  }
  for (const auto& request : {made, Request::initWithData(bytes, nullptr)}) {
    if (!request || !request->requestElement()) continue;
    static_cast<void>(standard::toStandardForm(*request));
    static_cast<void>(request->xmlString());
  }
}

// Requests are filled with pieces of the text.
void fill(const std::string& text) {
  const auto query = controller().newAuthZQuery("r", "i");
  const auto attributes = controller().newAttributeQuery("i");
  std::istringstream pieces(text);
  std::vector<std::string> values;
  for (std::string piece; std::getline(pieces, piece, '<'); values.push_back(piece)) {
    query->addAction(piece);
  }
  attributes->addAttribute("n", values);
  static_cast<void>(query->xmlString());
  static_cast<void>(attributes->xmlString());
}

void joinFromBelow(const std::string& text) {
  const auto message = read(text);
  const auto all = message && message->documentElement() ? message->documentElement()->elements()
                                                         : XMLWrapperElement::List();
  for (std::size_t at = 1; at < std::min<std::size_t>(all.size(), 8000); ++at) {
    all[at]->addChildElement(all[at - 1]);
  }
}

// Expressions that select little of what they visit: a client's own may cost what it likes.
void find(const std::string& text) {
  const auto message = read(text);
  for (const char* const query :
       {"following::x", "*[last()]/preceding::x", "*[1]/following::x[1]", "//x[@ID='i']",
        "(//text())[last()]", "(//@*)[last()]", "(//*)[last()]", "id('i0')"}) {
    if (message) message->getResultsByXpathQuery(query);
  }
}

struct Operation {
  const char* name;
  void (*run)(const std::string& text);
};
const Operation kOperations[] = {
    {"read with schema", [](const std::string& text) { read(text, controller().schema()); }},
    {"read without schema", [](const std::string& text) { read(text); }},
    {"write", write},
    {"copy a subject", [](const std::string& text) { stress::requests(text); }},
    {"standard form",
     [](const std::string& text) {
       standardForm(text, controller().newAuthNRequest("i"));
       standardForm(text, controller().newAttributeQuery("i"));
       standardForm(text, controller().newLogoutRequest());
     }},
    {"get",
     [](const std::string& text) {
       if (const auto response = read(text)) fuzz::readingOf(*response);
     }},
    {"fill", fill},
    {"join from below", joinFromBelow},
    {"find", find}};

// What messages are made of

class Composer {
 public:
  explicit Composer(std::uint64_t seed) : random_(seed) {
    std::istringstream lines(fuzz::contentOf(RULES));
    for (std::string line; std::getline(lines, line);) {
      const std::size_t colon = line.find(": ");
      if (line.empty() || line.starts_with('#')) continue;
      for (std::size_t at; (at = line.find("\\x")) != std::string::npos;) {
        line.replace(at, 4, 1, static_cast<char>(std::stoi(line.substr(at + 2, 2), nullptr, 16)));
      }
      rules_[line.substr(0, colon)].push_back(line.substr(colon + 2));
    }
  }

  std::size_t below(std::size_t end) { return static_cast<std::size_t>(random_() % end); }

  // In the recipe one to three counts follow the scale.
  std::string recipe() {
    for (std::string made;; scaled_ = 0) {
      left_ = 10 << below(5);
      made = some("message", 300);
      if (scaled_ > 0) return made;
    }
  }

 private:
  std::string count(int& mostTimes) {
    if (scaled_ < 3 && below(4) == 0) return ++scaled_, "1";
    constexpr int kTimes[] = {1, 2, 3, 10, 30, 300};
    const int times = std::min(kTimes[below(std::size(kTimes))], mostTimes);
    mostTimes /= times;
    return "=" + std::to_string(times);
  }

  std::string several(const std::string& name, int mostTimes) {
    if (left_ < 0 || below(2) == 0) return "";
    const std::string times = below(2) == 0 ? "=1" : count(mostTimes);
    return "@{" + times + "|" + some(name, mostTimes) + "}";
  }

  std::string some(const std::string& name, int mostTimes) {
    static const std::regex kParts(R"(~|\$([a-z]+)([*?]?)|[^~$]+)");
    if (--left_ < -100) return "";  // too deep
    const std::string& rule = rules_.at(name)[below(rules_.at(name).size())];
    const std::string times = rule.find('~') == std::string::npos ? "" : count(mostTimes);
    std::string made;
    for (std::sregex_iterator part(rule.begin(), rule.end(), kParts), end; part != end; ++part) {
      const std::string text = part->str(), mark = part->str(2);
      if (text == "~") made += times;
      if (mark == "*") made += several(part->str(1), mostTimes);
      if (text[0] != '$' && text != "~") made += text;
      if (text[0] != '$' || mark == "*" || (mark == "?" && below(3) != 0)) continue;
      made += some(part->str(1), mostTimes);
    }
    return made;
  }

  std::mt19937_64 random_;
  std::map<std::string, std::vector<std::string>> rules_;
  int scaled_ = 0, left_ = 0;
};

struct Shape {
  std::string recipe;
  const Operation* operation;
  int scale;

  std::string text(int times) const { return fuzz::expanded(recipe, scale * times); }
};

// At a scale at which four times as much is of a size drawn too.
Shape shapeOf(std::uint64_t seed) {
  Composer random(seed);
  const std::size_t chosen = random.below(2 * std::size(kOperations));
  Shape shape{"", &kOperations[chosen < std::size(kOperations) ? chosen : 0], 1};
  const std::size_t most = std::size_t{12'000} << random.below(10);
  for (std::size_t size = 0; size == 0 || size > most;) {
    shape.recipe = random.recipe();
    size = shape.text(4).size();
  }
  while (shape.text(8).size() <= most && shape.scale < 1'000'000) shape.scale *= 2;
  return shape;
}

// What a message costs

struct Trial {
  double bytes, seconds, kilobytes;
  bool ended;

  bool isTooMuch() const { return !ended || kilobytes > 60'000 + 60 * bytes / 1000; }
};

Trial tried(const Shape& shape, int times, int repetitions) {
  static const long own = fuzz::peakOf([] { read("<a/>", controller().schema()); });
  const std::string text = shape.text(times);
  const auto work = [&] {
    try {
      shape.operation->run(text);
    } catch (const std::bad_alloc&) {
      _exit(1);
    }
  };
  Trial least{static_cast<double>(text.size()), 1e9, 0, true};
  for (; repetitions > 0 && least.ended; --repetitions) {
    const fuzz::Cost cost = fuzz::costOf(work, 10, rlim_t{3} << 30);
    least.seconds = std::min(least.seconds, cost.seconds);
    least.kilobytes = static_cast<double>(cost.kilobytes - own);
    least.ended = cost.ended;
  }
  return least;
}

// More than 2.3 times for each doubling of the message.
bool growsFaster(double before, double after, double doublings) {
  return std::log2(after / std::max(before, 1e-3)) > std::log2(2.3) * doublings;
}

// What looks like growth must do so again: on a busy machine times differ.
bool isFind(const Shape& shape, int repetitions = 1) {
  constexpr double kFloorSeconds = 1, kFloorKilobytes = 60'000;
  const Trial twice = tried(shape, 4, repetitions);
  if (twice.isTooMuch()) return true;
  if (twice.seconds < kFloorSeconds && twice.kilobytes < kFloorKilobytes) return false;
  const Trial once = tried(shape, 2, repetitions);
  const double doublings = std::max(std::log2(twice.bytes / once.bytes), 0.5);
  const bool isGrowing =
      once.isTooMuch() ||
      (twice.seconds > kFloorSeconds && growsFaster(once.seconds, twice.seconds, doublings)) ||
      (twice.kilobytes > kFloorKilobytes &&
       growsFaster(once.kilobytes, twice.kilobytes, doublings));
  return isGrowing && (repetitions > 1 || isFind(shape, 4));
}

// Leaves out what it can in some tries: first long runs of pieces, then single ones.
Shape shrunk(Shape shape) {
  static const std::regex kPieces(R"(@\{=?\d+\||<[^<>@ ]*>?|[ @<]?[^<>@ }]+|[^])");
  std::vector<std::string> kept(
      std::sregex_token_iterator(shape.recipe.begin(), shape.recipe.end(), kPieces), {});
  int tries = 0;
  for (std::size_t length = kept.size() / 2; length > 0; length /= 2) {
    for (std::size_t at = 0; at < kept.size() && ++tries < 300;) {
      Shape smaller{"", shape.operation, shape.scale};
      for (std::size_t each = 0; each < kept.size(); ++each) {
        if (each < at || each >= at + length) smaller.recipe += kept[each];
      }
      const std::size_t size = smaller.text(4).size();
      const auto from = kept.begin() + static_cast<std::ptrdiff_t>(at);
      const std::size_t fewer = std::min(length, kept.size() - at);
      if (size > smaller.text(2).size() && size <= shape.text(4).size() && isFind(smaller)) {
        kept.erase(from, from + static_cast<std::ptrdiff_t>(fewer));
        shape = smaller;
      } else {
        at += length;
      }
    }
  }
  return shape;
}

bool search(std::uint64_t seed) {
  Shape shape = shapeOf(seed);
  if (!isFind(shape)) return false;
  while (shape.scale > 1 && isFind({shape.recipe, shape.operation, shape.scale / 2})) {
    shape.scale /= 2;
  }
  shape = shrunk(shape);
  std::printf("seed %ju, %s, scale %d:", seed, shape.operation->name, shape.scale);
  for (const int times : {1, 2, 4}) {
    const Trial trial = tried(shape, times, 3);
    std::printf("  %.0f KB %s%.2f s %.0f MB", trial.bytes / 1000, trial.ended ? "" : "ended at ",
                trial.seconds, trial.kilobytes / 1000);
  }
  std::printf("\n%s\n", shape.recipe.c_str());
  std::fflush(stdout);
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::seconds(std::stol(arguments[1]));
  fuzz::start();
  int tries = 0, finds = 0;
  for (std::uint64_t seed = std::stoull(arguments[2]); tries == 0 || Clock::now() < end; ++seed) {
    finds += search(seed) ? 1 : 0;
    ++tries;
  }
  std::printf("%d shapes, %d finds\n", tries, finds);
  return finds > 0 ? 1 : 0;
}
