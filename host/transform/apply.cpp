// Apply: built-in functions, functions that the document defines, and the choice `if`.
#include <array>
#include <utility>
#include <vector>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/transform/compile_expression.h"
#include "host/transform/definitions.h"
#include "host/transform/functions/functions.h"
#include "host/transform/value/conversion.h"

namespace svmscore::transform {
namespace {

// Calls of up to this many arguments keep them on the stack.
constexpr std::size_t kOnStack = 4;

using Operands = std::vector<std::unique_ptr<Expression>>;

// How a call treats missing arguments, missing results and invalid results.
class Treatment {
 public:
  enum class Invalid { kReturn, kAsIs, kAsMissing };

  explicit Treatment(const Element* element) {
    map_missing_to_text_ = FindAttribute(element, "mapMissingTo");
    default_text_ = FindAttribute(element, "defaultValue");
    const std::string invalid =
        FindAttribute(element, "invalidValueTreatment").value_or("returnInvalid");
    if (invalid == "asIs") {
      invalid_ = Invalid::kAsIs;
    } else if (invalid == "asMissing") {
      invalid_ = Invalid::kAsMissing;
    } else if (invalid != "returnInvalid") {
      ThrowAt(element, code::kBadValue, invalid, "invalidValueTreatment", NameOf(element));
    }
  }

  // The replacements are values of the type that the function returns, where their texts allow it.
  void SetType(std::optional<FieldType> type) {
    const auto read = [&](const std::optional<std::string>& text) {
      if (!text) return Value::Missing();
      const Value value = type ? FromDocument(*text, *type, pool_) : FromDocument(*text, pool_);
      return value.IsPresent() ? value : Value::Text(pool_.Copy(*text));
    };
    map_missing_to_ = read(map_missing_to_text_);
    default_ = read(default_text_);
  }

  // Refuses replacements that `type`, to which the result is converted, cannot hold.
  void Check(const Element* element, FieldType type) const {
    Arena pool;
    const auto check = [&](const char* what, const std::optional<std::string>& text,
                           const Value& value) {
      if (text) CheckFixed(element, what, *text, Convert(value, type, pool), type);
    };
    check("mapMissingTo", map_missing_to_text_, map_missing_to_);
    check("defaultValue", default_text_, default_);
  }

  bool MapsMissing() const { return !map_missing_to_.IsMissing(); }
  const Value& MapMissingTo() const { return map_missing_to_; }

  Value Finish(const Value& result) const {
    if (result.IsMissing()) return default_;
    if (!result.IsInvalid() || invalid_ == Invalid::kReturn) return result;
    return invalid_ == Invalid::kAsIs ? result.AsUnfit() : default_;
  }

 private:
  std::optional<std::string> map_missing_to_text_;
  std::optional<std::string> default_text_;
  Invalid invalid_ = Invalid::kReturn;
  Arena pool_;
  Value map_missing_to_;
  Value default_;
};

class Application : public Expression {
 public:
  void CheckReplacements(const Element* element, FieldType type) const {
    treatment_.Check(element, type);
  }

 protected:
  Application(const Element* element, Operands operands)
      : treatment_(element), operands_(std::move(operands)) {
    for (const auto& operand : operands_) {
      NestOver(operand->Depth());
      Contain(operand->Size());
    }
  }

  // Evaluates all operands and hands them to `call`, unless one is missing and has a replacement.
  template <typename Call>
  Value WithArguments(const Frame& frame, Call call) const {
    std::array<Value, kOnStack> few;
    Value* values = few.data();
    const std::size_t count = operands_.size();
    if (count > kOnStack) {
      values = reinterpret_cast<Value*>(frame.arena.Allocate(count * sizeof(Value)));
    }
    for (std::size_t i = 0; i < count; ++i) {
      values[i] = operands_[i]->Evaluate(frame);
      if (values[i].IsMissing() && treatment_.MapsMissing()) return treatment_.MapMissingTo();
    }
    return treatment_.Finish(call(std::span<Value>(values, count)));
  }

  Treatment& GetTreatment() { return treatment_; }
  const Treatment& GetTreatment() const { return treatment_; }
  const Operands& GetOperands() const { return operands_; }

 private:
  Treatment treatment_;
  Operands operands_;
};

std::optional<FieldType> TypeOf(Returns returns) {
  switch (returns) {
    case Returns::kBoolean:
      return FieldType{DataType::kBoolean, 0};
    case Returns::kString:
      return FieldType{DataType::kString, 0};
    default:
      return std::nullopt;  // an integer or a double, depending on the text
  }
}

class BuiltInCall : public Application {
 public:
  BuiltInCall(const Element* element, const Function& function, Operands operands)
      : Application(element, std::move(operands)), function_(function) {
    GetTreatment().SetType(TypeOf(function.returns));
    std::vector<const Value*> fixed;
    for (const auto& operand : GetOperands()) {
      fixed.push_back(operand->Fixed());
      if (order_ == nullptr) order_ = operand->Order();
    }
    if (function.prepare != nullptr) prepared_ = function.prepare(element, fixed);
  }

