#include "app/cli/program.h"

int main(int argc, char** argv) {
  return svmscore::app::RunProgram(argc, argv);
}
