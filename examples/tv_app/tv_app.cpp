// A television app in one page: it shows where to sign in, takes the response, stays signed in when
// it is started again, asks the provider about the subscriber, and signs out.
//
//     tv_app PORT METADATA KEY CERTIFICATE FOLDER
//
// It listens on 127.0.0.1, and keeps the session and what is pending in files of the folder.

#include <httplib.h>
#include <kestrelink/signin/SignIn.h>
#include <kestrelink/standard/StandardReading.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace signin = kestrelink::signin;

namespace {

constexpr const char* kChannel = "https://harbour-tv.example/live";

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string escaped(const std::string& text) {
  std::string html;
  for (const char each : text) {
    const bool isPlain = std::string_view("&<>\"'").find(each) == std::string_view::npos;
    html += isPlain ? std::string(1, each) : "&#" + std::to_string(each) + ";";
  }
  return html;
}

// What the app remembers, one file each: of one subscriber, for a television has one.
class Store {
 public:
  explicit Store(std::filesystem::path folder) : folder_(std::move(folder)) {
    std::filesystem::create_directories(folder_);
    std::filesystem::permissions(folder_, std::filesystem::perms::owner_all);
  }
  std::string read(const char* name) const { return contentOf(folder_ / name); }
  void write(const char* name, const std::string& text) const {
    std::ofstream(folder_ / name) << text;
  }
  void remove(const char* name) const { std::filesystem::remove(folder_ / name); }

 private:
  std::filesystem::path folder_;
};

class App {
 public:
  App(signin::Client client, signin::Provider provider, Store store)
      : client_(client),
        signIn_(std::move(client), std::move(provider)),
        store_(std::move(store)) {}

  void serveOn(int port) {
    httplib::Server server;
    server.Get("/", [this](const auto&, auto& page) { show(page); });
    server.Get("/metadata", [this](const auto&, auto& page) {
      page.set_content(signin::metadataOf(client_), "application/samlmetadata+xml");
    });
    server.Get("/sign-in", [this](const auto&, auto& page) { send(signIn_.begin(), page); });
    server.Post("/acs", [this](const auto&, auto& page, const httplib::ContentReader& body) {
      finish(bodyFrom(body), page);
    });
    server.Get("/attributes", [this](const auto&, auto& page) { attributes(page); });
    server.Get("/watch", [this](const auto&, auto& page) { watch(page); });
    server.Get("/sign-out", [this](const auto&, auto& page) { signOut(page); });
    server.Get("/signed-out", [this](const auto& got, auto& page) { signedOut(got.target, page); });
    server.Post("/signed-out", [this](const auto&, auto& page, const httplib::ContentReader& body) {
      signedOut(bodyFrom(body), page);
    });
    std::cout << "http://127.0.0.1:" << port << "/\n" << std::flush;
    server.listen("127.0.0.1", port);
  }

 private:
  // httplib refuses a form of more than 8 KB unless it is read by hand.
  static std::string bodyFrom(const httplib::ContentReader& reader) {
    std::string body;
    reader([&body](const char* bytes, std::size_t length) {
      body.append(bytes, length);
      return body.size() <= signin::Policy().mostBytes;
    });
    return body;
  }

  // The session of the file, if it has not ended.
  std::optional<signin::Session> session() const {
    const std::string text = store_.read("session");
    return text.empty() ? std::nullopt : signIn_.resume(text).session;
  }

  static void say(const std::string& html, httplib::Response& page) {
    page.set_content("<!DOCTYPE html><meta charset=\"utf-8\"><title>Harbour</title>\n" + html,
                     "text/html");
  }

  void show(httplib::Response& page) const {
    const auto signedIn = session();
    if (!signedIn) return say("<p><a href=\"/sign-in\">Sign in</a></p>\n", page);
    say("<p>Welcome, " + escaped(signedIn->subscriber) +
            "</p>\n<p><a href=\"/attributes\">About you</a> <a href=\"/watch\">Watch</a> "
            "<a href=\"/sign-out\">Sign out</a></p>\n",
        page);
  }