  Value Evaluate(const Frame& frame) const override {
    return WithArguments(frame, [&](std::span<const Value> values) {
      bool missing = false;
      bool invalid = false;
      for (const Value& value : values) {
        missing = missing || value.IsMissing();
        invalid = invalid || value.IsInvalid();
      }
      if (invalid) return Value::Invalid();
      if (missing && function_.accepts == Accepts::kPresent) return Value::Missing();
      return function_.call({values, frame.arena, prepared_.get(), order_});
    });
  }

 private:
  const Function& function_;
  std::unique_ptr<Prepared> prepared_;
  const ValueOrder* order_ = nullptr;  // the operands own it
};

class DefinedCall : public Application {
 public:
  DefinedCall(const Element* element, std::shared_ptr<const UserFunction> function,
              Operands operands)
      : Application(element, std::move(operands)), function_(std::move(function)) {
    GetTreatment().SetType(function_->Type());
    NestOver(function_->Depth());
    Contain(function_->Size());
    for (std::size_t i = 0; i < GetOperands().size(); ++i) {
      if (const auto& type = function_->Parameters()[i]) GetOperands()[i]->AdoptType(*type);
    }
  }

  Value Evaluate(const Frame& frame) const override {
    return WithArguments(
        frame, [&](std::span<Value> values) { return function_->Call(values, frame.arena); });
  }

 private:
  const std::shared_ptr<const UserFunction> function_;
};

// Evaluates the condition, and only the branch that it chooses.
class Choice : public Application {
 public:
  Choice(const Element* element, Operands operands) : Application(element, std::move(operands)) {
    GetTreatment().SetType(std::nullopt);
  }

  Value Evaluate(const Frame& frame) const override {
    const Treatment& treatment = GetTreatment();
    const Value condition = GetOperands()[0]->Evaluate(frame);
    if (condition.IsInvalid()) return treatment.Finish(condition);
    if (condition.IsMissing()) {
      return treatment.MapsMissing() ? treatment.MapMissingTo() : treatment.Finish(condition);
    }
    const auto truth = TruthOf(condition);
    if (!truth) return treatment.Finish(Value::Invalid());
    const std::size_t branch = *truth ? 1 : 2;
    if (branch == GetOperands().size()) return treatment.Finish(Value::Missing());
    const Value value = GetOperands()[branch]->Evaluate(frame);
    if (value.IsMissing() && treatment.MapsMissing()) return treatment.MapMissingTo();
    return treatment.Finish(value);
  }
};

void CheckCount(const Element* element, const std::string& name, std::size_t given,
                std::size_t least, std::size_t most) {
  if (given >= least && given <= most) return;
  std::string wanted = std::to_string(least);
  if (most == kManyArguments) {
    wanted += " or more";
  } else if (most != least) {
    wanted += " to " + std::to_string(most);
  }
  ThrowAt(element, code::kArgumentCount, name, std::to_string(given), wanted);
}

std::unique_ptr<Application> CompileCall(const Element* element, const Context& context) {
  const std::string name = RequireAttribute(element, "function");
  Operands operands;
  for (const Element* child = FirstContent(element); child != nullptr; child = NextContent(child)) {
    operands.push_back(context.Compile(child));
  }
  const std::size_t given = operands.size();
  if (name == "if") {
    CheckCount(element, name, given, 2, 3);
    return std::make_unique<Choice>(element, std::move(operands));
  }
  if (const Function* function = FindFunction(name)) {
    CheckCount(element, name, given, function->least, function->most);
    return std::make_unique<BuiltInCall>(element, *function, std::move(operands));
  }
  auto function = context.definitions.Find(name, element, context.depth);
  if (function == nullptr) ThrowAt(element, code::kUnknownFunction, name);
  CheckCount(element, name, given, function->Parameters().size(), function->Parameters().size());
  if (function->Size() > kMostCalled) {
    RefuseContent(element, "a call of the function " + name + " evaluates more than " +
                               std::to_string(kMostCalled) + " expressions");
  }
  const auto type = function->Type();
  auto call = std::make_unique<DefinedCall>(element, std::move(function), std::move(operands));
  if (type) call->CheckReplacements(element, *type);
  return call;
}

}  // namespace

Compiled CompileApply(const Element* element, const Context& context) {
  auto call = CompileCall(element, context);
  if (context.target) call->CheckReplacements(element, *context.target);
  return call;
}

}  // namespace svmscore::transform
