// The body of a request, collected within bounds.
#ifndef APP_SERVE_BOUNDED_BODY_H_
#define APP_SERVE_BOUNDED_BODY_H_

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

namespace svmscore::app {

// How many bytes of one kind all connections hold together, and how many they may.
struct ByteBudget {
  std::size_t most = 0;
  std::atomic<std::size_t> held{0};

  bool Lacks(std::size_t more) const { return held + more > most; }
  // Whether it is time to look who keeps memory that he does not use.
  bool IsShort() const { return held > most / 8 * 7; }
};

// What has no more bytes always finds room, so that large ones cannot keep it out.
constexpr std::size_t kSmall = 65536;

// A body, and its share of the budget, which is given back with it.
class BodyText {
 public:
  BodyText() = default;
  ~BodyText() { Clear(); }
  BodyText(const BodyText&) = delete;
  BodyText& operator=(const BodyText&) = delete;

  void Use(ByteBudget& budget) { budget_ = &budget; }
  // False where all bodies together would hold too much.
  bool Append(const char* data, std::size_t size) {
    const std::size_t more = Needs(size);
    held_ += more;
    if (more > 0 && budget_->held.fetch_add(more) + more > budget_->most) return false;
    text_.append(data, size);
    return true;
  }
  void Reserve(std::size_t size) { text_.reserve(size); }
  std::string Take() { return std::exchange(text_, {}); }
  // How much of the budget further bytes would take.
  std::size_t Needs(std::size_t size) const {
    const std::size_t all = text_.size() + size;
    return budget_ == nullptr || all <= kSmall ? 0 : all - held_;
  }
  std::size_t Held() const { return held_; }
  void Clear() {
    if (budget_ != nullptr) budget_->held -= std::exchange(held_, 0);
    std::string().swap(text_);
  }

 private:
  ByteBudget* budget_ = nullptr;
  std::size_t held_ = 0;
  std::string text_;
};

// As the parser wants it.
struct BoundedBody {
  using value_type = BodyText;

  class reader {
   public:
    template <bool is_request, typename Fields>
    reader(boost::beast::http::header<is_request, Fields>&, value_type& body) : body_(body) {}
    void init(const boost::optional<std::uint64_t>& length, boost::beast::error_code& error) {
      constexpr std::uint64_t kMostAhead = 4U << 20U;
      error = {};
      if (length) body_.Reserve(static_cast<std::size_t>(std::min(*length, kMostAhead)));
    }
    template <typename Buffers>
    std::size_t put(const Buffers& buffers, boost::beast::error_code& error) {
      error = {};
      std::size_t taken = 0;
      for (const auto buffer : boost::beast::buffers_range_ref(buffers)) {
        if (!body_.Append(static_cast<const char*>(buffer.data()), buffer.size())) {
          error = boost::beast::http::error::buffer_overflow;
          return taken;
        }
        taken += buffer.size();
      }
      return taken;
    }
    void finish(boost::beast::error_code& error) { error = {}; }

   private:
    value_type& body_;
  };
};

}  // namespace svmscore::app

#endif  // APP_SERVE_BOUNDED_BODY_H_
