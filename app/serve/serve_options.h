// What the service allows its clients.
#ifndef APP_SERVE_SERVE_OPTIONS_H_
#define APP_SERVE_SERVE_OPTIONS_H_

#include <cstddef>
#include <string>

#include "tools/serve/request_checks.h"

namespace svmscore::app {

struct ServeOptions {
  std::string address = "127.0.0.1";
  unsigned short port = 8080;
  serve::AccessRules access;
  std::size_t most_body = std::size_t{32} << 20;      // bytes of a body, inflated
  std::size_t most_answer = std::size_t{128} << 20;   // bytes of scores
  std::size_t most_upload = std::size_t{128} << 20;   // bytes of a document
  std::size_t most_bodies = std::size_t{256} << 20;   // bytes of all large bodies that are held
  std::size_t most_answers = std::size_t{256} << 20;  // and of all large answers
  std::size_t most_head = 16384;                      // bytes of a request's line and headers
  std::size_t most_rows = 1000000;                    // of a request
  std::size_t most_connections = 1024;
  std::size_t most_waiting = 64;  // requests that wait for a thread
  int read_seconds = 30;          // for a request from its first byte to its last
  int idle_seconds = 75;          // between requests of a connection
  int drain_seconds = 10;
  int threads = 0;  // that score; 0: one for each core
  bool logs_requests = true;
};

}  // namespace svmscore::app

#endif  // APP_SERVE_SERVE_OPTIONS_H_
