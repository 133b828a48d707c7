// svmscore explain: cases in, Shapley values of decision values out.
#ifndef APP_EXPLAIN_EXPLAIN_COMMAND_H_
#define APP_EXPLAIN_EXPLAIN_COMMAND_H_

#include <cstdint>
#include <string>

#include "app/options/command.h"
#include "app/options/reading_option.h"
#include "app/table/table_options.h"
#include "host/load/loader.h"
#include "host/xml/limits.h"
#include "tools/explain/case_explainer.h"

namespace svmscore::app {

class ExplainCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  ExitStatus Run() override;

 private:
  void CheckFiles() const;
  tools::Background MakeBackground(const LoadedModel& loaded,
                                   const tools::Explainable& explainable) const;

  std::string model_;
  std::string cases_ = "-";
  std::string background_;
  std::string output_ = "-";
  std::string format_ = "csv";
  std::string policy_;
  std::string plugin_;
  Limits limits_;
  std::uint64_t rows_ = 0;
  std::uint64_t seed_ = 1;
  std::uint64_t orders_ = 0;
  int threads_ = 0;
  bool gradients_ = false;
  bool strict_ = false;
  TableOptions table_;
  ReadingOptions reading_;
};

}  // namespace svmscore::app

#endif  // APP_EXPLAIN_EXPLAIN_COMMAND_H_
