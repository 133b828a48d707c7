// TextIndexNormalization: replacements that a text goes through before its words are counted.
#ifndef HOST_TRANSFORM_TEXT_NORMALISATION_H_
#define HOST_TRANSFORM_TEXT_NORMALISATION_H_

#include <memory>
#include <string>
#include <vector>

#include "host/transform/text/pattern.h"
#include "host/transform/text/word_matching.h"
#include "host/xml/attributes.h"

namespace svmscore::transform {

class TextNormalisation {
 public:
  TextNormalisation(const Element* element, const WordRules& inherited);

  // Replaces every occurrence of each row's text in `text`, row by row; with recursive="true",
  // repeats this until nothing changes. False once the work is spent, or where there seems to be no
  // end.
  bool Run(std::string& text, WorkBudget& work) const;

 private:
  struct Row {
    std::unique_ptr<Pattern> pattern;  // of a regular expression, or of the text as it is
    bool regex = false;
    Words words;  // where edits are allowed: the words that the row looks for
    std::string replacement;
  };
  void AddRow(const Element* row, const std::string& in, const std::string& out, bool regex);
  bool RunRow(const Row& row, std::string& text, WorkBudget& work) const;
  // Replaces sequences of words that few enough edits turn into those of the row.
  bool ReplaceWords(const Row& row, std::string& text, WorkBudget& work) const;

  WordRules rules_;
  bool recursive_;
  std::vector<Row> rows_;
};

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_TEXT_NORMALISATION_H_
