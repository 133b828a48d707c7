#include "host/transform/compile.h"
namespace svmscore::transform {
Compiled CompileDiscretize(const Element* element, const Context&) {
  RefuseKind(element);
}
Compiled CompileMapValues(const Element* element, const Context&) {
  RefuseKind(element);
}
Compiled CompileTextIndex(const Element* element, const Context&) {
  RefuseKind(element);
}
Compiled CompileApply(const Element* element, const Context&) {
  RefuseKind(element);
}
}  // namespace svmscore::transform
