// The functions that a document defines.
#ifndef HOST_TRANSFORM_DEFINITIONS_H_
#define HOST_TRANSFORM_DEFINITIONS_H_

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/model/ss_exception.h"
#include "host/text/api.h"
#include "host/transform/expression.h"

namespace svmscore::transform {

// A defined function: a body over parameters. Immutable after compiling.
class UserFunction {
 public:
  using Types = std::vector<std::optional<FieldType>>;
  UserFunction(Types parameters, std::optional<FieldType> result, std::unique_ptr<Expression> body);

  // Converts the arguments in place, each to the type of its parameter; missing ones stay missing.
  Value Call(std::span<Value> arguments, Arena& arena) const;

  const Types& Parameters() const { return parameters_; }
  // The declared type of the result, if any.
  std::optional<FieldType> Type() const { return result_; }
  int Depth() const { return body_->Depth(); }
  int Size() const { return body_->Size(); }

 private:
  Types parameters_;
  std::optional<FieldType> result_;
  std::unique_ptr<Expression> body_;
};

// Knows the DefineFunction elements of a document and compiles each once, when it is first needed.
// [one thread] for each object, while its document is loaded. Lives: the functions, as long as the
// expressions that call them; elements, longer than this object. Fails: SSException at an element
// that cannot be compiled, std::bad_alloc.
class SVMSCORE_HOST_API Definitions {
 public:
  Definitions();
  ~Definitions();
  Definitions(const Definitions&) = delete;
  Definitions& operator=(const Definitions&) = delete;

  // Adds the functions that a child of `container` defines. Null is a container without any. One
  // without a name, or with that of another, fails.
  void AddFrom(const Element* container);
  // Adds the functions of the TransformationDictionary of `document`.
  void AddFrom(const xercesc::DOMDocument* document);
  // Compiles the functions that nothing has called, so that errors in them are found.
  void CompileAll();
  // What is wrong with functions, as far as it was found. A call of such a function is refused with
  // the reason.
  const std::vector<MCZandor_850::SSException>& Failures() const { return failures_; }

  // Null where the document defines no function of that name. A function that calls itself, even
  // through others, is refused at `caller`, an expression nested `depth` levels deep.
  std::shared_ptr<const UserFunction> Find(const std::string& name, const Element* caller,
                                           int depth);

 private:
  struct Definition {
    const Element* element;
    std::shared_ptr<const UserFunction> function;
    bool in_work = false;
    std::optional<std::size_t> failure = std::nullopt;
  };
  void Compile(Definition& definition, int depth);
  // Notes the failure, which the definition (if any) is then refused with.
  void Fail(const MCZandor_850::SSException& reason, Definition* definition);

  std::unordered_map<std::string, Definition> definitions_;
  std::vector<std::string> order_;
  std::vector<MCZandor_850::SSException> failures_;
};

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_DEFINITIONS_H_
