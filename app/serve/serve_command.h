// svmscore serve: scores over HTTP.
#ifndef APP_SERVE_SERVE_COMMAND_H_
#define APP_SERVE_SERVE_COMMAND_H_

#include <cstddef>
#include <string>
#include <vector>

#include "app/options/command.h"
#include "app/options/reading_option.h"
#include "app/serve/model_keeper.h"
#include "app/serve/serve_options.h"
#include "host/xml/limits.h"

namespace svmscore::app {

class ServeCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  ExitStatus Run() override;

 private:
  void AddLimits(CLI::App& app);
  KeeperOptions Keeper() const;
  ServeOptions Serving() const;

  std::vector<std::string> models_;
  std::string listen_ = "127.0.0.1:8080";
  std::string folder_;
  bool allow_upload_ = false;
  std::string token_file_;
  std::vector<std::string> hosts_;
  std::vector<std::string> origins_;
  std::string log_ = "requests";
  std::size_t body_mib_ = 32;
  std::size_t answer_mib_ = 128;
  std::size_t upload_mib_ = 128;
  ServeOptions options_;
  ReadingOptions reading_;
  Limits limits_;
  std::string plugin_;
};

}  // namespace svmscore::app

#endif  // APP_SERVE_SERVE_COMMAND_H_
