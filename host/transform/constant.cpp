// Constant and FieldRef.
#include <utility>

#include "host/transform/compile_expression.h"
#include "host/transform/value/conversion.h"
#include "host/xml/transcoder.h"

namespace svmscore::transform {
namespace {

class Constant : public Expression {
 public:
  // Without a type, the text decides it.
  Constant(const std::string& text, std::optional<FieldType> type, bool missing)
      : declared_(type.has_value()), missing_(missing), text_(pool_.Copy(text)) {
    if (!missing_) value_ = type ? FromDocument(text, *type, pool_) : FromDocument(text, pool_);
  }

  Value Evaluate(const Frame&) const override { return value_; }
  const Value* Fixed() const override { return &value_; }
  void ConvertTo(FieldType type) { value_ = Convert(value_, type, pool_); }
  void AdoptType(FieldType type) override {
    if (!declared_ && !missing_) value_ = FromDocument(text_, type, pool_);
  }

 private:
  const bool declared_;
  const bool missing_;
  Arena pool_;
  std::string_view text_;
  Value value_;
};

class FieldRef : public Expression {
 public:
  explicit FieldRef(const Field& field) : field_(field) {}

  Value Evaluate(const Frame& frame) const override { return frame.slots[field_.slot]; }
  const ValueOrder* Order() const override { return field_.order.get(); }

 private:
  const Field field_;
};

class MappedFieldRef : public Expression {
 public:
  MappedFieldRef(const Field& field, const std::string& map_missing_to)
      : field_(field),
        map_missing_to_(field.type ? FromDocument(map_missing_to, *field.type, pool_)
                                   : FromDocument(map_missing_to, pool_)) {}

  Value Evaluate(const Frame& frame) const override {
    const Value& value = frame.slots[field_.slot];
    return value.IsMissing() ? map_missing_to_ : value;
  }
  const ValueOrder* Order() const override { return field_.order.get(); }
  const Value& MapMissingTo() const { return map_missing_to_; }

 private:
  const Field field_;
  Arena pool_;
  const Value map_missing_to_;
};

}  // namespace

Compiled CompileConstant(const Element* element, const Context& context) {
  const auto type = FindDataType(element, "dataType");
  const bool missing = FindFlag(element, "missing", false);
  const std::string text = ElementText(element);
  auto constant = std::make_unique<Constant>(text, type, missing);
  if (type) CheckFixed(element, "the constant", text, *constant->Fixed(), *type);
  if (context.target) {
    constant->ConvertTo(*context.target);
    CheckFixed(element, "the constant", text, *constant->Fixed(), *context.target);
  }
  return constant;
}

Compiled CompileFieldRef(const Element* element, const Context& context) {
  const Field field = context.FieldOf(element, "field");
  const auto map_missing_to = FindAttribute(element, "mapMissingTo");
  if (!map_missing_to) return std::make_unique<FieldRef>(field);
  auto mapped = std::make_unique<MappedFieldRef>(field, *map_missing_to);
  if (mapped->MapMissingTo().IsInvalid()) {
    RefuseContent(element, "mapMissingTo \"" + *map_missing_to + "\" is not of the field's type");
  }
  return mapped;
}

}  // namespace svmscore::transform