  // Sends the browser to the provider, and remembers what was asked.
  void send(const signin::Started& started, httplib::Response& page) const {
    if (!started) return say("<p>" + escaped(started.reason) + "</p>\n", page);
    store_.write("pending", started.pending);
    if (started.url.empty()) return page.set_content(started.form, "text/html");
    page.set_redirect(started.url);
  }

  void finish(const std::string& received, httplib::Response& page) const {
    const auto result = signIn_.finish(received, store_.read("pending"));
    if (result.verdict != signin::Verdict::refused) store_.remove("pending");
    if (!result.session) return say("<p>" + escaped(result.explanation) + "</p>\n", page);
    store_.write("session", result.session->text);
    page.set_redirect("/", 303);
  }

  // Posts a query to the provider, or a logout request that goes by SOAP.
  static std::string answerTo(const signin::Started& started) {
    const std::size_t path = started.endpoint.find('/', started.endpoint.find("//") + 2);
    httplib::Client provider(started.endpoint.substr(0, path));
    const auto answer =
        provider.Post(path == std::string::npos ? "/" : started.endpoint.substr(path).c_str(),
                      {{"SOAPAction", ""}}, started.body, "text/xml");
    return answer ? answer->body : "";
  }

  template <class Ask, class Show>
  void ask(Ask begin, Show shown, httplib::Response& page) const {
    const auto signedIn = session();
    if (!signedIn) return page.set_redirect("/");
    const signin::Started started = begin(*signedIn);
    if (!started) return say("<p>" + escaped(started.reason) + "</p>\n", page);
    const auto result = signIn_.finishQuery(answerTo(started), started.pending);
    const bool isAnswered = result.verdict == signin::Verdict::answered;
    say("<p>" + escaped(isAnswered ? shown(*result.response) : result.explanation) + "</p>\n",
        page);
  }

  void attributes(httplib::Response& page) const {
    const auto begin = [this](const signin::Session& session) {
      return signIn_.askAttributes(session, {});
    };
    const auto shown = [](const kestrelink::SAMLResponse& response) {
      std::string text;
      for (const auto& [name, values] : response.attributes()) {
        text += name + ":";
        for (const std::string& value : values) text += " " + value;
        text += "; ";
      }
      return text;
    };
    ask(begin, shown, page);
  }

  void watch(httplib::Response& page) const {
    const auto begin = [this](const signin::Session& session) {
      return signIn_.askDecision(session, {.resource = kChannel});
    };
    const auto shown = [](const kestrelink::SAMLResponse& response) {
      return kestrelink::standard::decisionForResource(response, kChannel).value_or("no decision");
    };
    ask(begin, shown, page);
  }

  void signOut(httplib::Response& page) const {
    const auto signedIn = session();
    if (!signedIn) return page.set_redirect("/");
    const auto started = signIn_.beginLogout(*signedIn);
    store_.remove("session");  // whatever the provider says: the subscriber wants to be forgotten
    if (!started || started.body.empty()) return send(started, page);
    store_.write("pending", started.pending);
    signedOut(answerTo(started), page);
  }

  void signedOut(const std::string& received, httplib::Response& page) const {
    const auto result = signIn_.finishLogout(received, store_.read("pending"));
    if (result.verdict != signin::Verdict::refused) store_.remove("pending");
    say("<p>" + escaped(result.explanation) + "</p>\n", page);
  }

  signin::Client client_;
  signin::SignIn signIn_;
  Store store_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 6) {
    std::cerr << "usage: tv_app PORT METADATA KEY CERTIFICATE FOLDER\n";
    return 2;
  }
  std::string reason;
  auto provider = signin::providerFromMetadata(contentOf(argv[2]), "", reason);
  if (!provider) {
    std::cerr << "tv_app: " << reason << "\n";
    return 1;
  }
  const std::string self = "http://127.0.0.1:" + std::string(argv[1]);
  signin::Client client{.entityId = self + "/metadata",
                        .assertionConsumer = self + "/acs",
                        .logoutService = self + "/signed-out",
                        .name = "Harbour",
                        .signingKey = contentOf(argv[3]),
                        .signingCertificate = contentOf(argv[4]),
                        .decryptionKeys = {contentOf(argv[3])},
                        .encryptionCertificate = contentOf(argv[4])};
  App(std::move(client), std::move(*provider), Store(argv[5])).serveOn(std::stoi(argv[1]));
}
