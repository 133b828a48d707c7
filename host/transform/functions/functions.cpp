#include "host/transform/functions/functions.h"

#include <unordered_map>

namespace svmscore::transform {
namespace {

using ByName = std::unordered_map<std::string_view, const Function*>;

const ByName& AllFunctions() {
  static const ByName functions = [] {
    ByName all;
    for (const auto family :
         {ArithmeticFunctions(), MathsFunctions(), NormalFunctions(), LogicFunctions(),
          TextFunctions(), FormatFunctions(), DateFunctions()}) {
      for (const Function& function : family) all.emplace(function.name, &function);
    }
    return all;
  }();
  return functions;
}

}  // namespace

Prepared::~Prepared() = default;

const Function* FindFunction(std::string_view name) {
  const ByName& all = AllFunctions();
  auto found = all.find(name);
  if (found == all.end() && name.starts_with("x-")) found = all.find(name.substr(2));
  return found == all.end() ? nullptr : found->second;
}

}  // namespace svmscore::transform
