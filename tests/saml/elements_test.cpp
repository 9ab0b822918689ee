// The rules of the element classes, over inline XML.

#include <algorithm>
#include <regex>
#include <set>

#include "kestrelink/platform/Uuid.h"
#include "kestrelink/saml/elements/SAMLNames.h"

#include "tests/support/ElementTable.h"
#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

// Makes "." in the tag names below an element a ":", which only trees made in memory have there.
void setPrefixes(const XMLWrapperElement& element) {
  for (const auto& child : element.elements()) {
    std::string name = child->tagName().value();
    std::replace(name.begin(), name.end(), '.', ':');
    child->setTagName(name);
    setPrefixes(*child);
  }
}

// Of each maker: the prefix of its namespace, its order of children, and what it makes.
std::string allMade() {
  std::string all;
  for (const ElementRow& row : elementTable()) {
    if (row.make == nullptr) continue;
    std::optional<ErrorInfo> error;
    const auto made = row.make(&error);
    all.append(row.elementClass->name());
    if (made) {
      const auto& own = made->namespaces();
      all += " prefix=" + (own.empty() ? "-" : shown(own.at(0)->prefix())) +
             " order=" + shown(made->childElementSequence());
    }
    all += "\n" + (made ? shown(made->xmlString()) : text(error)) + "\n";
  }
  return all;
}

TEST(Elements, GoldenFiles) {
  const StandingClock clock("2020-01-01T00:00:00Z");
  setUuidSourceForTesting([] { return std::string("0B1F6F0E-3A55-4F0C-9A4B-6E0E5B1C7D21"); });
  const LogCapture log;
  std::map<const XMLWrapperElementClass*, ElementRow> rows;
  for (const ElementRow& row : elementTable()) rows.emplace(row.elementClass, row);
  std::set<std::string_view> seen;
  std::string read;
  const auto all = root(file("tests/golden/elements/read.xml"));
  setPrefixes(*all);
  for (const auto& element : all->elements()) {
    const ElementRow& row = rows.at(&element->dynamicClass());
    seen.insert(row.elementClass->name());
    read.append(row.elementClass->name()).append(row.read(*element)).append("\n");
  }
  expectAllKept("tests/golden/elements/", ".txt", {{"made.txt", allMade()}, {"read.txt", read}});
  EXPECT_EQ(seen.size(), rows.size() - 2) << "only the two base classes are no element's";
  setUuidSourceForTesting(nullptr);
}

// Each class and each getter that a header declares has its place in the table.
TEST(Elements, AreAllInTheTable) {
  std::map<std::string, std::string> read;
  for (const ElementRow& row : elementTable()) {
    read.emplace(row.elementClass->name(), row.read(*row.elementClass->makeInstance()));
  }
  const std::regex declared(
      R"(class KESTRELINK_TYPE (\w+)|virtual [^;(]*[ &](\w+)\((?:ErrorOut error = nullptr)?\) const;)");
  std::size_t classes = 0;
  for (const auto& header :
       std::filesystem::directory_iterator(SOURCE_DIR "/kestrelink/saml/elements")) {
    const std::string source = header.path().extension() == ".h" ? fuzz::contentOf(header) : "";
    std::string name;
    for (std::sregex_iterator at(source.begin(), source.end(), declared), end; at != end; ++at) {
      if ((*at)[1].matched) name = (*at)[1], ++classes;
      EXPECT_TRUE(read.contains(name)) << name;
      EXPECT_TRUE((*at)[1].matched || read[name].find(" " + at->str(2) + "=") != std::string::npos)
          << name << "::" << (*at)[2];
    }
  }
  EXPECT_EQ(classes + 1, read.size()) << "with XMLWrapperElement";
}

TEST(Assertion, Audience) {
  const auto assertion = root<SAMLAssertion>(
      "<Assertion><Conditions><AudienceRestriction><Audience>a</Audience><Audience>b</Audience>"
      "</AudienceRestriction><AudienceRestriction><Audience>c</Audience></AudienceRestriction>"
      "</Conditions></Assertion>");
  EXPECT_TRUE(assertion->isValidForRequestor("b"));
  EXPECT_FALSE(assertion->isValidForRequestor("c"));
  EXPECT_FALSE(root<SAMLAssertion>("<Assertion/>")->isValidForRequestor(""));
}

