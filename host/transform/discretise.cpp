// Discretize: numbers to the names of the intervals that they fall into.
#include <algorithm>
#include <utility>
#include <vector>

#include "host/transform/compile_expression.h"
#include "host/transform/value/conversion.h"

namespace svmscore::transform {
namespace {

struct Bin {
  Interval interval;
  Value value;
};

// True where bins can be searched by their left margins: these ascend, and no bin reaches beyond
// the next one's margin.
bool AreOrdered(const std::vector<Bin>& bins) {
  for (std::size_t i = 1; i < bins.size(); ++i) {
    if (!(bins[i - 1].interval.left < bins[i].interval.left) ||
        bins[i - 1].interval.right > bins[i].interval.left) {
      return false;
    }
  }
  return true;
}

// Where bins overlap, the first in the document counts.
class Discretize : public Expression {
 public:
  Discretize(const Element* element, const Field& field, FieldType type, const Context& context)
      : slot_(field.slot) {
    const auto read = [&](const Element* at, const char* attribute) {
      const auto text = FindAttribute(at, attribute);
      return text ? context.Fixed(at, attribute, *text, type, pool_) : Value::Missing();
    };
    map_missing_to_ = read(element, "mapMissingTo");
    default_ = read(element, "defaultValue");
    for (const Element* child = FirstContent(element); child != nullptr;
         child = NextContent(child)) {
      if (!IsNamed(child, "DiscretizeBin")) RefuseKind(child);
      RequireAttribute(child, "binValue");
      const Element* interval = FirstContent(child);
      if (interval == nullptr) RefuseContent(child, "there is no Interval");
      if (!IsNamed(interval, "Interval")) RefuseKind(interval);
      if (const Element* second = NextContent(interval)) RefuseKind(second);
      bins_.push_back({ReadInterval(interval), read(child, "binValue")});
    }
    ordered_ = AreOrdered(bins_);
  }

  Value Evaluate(const Frame& frame) const override {
    const Value& value = frame.slots[slot_];
    if (value.IsMissing()) return map_missing_to_;
    if (value.IsInvalid()) return value;
    const auto number = NumberOf(value);
    // Without bins it only matters whether there is a value.
    if (!number) return bins_.empty() ? default_ : Value::Invalid();
    const Bin* bin = Find(*number);
    return bin == nullptr ? default_ : bin->value;
  }

 private:
  const Bin* Find(double x) const {
    auto first = bins_.begin();
    auto last = bins_.end();
    if (ordered_) {
      // Of ordered bins, only the last that begins at or below x can hold it, or the one before it
      // where that last one begins at x and is open there.
      last = std::upper_bound(first, last, x,
                              [](double at, const Bin& bin) { return at < bin.interval.left; });
      if (last - first > 2) first = last - 2;
    }
    const auto found =
        std::find_if(first, last, [x](const Bin& bin) { return bin.interval.Contains(x); });
    return found == last ? nullptr : &*found;
  }

  const int slot_;
  Arena pool_;
  std::vector<Bin> bins_;
  bool ordered_ = false;
  Value map_missing_to_;
  Value default_;
};

}  // namespace

Compiled CompileDiscretize(const Element* element, const Context& context) {
  const Field field = context.FieldOf(element, "field");
  const FieldType type =
      FindDataType(element, "dataType").value_or(FieldType{DataType::kString, 0});
  return std::make_unique<Discretize>(element, field, type, context);
}

}  // namespace svmscore::transform
