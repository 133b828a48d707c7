// Sets of variables, looked up by name.
#ifndef HOST_MODEL_SCORE_DICTIONARY_H_
#define HOST_MODEL_SCORE_DICTIONARY_H_

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/model/score_dict_var.h"
#include "host/text/api.h"

namespace MCZandor_850 {

// The interface through which models and translators read a dictionary. Functions that add:
// [set-up]. The others: [any thread].
// Owns: a dictionary made by a translator is shared between that translator and the model that it
// is handed to; one that the caller made with `new` belongs to the model that it is handed to.
// Lives: variables, as long as the dictionary. Fails: std::bad_alloc; FindVar never.
class SVMSCORE_HOST_API ScoreDictionary : public std::enable_shared_from_this<ScoreDictionary> {
 public:
  virtual ~ScoreDictionary();

  // Null where the dictionary has no variable of that name. Constant time.
  virtual ScoreDictVar* FindVar(const std::string& name) const = 0;
  // In the order in which they were added. With `without_hidden`, those that a derived field of the
  // same name hides are left out.
  virtual std::vector<ScoreDictVar*> GetVariables(bool without_hidden = false) const = 0;
};

class SVMSCORE_HOST_API BaseDictionary : public ScoreDictionary {
 public:
  BaseDictionary();
  ~BaseDictionary() override;

  // False if its name is taken. Owns: the dictionary; a variable that is not added is deleted.
  // Fails: std::bad_alloc, after which FindVar may return the deleted variable, so that the
  // dictionary must only be deleted.
  bool AddVar(std::unique_ptr<ScoreDictVar> var);
  // Adds a variable that someone else owns under `name`. False when the name is taken.
  // Lives: the variable, longer than the dictionary.
  bool AddVar(const std::string& name, const ScoreDictVar* var);

  ScoreDictVar* FindVar(const std::string& name) const override;
  std::vector<ScoreDictVar*> GetVariables(bool without_hidden = false) const override;

 private:
  std::vector<std::unique_ptr<ScoreDictVar>> owned_;
  std::vector<ScoreDictVar*> in_order_;
  std::unordered_map<std::string, ScoreDictVar*> by_name_;
};

}  // namespace MCZandor_850

#endif  // HOST_MODEL_SCORE_DICTIONARY_H_