// Each row at 2020-01-01T00:00:00Z, and half a second later.
TEST(Conditions, TimeWindow) {
  const std::pair<const char*, bool> rows[] = {
      {"", true},
      {"NotBefore='2020-01-01T00:00:00Z'", true},
      {"NotBefore='2020-01-01T00:00:01Z'", false},
      {"NotOnOrAfter='2020-01-01T00:00:00Z'", false},
      {"NotOnOrAfter='2020-01-01T00:00:01Z'", true},
      {"NotBefore='2019-01-01T00:00:00Z' NotOnOrAfter='9999-12-31T23:59:59Z'", true},
      {"NotBefore='2021-01-01T00:00:00Z' NotOnOrAfter='2022-01-01T00:00:00Z'", false},
      {"NotOnOrAfter='2019-01-01T00:00:00.5Z'", true},  // does not parse: no restriction
      {"NotBefore='2030-01-01T00:00:00+01:00'", true},  // nor this
  };
  for (const auto& [attributes, met] : rows) {
    for (const int later : {0, 500}) {
      const StandingClock clock("2020-01-01T00:00:00Z", std::chrono::milliseconds(later));
      std::optional<ErrorInfo> error;
      const auto conditions = root<SAMLConditions>("<Conditions " + std::string(attributes) + "/>");
      EXPECT_EQ(conditions->assertionMeetsConditions(&error), met) << attributes;
      EXPECT_EQ(text(error), met ? "none" : "SAMLParserErrorDomain 401") << attributes;
    }
  }
}

TEST(AuthNStatement, ValidUntilItsSessionEnds) {
  const std::pair<const char*, bool> rows[] = {
      {"SessionNotOnOrAfter='2020-01-01T00:00:01Z'", true},
      {"SessionNotOnOrAfter='2020-01-01T00:00:00Z'", false},
      {"SessionNotOnOrAfter='2030-01-01T00:00:00.5Z'", false},
      {"NotOnOrAfter='2030-01-01T00:00:00Z'", false},
  };
  const StandingClock clock("2020-01-01T00:00:00Z");
  for (const auto& [attribute, valid] : rows) {
    const std::string statement = std::string("<AuthnStatement ") + attribute + "/>";
    EXPECT_EQ(root<SAMLAuthNStatement>(statement)->isValid(), valid) << attribute;
    std::optional<ErrorInfo> error;
    const auto assertion =
        root<SAMLAssertion>("<Assertion><Signature/>" + statement + "</Assertion>");
    EXPECT_EQ(assertion->isValid(&error), valid);
    EXPECT_EQ(text(error), valid ? "none" : "SAMLParserErrorDomain 401");
  }
  EXPECT_TRUE(root<SAMLAssertion>("<Assertion/>")->isValid());
}

TEST(Advice, ReferencesStayEmpty) {
  const auto advice = SAMLAdvice::createElement();
  advice->setAssertion(SAMLAssertion::createElement());
  advice->setAssertionIDRef("_a");
  advice->setAssertionURIRef("urn:a");
  EXPECT_EQ(shown(advice->elements(), advice->assertionIDRef(), advice->assertionURIRef()),
            "[<Assertion> <AssertionIDRef> <AssertionURIRef>] - -");
}

// Both classes that order their own children: what is written, and nothing when a child is missing.
TEST(OwnOrder, WritesAllOrNothing) {
  const std::pair<const char*, std::optional<std::string>> rows[] = {
      {"<SubjectConfirmation><SubjectConfirmationData/><x/><NameId/><NameId/>"
       "<SubjectConfirmationData/></SubjectConfirmation>",
       "<SubjectConfirmation>\n  <NameId/>\n  <SubjectConfirmationData/>\n</SubjectConfirmation>"},
      {"<SubjectConfirmation><NameId/></SubjectConfirmation>", std::nullopt},
      {"<SignedInfo><Reference URI='1'/><SignatureMethod/><Reference URI='2'/><x/>"
       "<CanonicalizationMethod/></SignedInfo>",
       "<SignedInfo>\n  <CanonicalizationMethod/>\n  <SignatureMethod/>\n  <Reference URI=\"1\"/>\n"
       "  <Reference URI=\"2\"/>\n</SignedInfo>"},
      {"<SignedInfo><SignatureMethod/></SignedInfo>", std::nullopt},
      {"<SignedInfo><CanonicalizationMethod/><x/></SignedInfo>", std::nullopt},
      {"<r><SubjectConfirmation/><c/></r>", "<r>\n  <c/>\n</r>"},
  };
  const LogCapture log;
  for (const auto& [xml, expected] : rows) {
    const auto element = root(xml);
    const std::size_t children = element->elements().size();
    for (const auto time : {"once", "twice"})
      EXPECT_EQ(element->xmlString(), expected) << xml << time;
    EXPECT_TRUE(expected || element->elements().size() == children) << "nothing dropped: " << xml;
  }
  EXPECT_EQ(LogCapture::lines().size(), 8u);
}

}  // namespace
}  // namespace kestrelink::testing
