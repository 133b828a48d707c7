// NormContinuous and NormDiscrete.
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/transform/compile_expression.h"
#include "host/transform/value/conversion.h"

namespace svmscore::transform {
namespace {

struct Point {
  double orig;
  double norm;
};

enum class Outliers { kAsIs, kAsMissing, kAsExtreme };

// Computed with halves where the difference of two numbers would overflow.
double OnLine(const Point& left, const Point& right, double x) {
  double run = right.orig - left.orig;
  double way = x - left.orig;
  if (!std::isfinite(run) || !std::isfinite(way)) {
    run = right.orig / 2 - left.orig / 2;
    way = x / 2 - left.orig / 2;
  }
  const double part = way / run;
  const double rise = right.norm - left.norm;
  if (std::isfinite(rise)) return left.norm + part * rise;
  return 2 * (left.norm / 2 + part * (right.norm / 2 - left.norm / 2));
}

// Piecewise linear: y = b + (x - a) / (c - a) * (d - b) on the segment from (a, b) to (c, d), in
// this order of operations. Beyond the ends the first and the last segment continue, unless the
// outliers attribute says otherwise.
class NormContinuous : public Expression {
 public:
  NormContinuous(const Field& field, std::vector<Point> points, Outliers outliers,
                 std::optional<double> map_missing_to)
      : slot_(field.slot),
        points_(std::move(points)),
        outliers_(outliers),
        map_missing_to_(map_missing_to ? Value::Double(*map_missing_to) : Value::Missing()) {}

  Value Evaluate(const Frame& frame) const override {
    const Value& value = frame.slots[slot_];
    if (value.IsMissing()) return map_missing_to_;
    if (value.IsInvalid()) return value;
    const auto number = NumberOf(value);
    if (!number) return Value::Invalid();
    const double x = *number;
    const bool below = x < points_.front().orig;
    if (outliers_ != Outliers::kAsIs && (below || x > points_.back().orig)) {
      if (outliers_ == Outliers::kAsMissing) return Value::Missing();
      return Value::Double(below ? points_.front().norm : points_.back().norm);
    }
    const auto after =
        std::upper_bound(points_.begin() + 1, points_.end() - 1, x,
                         [](double left, const Point& point) { return left < point.orig; });
    return Value::Result(OnLine(*(after - 1), *after, x));
  }

 private:
  const int slot_;
  const std::vector<Point> points_;
  const Outliers outliers_;
  const Value map_missing_to_;
};

// 1 where the field has the value (or, as a thermometer, one at or above it), else 0.
class NormDiscrete : public Expression {
 public:
  NormDiscrete(const Field& field, const std::string& value, std::optional<double> map_missing_to)
      : slot_(field.slot),
        value_(ForComparison(value, field.type, pool_)),
        map_missing_to_(map_missing_to ? Value::Double(*map_missing_to) : Value::Missing()) {}

  Value Evaluate(const Frame& frame) const override {
    const Value& value = frame.slots[slot_];
    if (value.IsMissing()) return map_missing_to_;
    if (value.IsInvalid()) return value;
    return Value::Double(Holds(value) ? 1.0 : 0.0);
  }

 protected:
  virtual bool Holds(const Value& value) const {
    return Compare(value, value_) == Comparison::kEqual;
  }
  const Value& Reference() const { return value_; }

 private:
  const int slot_;
  Arena pool_;
  const Value value_;
  const Value map_missing_to_;
};

class Thermometer : public NormDiscrete {
 public:
  Thermometer(const Field& field, const std::string& value, std::optional<double> map_missing_to)
      : NormDiscrete(field, value, map_missing_to), order_(field.order) {}

 private:
  bool Holds(const Value& value) const override {
    if (order_ == nullptr) {
      const Comparison comparison = Compare(value, Reference());
      return comparison == Comparison::kEqual || comparison == Comparison::kGreater;
    }
    const int rank = order_->RankOf(value);
    return rank >= 0 && rank >= order_->RankOf(Reference());
  }

  const std::shared_ptr<const ValueOrder> order_;
};

std::vector<Point> ReadPoints(const Element* element) {
  std::vector<Point> points;
  for (const Element* child = FirstContent(element); child != nullptr; child = NextContent(child)) {
    if (!IsNamed(child, "LinearNorm")) RefuseKind(child);
    points.push_back({RequireNumber(child, "orig"), RequireNumber(child, "norm")});
    if (points.size() > 1 && !(points[points.size() - 2].orig < points.back().orig)) {
      RefuseContent(child, "orig is not greater than that of the point before it");
    }
  }
  if (points.size() < 2) RefuseContent(element, "there are fewer than two points");
  return points;
}

}  // namespace

Compiled CompileNormContinuous(const Element* element, const Context& context) {
  const Field field = context.FieldOf(element, "field");
  const std::string outliers = FindAttribute(element, "outliers").value_or("asIs");
  Outliers treatment = Outliers::kAsIs;
  if (outliers == "asMissingValues") {
    treatment = Outliers::kAsMissing;
  } else if (outliers == "asExtremeValues") {
    treatment = Outliers::kAsExtreme;
  } else if (outliers != "asIs") {
    ThrowAt(element, code::kBadValue, outliers, "outliers", NameOf(element));
  }
  return std::make_unique<NormContinuous>(field, ReadPoints(element), treatment,
                                          FindNumber(element, "mapMissingTo"));
}

Compiled CompileNormDiscrete(const Element* element, const Context& context) {
  const Field field = context.FieldOf(element, "field");
  const std::string value = RequireAttribute(element, "value");
  const auto map_missing_to = FindNumber(element, "mapMissingTo");
  const std::string method = FindAttribute(element, "method").value_or("indicator");
  if (const Element* child = FirstContent(element)) RefuseKind(child);
  CheckMoment(element, "value", value, field.type);
  if (method == "indicator") return std::make_unique<NormDiscrete>(field, value, map_missing_to);
  if (method != "thermometer") {
    ThrowAt(element, code::kBadValue, method, "method", NameOf(element));
  }
  if (!field.ordinal) {
    ThrowAt(element, code::kUnsupported, "method thermometer on a field that is not ordinal",
            NameOf(element));
  }
  Arena pool;
  if (field.order && field.order->RankOf(ForComparison(value, field.type, pool)) < 0) {
    RefuseContent(element, "the field does not list the value " + value);
  }
  return std::make_unique<Thermometer>(field, value, map_missing_to);
}

}  // namespace svmscore::transform
