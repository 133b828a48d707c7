#include "app/serve/answer_head.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <iterator>
#include <random>
#include <string_view>

#include <fmt/format.h>
#include <boost/beast/http/status.hpp>

#include "app/serve/access_log.h"

namespace svmscore::app {
namespace {

using serve::Answer;

// Two services, and one after a restart, give other ids.
std::uint64_t Seed() {
  std::random_device device;
  return (std::uint64_t{device()} << 32U) | device();
}

// The time in the form of HTTP, anew each second.
const std::string& Date() {
  static constexpr std::array<const char*, 7> kDays = {"Sun", "Mon", "Tue", "Wed",
                                                       "Thu", "Fri", "Sat"};
  static constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  thread_local std::time_t told = -1;
  thread_local std::string text;
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  if (now != told && gmtime_r(&now, &utc) != nullptr) {
    text = fmt::format("{}, {:02} {} {} {:02}:{:02}:{:02} GMT",
                       kDays[static_cast<std::size_t>(utc.tm_wday)], utc.tm_mday,
                       kMonths[static_cast<std::size_t>(utc.tm_mon)], utc.tm_year + 1900,
                       utc.tm_hour, utc.tm_min, utc.tm_sec);
    told = now;
  }
  return text;
}

std::string_view ReasonOf(unsigned status) {
  const auto reason =
      boost::beast::http::obsolete_reason(boost::beast::http::int_to_status(status));
  return {reason.data(), reason.size()};
}

}  // namespace

std::string RequestId(const std::string& given, std::atomic<std::uint64_t>& requests) {
  if (serve::IsModelId(given)) return given;
  static const std::uint64_t seed = Seed();
  return fmt::format("{:016x}", seed + requests++);
}

std::string HeadOf(const Answer& answer, const std::string& request_id, bool keeps_alive,
                   bool old) {
  std::string head;
  head.reserve(512);
  const auto add = [&head](std::string_view name, std::string_view value) {
    head += name;
    head += ": ";
    head += value;
    head += "\r\n";
  };
  fmt::format_to(std::back_inserter(head), "HTTP/1.1 {} {}\r\n", answer.status,
                 ReasonOf(answer.status));
  if (answer.status != 204) {
    add("Content-Type", answer.content_type);
    fmt::format_to(std::back_inserter(head), "Content-Length: {}\r\n", answer.Body().size());
  }
  add("Date", Date());
  add("X-Request-Id", request_id);
  if (!answer.sha256.empty()) add("X-Model-SHA256", answer.sha256);
  for (const auto& [name, value] : answer.headers) add(name, value);
  if (answer.status == 503) add("Retry-After", "1");
  if (!keeps_alive) {
    add("Connection", "close");
  } else if (old) {
    add("Connection", "keep-alive");
  }
  head += "\r\n";
  return head;
}

std::string LogLine(const std::string& request_id, serve::Method method, const serve::Route& route,
                    const Answer& answer, double seconds) {
  std::string line;
  line.reserve(256);
  fmt::format_to(std::back_inserter(line),
                 "{{\"time\":\"{}\",\"id\":\"{}\",\"method\":\"{}\",\"route\":\"{}\"", TimeStamp(),
                 request_id, NameOf(method), route.Name());
  if (!answer.model_id.empty()) {
    fmt::format_to(std::back_inserter(line), ",\"model\":\"{}\"", answer.model_id);
  }
  const serve::RowCounts& rows = answer.rows;
  if (rows.All() > 0) {
    fmt::format_to(std::back_inserter(line),
                   ",\"rows\":{},\"statuses\":{{\"0\":{},\"90027\":{},\"90029\":{}}}", rows.All(),
                   rows.scored, rows.invalid, rows.missing);
  }
  fmt::format_to(std::back_inserter(line), ",\"code\":{},\"ms\":{:.3f}}}", answer.status,
                 seconds * 1000.0);
  return line;
}

}  // namespace svmscore::app
