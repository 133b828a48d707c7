// A connection: reads requests, has them answered, writes the answers, one after the other.
#ifndef APP_SERVE_CONNECTION_H_
#define APP_SERVE_CONNECTION_H_

#include <array>
#include <memory>
#include <optional>
#include <string>

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>

#include "app/serve/connection_pool.h"
#include "tools/serve/exchange.h"
#include "tools/serve/route.h"

namespace svmscore::app {

// [one thread], that of its pool.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  using Clock = ConnectionPool::Clock;

  Connection(ConnectionPool& pool, ConnectionPool::Socket socket);

  void Start();
  // Turns the client away.
  void Refuse();
  void Close();
  // Closes where the time is up, and notes what the client has taken of the answer.
  void Check(Clock::time_point now);
  // No request has begun.
  bool IsIdle() const { return state_ == State::kReading && !Begun(); }
  // Whether the server waits for the client, and since when it has sent or taken next to nothing.
  bool IsWaiting() const { return state_ != State::kWorking; }
  Clock::time_point Since() const { return since_; }
  // Whether it waits with a part of the budget of bodies or of that of answers.
  bool Keeps(const ByteBudget& budget) const;
  // Whether its client takes an answer so slowly that others need not wait for the end.
  bool IsSlowReader(Clock::time_point now) const;
  // Ends what is under way, since others need its memory.
  void GiveWay();

 private:
  enum class State { kReading, kWorking, kWriting, kLingering };
  using Parser = boost::beast::http::request_parser<BoundedBody>;
  using ErrorCode = boost::beast::error_code;

  bool Begun() const { return buffer_.size() > 0 || (parser_ && parser_->got_some()); }
  void Enter(State state, int seconds);
  // Notes how many bytes the client has sent or taken since the state was entered.
  void NoteMoved(std::uint64_t moved, Clock::time_point now);
  std::uint64_t Taken();
  void CheckWriting(Clock::time_point now);
  void NextRequest();
  void Read();
  void Parse();
  // What is sent at once, without the body; nothing where the body is to be read.
  std::optional<serve::Answer> TakeHead();
  void TakeRequest();
  void FailParse(const ErrorCode& error);
  void Work(std::string body);
  void Upload(std::string body);
  // The request is read to its end, or the connection ends after the answer.
  void Send(serve::Answer answer);
  void SendError(unsigned status, const std::string& what);
  void Write();
  std::size_t BodySize() const;
  void Written(const ErrorCode& error);
  void HoldAnswer(std::size_t size);
  void Linger();
  void Log(const serve::Answer& answer) const;

  ConnectionPool& pool_;
  ConnectionPool::Socket socket_;
  State state_ = State::kReading;
  Clock::time_point entered_ = Clock::now();
  Clock::time_point since_ = entered_;
  Clock::time_point deadline_ = since_;
  std::uint64_t moved_ = 0;   // bytes in this state
  std::uint64_t marked_ = 0;  // so many of them had moved at since_
  boost::beast::flat_buffer buffer_;
  std::optional<Parser> parser_;
  bool timed_ = false;  // the request at hand has begun, and its time runs
  bool has_head_ = false;
  bool is_clear_ = false;        // where the request at hand ends
  std::size_t head_size_ = 0;    // bytes of the head that the parser has taken
  std::size_t thrown_away_ = 0;  // bytes that came after the last answer

  // Of the request at hand.
  serve::RequestHead head_;
  serve::Route route_;
  std::string request_id_;
  Clock::time_point begun_ = since_;

  std::string out_head_;
  std::string out_body_;
  std::shared_ptr<const std::string> out_shared_;  // instead of the body
  std::size_t out_sent_ = 0;                       // bytes that the system has taken
  std::size_t out_held_ = 0;                       // bytes in the budget of answers
  std::uint64_t sent_ = 0;                         // bytes on this connection
  std::uint64_t taken_before_ = 0;                 // bytes that the client took before this answer
  bool keeps_alive_ = false;
};

}  // namespace svmscore::app

#endif  // APP_SERVE_CONNECTION_H_
