// Record batches and streams of them through a scorer.
#include <cerrno>
#include <memory>
#include <string>
#include <utility>

#include "capi/arrow_columns.h"
#include "capi/call_error.h"
#include "capi/scorer.h"

namespace svmscore::capi {
namespace {

std::shared_ptr<ResultTable> ScoreBatch(Scorer& scorer, const ArrowSchema& schema,
                                        const ArrowArray& batch, std::vector<ColumnView> columns) {
  FillColumns(schema, batch, columns);
  scorer.ScoreTable(columns, static_cast<std::size_t>(batch.length));
  return scorer.TakeTable();
}

// Calls the release of an Arrow struct at the end of a scope.
template <typename Struct>
struct Received : Struct {
  Received() : Struct() {}
  ~Received() {
    if (this->release != nullptr) this->release(this);
  }
  Received(const Received&) = delete;
  Received& operator=(const Received&) = delete;
};

class ScoredStream {
 public:
  // Reads the schema. Throws a Refusal.
  ScoredStream(const Scorer& like, ArrowArrayStream& cases)
      : scorer_(like.Plan().model, like.Settings()) {
    Ask(cases, cases.get_schema(&cases, &schema_));
    columns_ = ColumnsOf(schema_);
    scorer_.CheckTable(columns_);
  }
  // From now on the stream is this object's.
  void Take(ArrowArrayStream& cases) {
    static_cast<ArrowArrayStream&>(cases_) = cases;
    cases.release = nullptr;
  }

  void GetSchema(ArrowSchema* out) const { ExportSchema(scorer_.Outputs(), out); }
  // A released array at the end.
  void GetNext(ArrowArray* out) {
    Received<ArrowArray> batch;
    Ask(cases_, cases_.get_next(&cases_, &batch));
    if (batch.release == nullptr) {
      *out = {};
      return;
    }
    ExportTable(ScoreBatch(scorer_, schema_, batch, columns_), out);
  }

  // Calls `work`; what it throws becomes an errno and the last error.
  template <typename Work>
  int Answer(const Work& work) noexcept {
    svmscore_error* error = nullptr;
    const int kind = Guarded(&error, work);
    const std::unique_ptr<svmscore_error, void (*)(svmscore_error*)> freed(error,
                                                                           svmscore_error_free);
    last_error_ = nullptr;
    if (kind == SVMSCORE_OK) return 0;
    last_error_ = kOutOfMemory;
    if (kind == SVMSCORE_MEMORY) return ENOMEM;
    try {
      last_message_ = svmscore_error_message(error).data;
      last_error_ = last_message_.c_str();
    } catch (...) {
    }
    return kind == SVMSCORE_SYSTEM ? EIO : EINVAL;
  }
  const char* LastError() const { return last_error_; }

 private:
  static constexpr const char* kOutOfMemory = "out of memory";

  static void Ask(ArrowArrayStream& cases, int answer) {
    if (answer == 0) return;
    if (answer == ENOMEM) throw std::bad_alloc();
    const char* why = cases.get_last_error == nullptr ? nullptr : cases.get_last_error(&cases);
    throw Refusal(SVMSCORE_TABLE,
                  "the stream of cases fails: " +
                      std::string(why == nullptr ? "error " + std::to_string(answer) : why),
                  {}, {});
  }

  Scorer scorer_;
  Received<ArrowSchema> schema_;
  std::vector<ColumnView> columns_;
  Received<ArrowArrayStream> cases_;
  std::string last_message_;
  const char* last_error_ = nullptr;
};

ScoredStream& Behind(ArrowArrayStream* stream) {
  return *static_cast<ScoredStream*>(stream->private_data);
}

int GetSchema(ArrowArrayStream* stream, ArrowSchema* out) {
  ScoredStream& behind = Behind(stream);
  return behind.Answer([&] { behind.GetSchema(out); });
}

int GetNext(ArrowArrayStream* stream, ArrowArray* out) {
  ScoredStream& behind = Behind(stream);
  return behind.Answer([&] { behind.GetNext(out); });
}

const char* GetLastError(ArrowArrayStream* stream) {
  return Behind(stream).LastError();
}

void ReleaseStream(ArrowArrayStream* stream) {
  delete static_cast<ScoredStream*>(stream->private_data);
  stream->private_data = nullptr;
  stream->release = nullptr;
}

}  // namespace
}  // namespace svmscore::capi

using namespace svmscore::capi;

int svmscore_score_arrow(svmscore_scorer* scorer, const struct ArrowSchema* schema,
                         const struct ArrowArray* batch, struct ArrowSchema* scored_schema,
                         struct ArrowArray* scored, svmscore_error** error) {
  return Guarded(error, [&] {
    Require(scorer, "scorer");
    Require(schema, "schema");
    Require(batch, "batch");
    Require(scored_schema, "scored_schema");
    Require(scored, "scored");
    Received<ArrowSchema> made;
    ExportSchema(scorer->scorer.Outputs(), &made);
    ExportTable(ScoreBatch(scorer->scorer, *schema, *batch, ColumnsOf(*schema)), scored);
    *scored_schema = made;
    made.release = nullptr;
  });
}

int svmscore_score_stream(const svmscore_scorer* scorer, struct ArrowArrayStream* cases,
                          struct ArrowArrayStream* scored, svmscore_error** error) {
  return Guarded(error, [&] {
    Require(scorer, "scorer");
    Require(cases, "cases");
    Require(scored, "scored");
    if (cases->release == nullptr) RefuseArgument("the stream has been released", "cases");
    auto behind = std::make_unique<ScoredStream>(scorer->scorer, *cases);
    behind->Take(*cases);
    *scored = {GetSchema, GetNext, GetLastError, ReleaseStream, behind.release()};
  });
}
