#include <array>
#include <iterator>
#include <string_view>

#include "fuzz/grammar.h"

namespace svmscore::fuzz {
namespace {

constexpr std::array<std::string_view, 16> kTypes = {"double",
                                                     "double",
                                                     "integer",
                                                     "string",
                                                     "float",
                                                     "boolean",
                                                     "date",
                                                     "time",
                                                     "dateTime",
                                                     "timeSeconds",
                                                     "dateDaysSince[1960]",
                                                     "dateDaysSince[0]",
                                                     "dateTimeSecondsSince[1970]",
                                                     "dateTimeSecondsSince[0]",
                                                     "double",
                                                     "number"};
constexpr std::array<std::string_view, 4> kOpTypes = {"continuous", "categorical", "ordinal",
                                                      "continuous"};
constexpr std::array<std::string_view, 4> kClosures = {"openOpen", "openClosed", "closedOpen",
                                                       "closedClosed"};

struct Call {
  const char* name;
  std::size_t arguments;
};
constexpr Call kCalls[] = {{"+", 2},
                           {"-", 2},
                           {"*", 2},
                           {"/", 2},
                           {"modulo", 2},
                           {"min", 3},
                           {"max", 2},
                           {"sum", 3},
                           {"product", 3},
                           {"avg", 3},
                           {"median", 4},
                           {"log10", 1},
                           {"ln", 1},
                           {"ln1p", 1},
                           {"sqrt", 1},
                           {"abs", 1},
                           {"exp", 1},
                           {"expm1", 1},
                           {"pow", 2},
                           {"threshold", 2},
                           {"floor", 1},
                           {"ceil", 1},
                           {"round", 1},
                           {"rint", 1},
                           {"hypot", 2},
                           {"sin", 1},
                           {"cos", 1},
                           {"tan", 1},
                           {"asin", 1},
                           {"acos", 1},
                           {"atan", 1},
                           {"sinh", 1},
                           {"cosh", 1},
                           {"tanh", 1},
                           {"normalPDF", 3},
                           {"normalCDF", 3},
                           {"normalIDF", 3},
                           {"stdNormalPDF", 1},
                           {"stdNormalCDF", 1},
                           {"stdNormalIDF", 1},
                           {"erf", 1},
                           {"isMissing", 1},
                           {"isNotMissing", 1},
                           {"isValid", 1},
                           {"isNotValid", 1},
                           {"equal", 2},
                           {"notEqual", 2},
                           {"lessThan", 2},
                           {"lessOrEqual", 2},
                           {"greaterThan", 2},
                           {"greaterOrEqual", 2},
                           {"and", 2},
                           {"or", 3},
                           {"not", 1},
                           {"isIn", 3},
                           {"isNotIn", 3},
                           {"if", 3},
                           {"if", 2},
                           {"uppercase", 1},
                           {"lowercase", 1},
                           {"stringLength", 1},
                           {"substring", 3},
                           {"trimBlanks", 1},
                           {"concat", 2},
                           {"replace", 3},
                           {"matches", 2},
                           {"formatNumber", 2},
                           {"formatDatetime", 2},
                           {"dateDaysSinceYear", 2},
                           {"dateSecondsSinceYear", 2},
                           {"dateSecondsSinceMidnight", 1},
                           {"g0", 2},
                           {"g1", 2}};

std::string NumberOrWord(Choices& choices) {
  return choices.Half() ? NumberText(choices) : Word(choices);
}

void MaybeSet(Node& node, const char* attribute, Choices& choices) {
  if (choices.Byte() % 4 == 3) node.Set(attribute, NumberOrWord(choices));
}

Node Interval(Choices& choices) {
  Node interval("Interval");
  interval.Set("closure", std::string(choices.Pick(kClosures)));
  if (!choices.Rarely()) interval.Set("leftMargin", NumberText(choices));
  if (!choices.Rarely()) interval.Set("rightMargin", NumberText(choices));
  return interval;
}

Node Constant(Choices& choices) {
  Node constant("Constant");
  if (choices.Half()) constant.Set("dataType", std::string(choices.Pick(kTypes)));
  if (choices.Rarely()) constant.Set("missing", "true");
  constant.text = NumberOrWord(choices);
  return constant;
}

Node NormContinuous(Choices& choices) {
  constexpr std::array<std::string_view, 3> kOutliers = {"asIs", "asMissingValues",
                                                         "asExtremeValues"};
  Node norm("NormContinuous");
  norm.Set("outliers", std::string(choices.Pick(kOutliers)));
  if (choices.Rarely()) norm.Set("mapMissingTo", NumberText(choices));
  int orig = static_cast<int>(choices.Below(16)) - 8;
  for (std::size_t left = 2 + choices.Below(3); left > 0; --left) {
    norm.Add("LinearNorm")
        .Set("orig", choices.Rarely() ? NumberText(choices) : std::to_string(orig))
        .Set("norm", NumberText(choices));
    orig += 1 + static_cast<int>(choices.Below(5));
  }
  return norm;
}

Node Discretize(Choices& choices) {
  Node bins("Discretize");
  MaybeSet(bins, "mapMissingTo", choices);
  MaybeSet(bins, "defaultValue", choices);
  if (choices.Half()) bins.Set("dataType", std::string(choices.Pick(kTypes)));
  for (std::size_t left = choices.Below(4); left > 0; --left) {
    bins.Add("DiscretizeBin").Set("binValue", NumberOrWord(choices)).Add(Interval(choices));
  }
  return bins;
}

Node Table(const Names& columns, Choices& choices) {
  Node table("InlineTable");
  for (std::size_t left = choices.Below(5); left > 0; --left) {
    Node& row = table.Add("row");
    for (const std::string& column : columns) {
      if (!choices.Rarely()) row.Add(column).text = NumberOrWord(choices);
    }
  }
  return table;
}

Node MapValues(const Names& fields, Choices& choices) {
  Node map("MapValues");
  map.Set("outputColumn", "out");
  MaybeSet(map, "mapMissingTo", choices);
  MaybeSet(map, "defaultValue", choices);
  if (choices.Half()) map.Set("dataType", std::string(choices.Pick(kTypes)));
  Names columns = {"out"};
  for (std::size_t i = 0, pairs = 1 + choices.Below(3); i < pairs; ++i) {
    columns.push_back("in" + std::to_string(i));
    map.Add("FieldColumnPair").Set("field", choices.Pick(fields)).Set("column", columns.back());
  }
  map.Add(Table(columns, choices));
  return map;
}

Node TextIndex(const Names& fields, std::size_t depth, Choices& choices) {
  constexpr std::array<std::string_view, 4> kWeights = {"termFrequency", "binary", "logarithmic",
                                                        "augmentedNormalizedTermFrequency"};
  Node index("TextIndex");
  index.Set("textField", choices.Pick(fields));
  index.Set("localTermWeights", std::string(choices.Pick(kWeights)));
  if (choices.Half()) index.Set("maxLevenshteinDistance", NumberText(choices));
  if (choices.Half()) index.Set("isCaseSensitive", "true");
  if (choices.Half()) index.Set("countHits", "bestHits");
  if (choices.Rarely()) index.Set("tokenize", "false");
  if (choices.Rarely()) index.Set("wordSeparatorCharacterRE", Word(choices));
  for (std::size_t left = choices.Below(3); left > 0; --left) {
    Node& step = index.Add("TextIndexNormalization");
    if (choices.Half()) step.Set("recursive", "true");
    if (choices.Half()) step.Set("maxLevenshteinDistance", NumberText(choices));
    step.Add(Table({"string", "stem", "regex"}, choices));
    if (choices.Half()) {
      for (Node& row : step.children.back().children) {
        if (row.children.size() > 2) row.children[2].text = "true";
      }
    }
  }
  index.Add(Expression(fields, depth, choices));
  return index;
}

Node Apply(const Names& fields, std::size_t depth, Choices& choices) {
  constexpr std::array<std::string_view, 3> kTreatments = {"returnInvalid", "asIs", "asMissing"};
  const Call call = choices.Pick(kCalls);
  Node apply("Apply");
  apply.Set("function", call.name);
  MaybeSet(apply, "mapMissingTo", choices);
  MaybeSet(apply, "defaultValue", choices);
  apply.Set("invalidValueTreatment", std::string(choices.Pick(kTreatments)));
  const std::size_t count = choices.Rarely() ? choices.Below(5) : call.arguments;
  for (std::size_t i = 0; i < count; ++i) apply.Add(Expression(fields, depth, choices));
  return apply;
}

Node DerivedField(const std::string& name, const Names& fields, Choices& choices) {
  Node derived("DerivedField");
  derived.Set("name", name);
  derived.Set("optype", std::string(choices.Pick(kOpTypes)));
  derived.Set("dataType", std::string(choices.Pick(kTypes)));
  derived.Add(Expression(fields, 1 + choices.Below(4), choices));
  for (std::size_t left = choices.Rarely() ? 3 : 0; left > 0; --left) {
    derived.Add("Value").Set("value", NumberOrWord(choices));
  }
  return derived;
}

}  // namespace

Node DataField(const std::string& name, Choices& choices) {
  constexpr std::array<std::string_view, 4> kProperties = {"valid", "valid", "missing", "invalid"};
  Node field("DataField");
  field.Set("name", name);
  field.Set("dataType", std::string(choices.Pick(kTypes)));
  field.Set("optype", std::string(choices.Pick(kOpTypes)));
  for (std::size_t left = choices.Below(8) == 7 ? 2 : 0; left > 0; --left) {
    field.Add(Interval(choices));
  }
  for (std::size_t left = choices.Below(6) == 5 ? 4 : 0; left > 0; --left) {
    Node& value = field.Add("Value").Set("value", NumberOrWord(choices));
    value.Set("property", std::string(choices.Pick(kProperties)));
    if (choices.Rarely()) value.Set("displayValue", Word(choices));
  }
  return field;
}

Node Expression(const Names& fields, std::size_t depth, Choices& choices) {
  const std::string field = choices.Rarely() ? Word(choices) : choices.Pick(fields);
  const std::size_t kind = choices.Below(depth > 0 ? 16 : 4);
  Node node("FieldRef");
  if (kind < 3) {
    MaybeSet(node, "mapMissingTo", choices);
  } else if (kind == 3) {
    return Constant(choices);
  } else if (kind == 4) {
    node = NormContinuous(choices);
  } else if (kind == 5) {
    node = Node("NormDiscrete");
    node.Set("value", NumberOrWord(choices));
    if (choices.Rarely()) node.Set("method", "thermometer");
  } else if (kind == 6) {
    node = Discretize(choices);
  } else if (kind == 7) {
    return MapValues(fields, choices);
  } else if (kind == 8) {
    return TextIndex(fields, depth - 1, choices);
  } else {
    return Apply(fields, depth - 1, choices);
  }
  node.Set("field", field);
  return node;
}

Node Transformations(const std::string& element, const std::string& prefix, Names& fields,
                     Choices& choices) {
  Node container(element);
  for (std::size_t i = 0, count = choices.Below(3); i < count; ++i) {
    Node& function = container.Add("DefineFunction");
    function.Set("name", "g" + std::to_string(i));
    function.Set("optype", "continuous");
    if (choices.Half()) function.Set("dataType", std::string(choices.Pick(kTypes)));
    for (const char* parameter : {"p", "q"}) {
      Node& node = function.Add("ParameterField").Set("name", parameter);
      if (choices.Half()) node.Set("dataType", std::string(choices.Pick(kTypes)));
    }
    function.Add(Expression({"p", "q"}, 3, choices));
  }
  for (std::size_t i = 0, count = 1 + choices.Below(4); i < count; ++i) {
    const std::string name = prefix + std::to_string(i);
    container.Add(DerivedField(name, fields, choices));
    fields.push_back(name);
  }
  return container;
}

}  // namespace svmscore::fuzz
