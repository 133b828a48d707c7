#include "capi/model_state.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <unordered_map>
#include <utility>

#include "capi/call_error.h"
#include "capi/caller_structs.h"
#include "host/load/plugin.h"
#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/text/field_types.h"
#include "tools/base/case_columns.h"
#include "tools/base/document_source.h"
#include "tools/base/error_text.h"
#include "tools/base/sha256.h"
#include "tools/findings/remarks.h"

namespace svmscore::capi {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreModel;
using MCZandor_850::ScoreResult;

void TextList::Finish() {
  for (const std::string& text : texts_) views_.push_back(TextOf(text));
}

namespace {

LoadChecks ChecksOf(int mode) {
  switch (mode) {
    case SVMSCORE_DEFAULT:
      return LoadChecks::kRefuse;
    case SVMSCORE_AS_IS:
      return LoadChecks::kAsIs;
    case SVMSCORE_STRICT:
      return LoadChecks::kStrict;
    default:
      RefuseArgument("options.mode is no enum svmscore_mode", "options.mode");
  }
}

void UsePolicy(ScoreModel& model, int policy) {
  switch (policy) {
    case SVMSCORE_MISSING_AS_MODEL:
      return;
    case SVMSCORE_MISSING_REPLACE:
      return model.SetMissingValuePolicy(ScoreModel::kReplaceMissing);
    case SVMSCORE_MISSING_PREDICT:
      return model.SetMissingValuePolicy(ScoreModel::kPredictMissing);
    case SVMSCORE_MISSING_FAIL:
      return model.SetMissingValuePolicy(ScoreModel::kFailOnMissing);
    default:
      RefuseArgument("options.missing_policy is no enum svmscore_missing_policy",
                     "options.missing_policy");
  }
}

InputFacts FactsOf(const ScoreDictVar& var, int role) {
  constexpr std::array kOpTypes = {"continuous", "ordinal", "cyclic", "categorical"};
  InputFacts facts;
  facts.name = var.GetName();
  facts.type = DataTypeName(var.GetFieldType().data);
  facts.op_type = kOpTypes.at(static_cast<std::size_t>(var.GetTypeCode()));
  facts.role = role;
  if (const auto* value = var.GetMissingReplacement()) facts.replacement = value->GetText();
  for (const auto* category : var.GetCategories()) facts.categories.Add(category->GetText());
  facts.categories.Finish();
  return facts;
}

void CollectInputs(ModelState& state) {
  state.inputs = tools::InputsOf(state.loaded);
  state.record_inputs = state.inputs.size();
  for (std::size_t i = 0; i < state.inputs.size(); ++i) {
    state.input_facts.push_back(FactsOf(
        *state.inputs[i], i < state.loaded.needed.size() ? SVMSCORE_NEEDED : SVMSCORE_NOT_NEEDED));
  }
  for (const ScoreDictVar* var : state.loaded.output->ExtraInputs()) {
    state.inputs.push_back(var);
    state.input_facts.push_back(FactsOf(*var, SVMSCORE_FOR_OUTPUT));
  }
}

// Fixes the positions of the model's variables in records, which the first case would do alone.
void FixPositions(ModelState& state) {
  const InputCaseRecord record(state.loaded.needed, true, state.replaces_missing);
  if (state.batch != nullptr) return state.batch->FixPositions(record);
  ScoreResult* result = nullptr;
  state.loaded.model->GetScore(&record, result, false);
  delete result;
}

void FindPlainEntries(ModelState& state) {
  if (state.batch == nullptr) return;
  std::unordered_map<const ScoreDictVar*, std::size_t> positions;
  for (std::size_t i = 0; i < state.loaded.needed.size(); ++i) {
    positions.emplace(state.loaded.needed[i], i);
  }
  std::vector<std::size_t> entries;
  for (std::size_t e = 0; e < state.batch->EntryCount(); ++e) {
    const ScoreDictVar* var = state.batch->PlainEntry(e);
    const auto position = positions.find(var);
    if (position == positions.end() || !var->TakesEveryNumber()) return;
    entries.push_back(position->second);
  }
  state.plain_entries = std::move(entries);
}

void CollectFacts(ModelState& state) {
  const ScoreDictVar& target = *state.loaded.model->GetTargetVar();
  state.target_name = target.GetName();
  state.target_type = DataTypeName(target.GetFieldType().data);
  for (const auto* category : target.GetCategories()) state.categories.Add(category->GetText());
  state.categories.Finish();
  for (std::string& remark : tools::RemarksOn(state.loaded)) state.remarks.Add(std::move(remark));
  state.remarks.Finish();
}

// The digest of a file's bytes, or of what a pipe has given to `source`.
std::string DigestOf(tools::DocumentSource& source) {
  tools::Sha256 digest;
  std::error_code unknown;
  if (std::filesystem::is_regular_file(source.Path(), unknown)) {
    errno = 0;
    std::ifstream file(source.Path(), std::ios::binary);
    std::array<char, 65536> chunk;
    while (file) {
      file.read(chunk.data(), chunk.size());
      digest.Add(chunk.data(), static_cast<std::size_t>(file.gcount()));
    }
    // No digest of a part: the file may have gone since it was read.
    if (!file.eof()) {
      ThrowAt(nullptr, code::kFileUnreadable, source.Path(), tools::ErrorText(errno));
    }
  } else {
    const std::string& text = source.Text();
    digest.Add(text.data(), text.size());
  }
  return digest.Hex();
}

svmscore_model* Load(const LoadSettings& settings, tools::DocumentSource& source,
                     std::string sha256) {
  const svmscore_load_options& options = settings.options;
  const LoadChecks checks = ChecksOf(options.mode);
  const Plugin plugin(settings.plugin_path);
  auto state = std::make_shared<ModelState>(LoadModel(
      plugin, [&source] { return source.Parse(Arrays::kAsNumbers); }, checks));
  state->sha256 = sha256.empty() ? DigestOf(source) : std::move(sha256);
  ScoreModel& model = *state->loaded.model;
  UsePolicy(model, options.missing_policy);
  model.SetPredictionOnly(options.prediction_only != 0);
  state->batch = dynamic_cast<BatchModel*>(&model);
  state->replaces_missing = model.GetMissingValuePolicy() == ScoreModel::kReplaceMissing;
  CollectInputs(*state);
  FixPositions(*state);
  FindPlainEntries(*state);
  CollectFacts(*state);
  const TextList& remarks = state->remarks;
  for (std::size_t i = 0; options.remark != nullptr && i < remarks.size(); ++i) {
    options.remark(options.remark_context, remarks[i].data, remarks[i].length);
  }
  return new svmscore_model{std::move(state)};
}

}  // namespace

LoadSettings ReadSettings(const svmscore_load_options* options) {
  LoadSettings settings;
  settings.options = Read(options, "options");
  const svmscore_load_options& given = settings.options;
  if (given.limit_count > 0) Require(given.limits, "options.limits");
  for (std::size_t i = 0; i < given.limit_count; ++i) {
    const svmscore_limit& limit = given.limits[i];
    Require(limit.name, "options.limits[].name");
    const auto names = LimitNames();
    const auto known = std::find_if(names.begin(), names.end(), [&limit](const LimitName& name) {
      return std::string_view(name.name) == limit.name;
    });
    if (known == names.end()) {
      RefuseArgument(std::string("there is no limit ") + limit.name, "options.limits");
    }
    settings.limits.*known->limit = limit.most;
  }
  settings.plugin_path = ViewOf(given.plugin_path, given.plugin_path_length);
  settings.name = ViewOf(given.name, given.name_length);
  if (settings.name.empty()) settings.name = "document";
  return settings;
}

std::string ReadPath(const char* path, std::size_t length) {
  Require(path, "path");
  std::string read(ViewOf(path, length));
  if (read.empty()) RefuseArgument("the path is empty", "path");
  if (read.find('\0') != std::string::npos) RefuseArgument("the path holds a NUL", "path");
  return read;
}

}  // namespace svmscore::capi

using namespace svmscore::capi;
namespace tools = svmscore::tools;

int svmscore_load_file(const char* path, size_t path_length, const svmscore_load_options* options,
                       svmscore_model** model, svmscore_error** error) {
  return Guarded(error, [&] {
    Require(model, "model");
    const LoadSettings settings = ReadSettings(options);
    tools::DocumentSource source(ReadPath(path, path_length), settings.limits);
    *model = Load(settings, source, {});
  });
}

int svmscore_load_memory(const void* data, size_t data_size, const svmscore_load_options* options,
                         svmscore_model** model, svmscore_error** error) {
  return Guarded(error, [&] {
    Require(model, "model");
    const std::string_view document = ReadData(data, data_size);
    const LoadSettings settings = ReadSettings(options);
    tools::Sha256 digest;
    digest.Add(document.data(), document.size());
    tools::DocumentSource source(settings.name, std::string(document), settings.limits);
    *model = Load(settings, source, digest.Hex());
  });
}

void svmscore_model_free(svmscore_model* model) {
  delete model;
}
