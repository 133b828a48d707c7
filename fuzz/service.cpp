// Any bytes as a request to the service, without a connection: a line "METHOD TARGET", headers, a
// blank line, and a body.
#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/serve/answer_head.h"
#include "app/serve/table_scoring.h"
#include "fuzz/checked_scoring.h"
#include "fuzz/promise.h"
#include "fuzz/time_limit.h"
#include "tools/serve/case_requests.h"
#include "tools/serve/content.h"
#include "tools/serve/json_scanner.h"
#include "tools/serve/request_checks.h"
#include "tools/serve/service.h"

namespace svmscore::fuzz {
namespace {

using Json = nlohmann::json;
using serve::Answer;
using serve::Method;

constexpr std::size_t kMostBody = 65536;
constexpr std::size_t kMostRows = 100;

struct Served {
  serve::ModelStore store;
  serve::Metrics metrics;
  serve::Service service{
      store,
      metrics,
      {{kMostRows},
       [](const serve::ServedModel& model, std::string& table, const serve::Route& route,
          serve::RowCounts& rows) {
         return app::ScoreTable(model, table, route, {kMostRows, kMostBody}, rows);
       },
       "<!doctype html>",
       "default-src 'none'"}};

  Served() {
    std::ifstream file(FUZZ_FOLDER "/table.pmml", std::ios::binary);
    std::string document{std::istreambuf_iterator<char>(file), {}};
    serve::ReadingRules rules;
    rules.plugin = ThePlugin().Path();
    store.Put(std::make_unique<serve::ServedModel>("m", std::move(document), rules));
    store.SetProblem("broken", "it is broken");
    service.SetReady(true);
  }
};

// The bytes up to the character, which are taken off with it.
std::string_view Take(std::string_view& text, char end) {
  const std::size_t size = std::min(text.find(end), text.size());
  const std::string_view taken = text.substr(0, size);
  text.remove_prefix(std::min(size + 1, text.size()));
  return taken;
}

serve::RequestHead ReadHead(std::string_view& bytes) {
  constexpr std::array<Method, 7> kMethods = {Method::kGet,  Method::kHead,   Method::kPost,
                                              Method::kPut,  Method::kDelete, Method::kOptions,
                                              Method::kOther};
  serve::RequestHead head;
  head.host = "localhost";
  std::string_view line = Take(bytes, '\n');
  const std::string_view method = Take(line, ' ');
  head.method = *std::find_if(kMethods.begin(), kMethods.end() - 1,
                              [method](Method known) { return NameOf(known) == method; });
  head.target = line;
  while (!(line = Take(bytes, '\n')).empty()) {
    const std::string_view name = Take(line, ':');
    std::string* const value = name == "Host"               ? &head.host
                               : name == "Origin"           ? &head.origin
                               : name == "Content-Type"     ? &head.content_type
                               : name == "Content-Encoding" ? &head.content_encoding
                               : name == "Authorization"    ? &head.authorization
                                                            : &head.asked_method;
    *value = line;
  }
  return head;
}

// Whether an object of the text has a name twice, as far as it is JSON.
bool HasNameTwice(const std::string& text) {
  std::vector<std::set<std::string>> names;
  bool twice = false;
  const auto look = [&](int, Json::parse_event_t event, Json& value) {
    if (event == Json::parse_event_t::object_start) names.emplace_back();
    if (event == Json::parse_event_t::object_end) names.pop_back();
    if (event == Json::parse_event_t::key && !names.back().insert(value).second) twice = true;
    return true;
  };
  return !Json::parse(text, look, false).is_discarded() && twice;
}

// The scanner and another parser agree on what JSON is. The other one passes over a byte-order
// mark, and takes a NUL for the end.
void CompareParsers(std::string text) {
  if (text.find('\0') != std::string::npos || text.starts_with("\xEF\xBB\xBF")) return;
  const bool known = Json::accept(text);
  const bool twice = known && HasNameTwice(text);
  const std::string original = text;
  bool scanned = true;
  std::string fault;
  try {
    serve::JsonScanner scanner(text);
    scanner.Skip();
    scanner.Finish();
  } catch (const serve::JsonError& error) {
    scanned = false;
    fault = error.what();
  }
  const bool deep = fault.find("nested") != std::string::npos;
  if (known && !twice && !deep) Promise(scanned, "JSON is read: " + fault);
  if (twice && !deep) Promise(!scanned, "a name that is there twice is refused");
  // The other parser refuses a number beyond a double's range.
  const bool large = original.find_first_of("eE") != std::string::npos || original.size() > 300;
  if (scanned && !large) Promise(known, "what is read is JSON");
}

void Check(const Answer& answer, const serve::Route& route, std::size_t body_size) {
  Promise(answer.status >= 200 && answer.status < 600 && answer.status != 500, "no inner error");
  if (answer.content_type == "application/json") {
    const Json told = Json::parse(answer.body, nullptr, false);
    Promise(told.is_object(), "an answer is JSON");
    if (answer.status >= 400) {
      Promise(told.at(route.protocol ? "error" : "message").is_string(), "an error says why");
    }
  }
  if (answer.rows.All() > 0) Promise(answer.status == 200, "only scored rows count");
  Promise(answer.rows.All() <= std::max(kMostRows, body_size), "there are no more rows than bytes");
  for (const auto& [name, value] : answer.headers) {
    Promise((name + value).find_first_of("\r\n") == std::string::npos, "headers are lines");
  }
  Promise(Json::accept(app::LogLine("id", Method::kGet, route, answer, 0.0)), "a log line is JSON");
  Promise(app::HeadOf(answer, "id", true, false).ends_with("\r\n\r\n"), "a head ends");
}

void Ask(std::string_view bytes) {
  static Served served;
  const serve::RequestHead head = ReadHead(bytes);
  const serve::Route route = serve::RouteOf(head.target);
  Promise(route.id.empty() || serve::IsModelId(route.id), "an id is one");
  serve::AccessRules rules;
  rules.hosts = {"localhost"};
  rules.origins = {"https://a.example"};
  rules.allow_upload = true;
  rules.upload_token = "token";
  std::string body(bytes);
  CompareParsers(body);
  std::optional<Answer> answer = CheckHead(head, route, rules);
  const bool upload = head.method == Method::kPut || head.method == Method::kDelete;
  if (!answer && upload) return;
  try {
    if (!answer && head.content_encoding == "gzip") body = serve::Inflated(body, kMostBody);
    if (!answer) {
      static_cast<void>(served.service.IsQuick(route, head.method, body));
      answer = served.service.Handle(route, head.method, body);
    }
  } catch (const serve::BadRequest& error) {
    answer = serve::ErrorAnswer(route, error.Status(), error.what());
  }
  AddCommonHeaders(head, rules, *answer);
  Check(*answer, route, std::max(body.size(), bytes.size()));
}

}  // namespace
}  // namespace svmscore::fuzz

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const svmscore::fuzz::TimeLimit limit;
  svmscore::fuzz::Ask({reinterpret_cast<const char*>(data), size});
  return 0;
}
