#include "app/serve/connection.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <boost/beast/http/error.hpp>

#include "app/serve/answer_head.h"
#include "app/serve/request_head.h"
#include "tools/serve/case_requests.h"
#include "tools/serve/content.h"
#include "tools/serve/request_checks.h"

namespace svmscore::app {
namespace {

namespace asio = boost::asio;
namespace http = boost::beast::http;
using serve::Answer;
using serve::Method;

constexpr std::size_t kHeadChunk = 4096;
constexpr std::size_t kBodyChunk = 65536;
// An answer is cut where its reader takes nothing for so long, and, after a while, where it takes
// less than so many bytes a second.
constexpr int kWriteSeconds = 30;
constexpr std::chrono::seconds kUnhurried{60};
constexpr std::uint64_t kLeastRate = 4096;
// When others need room, a reader keeps his as long as, after some seconds, he takes so much that
// the whole answer takes him no more than a minute.
constexpr std::chrono::seconds kFirstTaken{5};
constexpr std::chrono::duration<double> kWholeTaken{60.0};
// Less is no progress when others need room.
constexpr std::uint64_t kProgress = 16384;
// What a client still sends after the last answer is read for so long, and so much of it, so that
// the answer is not lost to a reset.
constexpr int kLingerSeconds = 2;
constexpr std::size_t kMostThrownAway = std::size_t{1} << 20;

// What the parser takes of the bytes. It throws at a field of 64 KiB, which a head may have by the
// options, and the end of chunks by its room in the buffer.
template <typename Parser>
std::size_t PutInto(Parser& parser, asio::const_buffer bytes, boost::beast::error_code& error) try {
  return parser.put(bytes, error);
} catch (const std::length_error&) {
  error = http::error::header_limit;
  return 0;
} catch (const std::bad_alloc&) {
  error = http::error::buffer_overflow;
  return 0;
}

std::string BodyTooLong(Method method, const ServeOptions& options) {
  const bool upload = method == Method::kPut;
  return fmt::format("the body has more than {} bytes ({})",
                     upload ? options.most_upload : options.most_body,
                     upload ? "--max-upload" : "--max-body");
}

}  // namespace

Connection::Connection(ConnectionPool& pool, ConnectionPool::Socket socket)
    : pool_(pool),
      socket_(std::move(socket)),
      buffer_(pool.Shared().server.options.most_head + kBodyChunk) {}

void Connection::Enter(State state, int seconds) {
  state_ = state;
  entered_ = Clock::now();
  since_ = entered_;
  deadline_ = since_ + std::chrono::seconds(seconds);
  moved_ = 0;
  marked_ = 0;
}

void Connection::NoteMoved(std::uint64_t moved, Clock::time_point now) {
  moved_ = moved;
  if (moved_ - marked_ < kProgress) return;
  marked_ = moved_;
  since_ = now;
}

// What the system still holds has not been taken.
std::uint64_t Connection::Taken() {
  int queued = 0;
  if (ioctl(socket_.native_handle(), SIOCOUTQ, &queued) != 0) {
    return sent_;
  }
  return sent_ - std::min(sent_, static_cast<std::uint64_t>(std::max(queued, 0)));
}

bool Connection::Keeps(const ByteBudget& budget) const {
  if (&budget == &pool_.Shared().answers) return state_ == State::kWriting && out_held_ > 0;
  return state_ == State::kReading && parser_->get().body().Held() > 0;
}

bool Connection::IsSlowReader(Clock::time_point now) const {
  if (state_ != State::kWriting || now - entered_ < kFirstTaken) return false;
  const std::chrono::duration<double> taken = now - entered_;
  return static_cast<double>(moved_) < static_cast<double>(out_held_) * (taken / kWholeTaken);
}

void Connection::GiveWay() {
  if (state_ != State::kReading) return Close();
  boost::beast::error_code ignored;
  socket_.cancel(ignored);
  pool_.Shared().server.metrics.CountRefusal();
  SendError(503, "the body came too slowly while the service was short of memory");
}

void Connection::Start() {
  boost::beast::error_code ignored;
  socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
  NextRequest();
}

void Connection::Refuse() {
  head_.method = Method::kOther;
  SendError(503, "there are too many connections");
}

void Connection::HoldAnswer(std::size_t size) {
  pool_.Shared().answers.held += size - out_held_;
  out_held_ = size;
}

void Connection::Close() {
  if (state_ == State::kWriting && socket_.is_open()) {
    const std::uint64_t taken = Taken();
    pool_.Shared().server.log.Event("cut", route_.id,
                                    fmt::format("the client took {} of the {} bytes of answer {}",
                                                taken - std::min(taken, taken_before_),
                                                out_head_.size() + BodySize(), request_id_));
  }
  HoldAnswer(0);
  boost::beast::error_code ignored;
  socket_.close(ignored);
  pool_.Forget(*this);
}

void Connection::Check(Clock::time_point now) {
  if (state_ == State::kWriting) return CheckWriting(now);
  if (state_ == State::kWorking || now < deadline_) return;
  if (state_ == State::kReading && Begun()) {
    boost::beast::error_code ignored;
    socket_.cancel(ignored);  // what is read no longer has a place to go
    SendError(408, "the request took too long to arrive");
  } else {
    Close();
  }
}

void Connection::CheckWriting(Clock::time_point now) {
  const std::uint64_t taken = Taken();
  if (taken > taken_before_ + moved_) {
    NoteMoved(taken - taken_before_, now);
    deadline_ = now + std::chrono::seconds(kWriteSeconds);
  }
  const std::chrono::duration<double> hurried = now - entered_ - kUnhurried;
  const bool slow = static_cast<double>(moved_) < hurried.count() * double{kLeastRate};
  if (slow || now >= deadline_) Close();
}

void Connection::NextRequest() {
  const ServeOptions& options = pool_.Shared().server.options;
  parser_.emplace();
  parser_->header_limit(static_cast<std::uint32_t>(options.most_head));
  // What the resource takes is known with the head.
  parser_->body_limit(std::numeric_limits<std::uint64_t>::max());
  parser_->get().body().Use(pool_.Shared().bodies);
  has_head_ = false;
  is_clear_ = false;
  head_size_ = 0;
  timed_ = false;
  head_ = {};
  head_.method = Method::kOther;
  route_ = {};
  request_id_.clear();
  Enter(State::kReading, options.idle_seconds);
  if (buffer_.size() > 0) return Parse();
  if (buffer_.capacity() > kHeadChunk) buffer_.shrink_to_fit();  // a body needed more
  Read();
}

void Connection::Read() {
  const std::size_t chunk = has_head_ ? kBodyChunk : kHeadChunk;
  const std::size_t room = std::min(chunk, buffer_.max_size() - buffer_.size());
  if (room == 0) return SendError(400, "the header of a chunk is too long");
  socket_.async_read_some(buffer_.prepare(room),
                          [self = shared_from_this()](const ErrorCode& error, std::size_t count) {
                            if (self->state_ != State::kReading) return;
                            if (error) return self->Close();
                            self->buffer_.commit(count);
                            self->NoteMoved(self->moved_ + count, Clock::now());
                            self->Parse();
                          });
}

void Connection::Parse() {
  if (!std::exchange(timed_, true)) {
    since_ = Clock::now();
    begun_ = since_;
    deadline_ = since_ + std::chrono::seconds(pool_.Shared().server.options.read_seconds);
  }
  while (!parser_->is_done()) {
    ErrorCode error;
    bool folds = false;
    if (buffer_.size() > 0) {
      const std::size_t needs = parser_->get().body().Needs(buffer_.size());
      if (needs > 0) pool_.MakeMemory(pool_.Shared().bodies, needs);
      if (state_ != State::kReading) return;
      const std::size_t count = PutInto(*parser_, buffer_.data(), error);
      // The parser takes a header as a whole, but not all at once, and does not add them up.
      folds = !has_head_ && IsFolded({static_cast<const char*>(buffer_.data().data()), count});
      buffer_.consume(count);
      if (!has_head_) head_size_ += count;
      if (head_size_ > pool_.Shared().server.options.most_head) error = http::error::header_limit;
    } else {
      error = http::error::need_more;
    }
    if (error && error != http::error::need_more) return FailParse(error);
    if (folds) return SendError(400, "a header goes on in a second line");
    if (!has_head_ && parser_->is_header_done()) {
      has_head_ = true;
      parser_->eager(true);
      if (std::optional<Answer> answer = TakeHead()) return Send(std::move(*answer));
      continue;
    }
    if (error) return Read();
  }
  TakeRequest();
}

void Connection::FailParse(const ErrorCode& error) {
  if (error == http::error::header_limit) {
    const bool in_line = !parser_->is_header_done() && parser_->get().target().empty();
    if (in_line) return SendError(414, "the request line is too long");
    return SendError(431,
                     fmt::format("the line and the headers of the request have more than {} bytes",
                                 pool_.Shared().server.options.most_head));
  }
  if (error == http::error::body_limit) {
    return SendError(413, BodyTooLong(head_.method, pool_.Shared().server.options));
  }
  if (error == http::error::buffer_overflow) {
    pool_.Shared().server.metrics.CountRefusal();
    return SendError(503, "the service holds too many bodies at present");
  }
  if (error == http::error::bad_version) {
    return SendError(505, "the request is of another version than HTTP/1.0 and HTTP/1.1");
  }
  SendError(400, "the request is not HTTP: " + error.message());
}

std::optional<Answer> Connection::TakeHead() {
  const ServeOptions& options = pool_.Shared().server.options;
  const auto& request = parser_->get();
  head_ = ReadHead(request);
  route_ = serve::RouteOf(head_.target);
  request_id_ = RequestId(TextOf(request["X-Request-Id"]), pool_.Shared().requests);
  if (request.count("Host") == 0) {
    const bool plain = options.address.find(':') == std::string::npos;
    head_.host = plain ? options.address : "[" + options.address + "]";
  }
  const auto refuse = [this](unsigned status, const char* what) {
    return serve::ErrorAnswer(route_, status, what);
  };
  if (const std::optional<HeadFault> fault = FaultOf(request)) {
    return refuse(fault->status, fault->what);
  }
  is_clear_ = true;
  if (std::optional<Answer> answer = serve::CheckHead(head_, route_, options.access)) return answer;
  const bool upload = head_.method == Method::kPut;
  if ((upload || head_.method == Method::kPost) && !HasBody(request)) {
    return refuse(411, "the request does not say how long its body is");
  }
  const std::size_t most = upload ? options.most_upload : options.most_body;
  if (parser_->content_length().value_or(0) > most) {
    return serve::ErrorAnswer(route_, 413, BodyTooLong(head_.method, options));
  }
  parser_->body_limit(most);
  const std::string expected = TextOf(request["Expect"]);
  const bool old = request.version() < 11;  // and expects nothing, whatever it says
  if (expected.empty() || old || parser_->is_done()) return std::nullopt;
  if (!boost::beast::iequals(expected, "100-continue")) {
    return refuse(417, "the request expects something else than 100-continue");
  }
  // A few bytes go into the socket's buffer at once; where they do not, the client sends its body
  // all the same after a while.
  ErrorCode ignored;
  socket_.non_blocking(true, ignored);
  socket_.write_some(asio::buffer("HTTP/1.1 100 Continue\r\n\r\n", 25), ignored);
  return std::nullopt;
}

void Connection::TakeRequest() {
  SharedParts& shared = pool_.Shared();
  std::string body = parser_->get().body().Take();
  if (head_.method == Method::kPut || head_.method == Method::kDelete) {
    return Upload(std::move(body));
  }
  const bool gzip = boost::beast::iequals(head_.content_encoding, "gzip");
  if (!gzip && shared.server.service.IsQuick(route_, head_.method, body)) {
    return Send(shared.server.service.Handle(route_, head_.method, body));
  }
  Work(std::move(body));
}

void Connection::Work(std::string body) {
  SharedParts& shared = pool_.Shared();
  Enter(State::kWorking, 0);
  const bool gzip = boost::beast::iequals(head_.content_encoding, "gzip");
  auto work = [self = shared_from_this(), gzip, body = std::move(body)]() mutable {
    const ServerParts& server = self->pool_.Shared().server;
    Answer answer;
    try {
      if (gzip) body = serve::Inflated(body, server.options.most_body);
      answer = server.service.Handle(self->route_, self->head_.method, body);
    } catch (const serve::BadRequest& error) {
      answer = serve::ErrorAnswer(self->route_, error.Status(), error.what());
    } catch (const std::bad_alloc&) {
      answer = serve::ErrorAnswer(self->route_, 503, "out of memory");
    }
    asio::post(self->pool_.Context(),
               [self, answer = std::move(answer)]() mutable { self->Send(std::move(answer)); });
  };
  if (shared.workers->Add(std::move(work))) return;
  shared.server.metrics.CountRefusal();
  SendError(503, "the service is busy");
}

void Connection::Upload(std::string body) {
  SharedParts& shared = pool_.Shared();
  Enter(State::kWorking, 0);
  const bool gzip = boost::beast::iequals(head_.content_encoding, "gzip");
  const std::size_t most = shared.server.options.most_upload;
  auto document = [gzip, most, body = std::move(body)]() mutable {
    return gzip ? serve::Inflated(body, most) : std::move(body);
  };
  const bool taken = shared.server.keeper.Change(
      route_, head_.method, std::move(document), [self = shared_from_this()](Answer answer) {
        asio::post(self->pool_.Context(),
                   [self, answer = std::move(answer)]() mutable { self->Send(std::move(answer)); });
      });
  if (taken) return;
  shared.server.metrics.CountRefusal();
  SendError(503, "too many models are being loaded");
}

void Connection::SendError(unsigned status, const std::string& what) {
  Send(serve::ErrorAnswer(route_, status, what));
}

void Connection::Send(Answer answer) {
  if (!socket_.is_open()) return;
  SharedParts& shared = pool_.Shared();
  if (request_id_.empty()) request_id_ = RequestId({}, shared.requests);
  const bool whole = parser_ && parser_->is_done() && is_clear_;
  keeps_alive_ = whole && parser_->keep_alive() && !shared.drains;
  const bool bodiless = head_.method == Method::kHead;
  if (!bodiless && answer.body.size() > kSmall &&
      !pool_.MakeMemory(shared.answers, answer.body.size())) {
    shared.server.metrics.CountRefusal();
    answer = serve::ErrorAnswer(route_, 503, "too many answers wait for their readers");
  }
  Log(answer);
  shared.server.service.AddModel(answer);
  serve::AddCommonHeaders(head_, shared.server.options.access, answer);
  const bool old = parser_ && has_head_ && parser_->get().version() < 11;
  out_head_ = HeadOf(answer, request_id_, keeps_alive_, old);
  out_body_ = bodiless ? std::string() : std::move(answer.body);
  out_shared_ = bodiless ? nullptr : std::move(answer.shared);
  out_sent_ = 0;
  if (parser_) parser_->get().body().Clear();
  HoldAnswer(out_body_.size() > kSmall ? out_body_.size() : 0);
  taken_before_ = Taken();
  Enter(State::kWriting, kWriteSeconds);
  Write();
}

void Connection::Write() {
  const std::string& body = out_shared_ ? *out_shared_ : out_body_;
  const std::size_t of_head = std::min(out_sent_, out_head_.size());
  const std::array<asio::const_buffer, 2> left = {asio::buffer(out_head_) + of_head,
                                                  asio::buffer(body) + (out_sent_ - of_head)};
  socket_.async_write_some(left,
                           [self = shared_from_this()](const ErrorCode& error, std::size_t count) {
                             self->sent_ += count;
                             self->out_sent_ += count;
                             const std::size_t all = self->out_head_.size() + self->BodySize();
                             if (error || self->out_sent_ == all) return self->Written(error);
                             self->Write();
                           });
}

std::size_t Connection::BodySize() const {
  return out_shared_ ? out_shared_->size() : out_body_.size();
}

void Connection::Written(const ErrorCode& error) {
  if (!socket_.is_open()) return;
  if (error) return Close();
  std::string().swap(out_body_);
  out_shared_.reset();
  HoldAnswer(0);
  if (keeps_alive_ && !pool_.Shared().drains) return NextRequest();
  Enter(State::kLingering, kLingerSeconds);
  ErrorCode ignored;
  socket_.shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
  Linger();
}

void Connection::Linger() {
  buffer_.clear();
  socket_.async_read_some(buffer_.prepare(kHeadChunk),
                          [self = shared_from_this()](const ErrorCode& error, std::size_t count) {
                            self->thrown_away_ += count;
                            if (error || self->thrown_away_ > kMostThrownAway) return self->Close();
                            self->Linger();
                          });
}

void Connection::Log(const Answer& answer) const {
  const ServerParts& server = pool_.Shared().server;
  const std::chrono::duration<double> took = Clock::now() - begun_;
  server.metrics.CountRequest(route_.Name(), answer.status, took.count());
  if (server.options.logs_requests) {
    server.log.Write(LogLine(request_id_, head_.method, route_, answer, took.count()));
  }
}

}  // namespace svmscore::app
