#include "tools/calibrate/records.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "host/model/ss_exception.h"
#include "host/output/verification_records.h"
#include "tools/base/bad_input.h"
#include "tools/verify/verify_block.h"
#include "tools/verify/verify_case.h"
#include "tools/verify/verify_document.h"

namespace svmscore::tools {
namespace {

bool RecordsAgree(const LoadedModel& loaded) {
  try {
    return VerifyDocument(loaded).Disagreements() == 0;
  } catch (const MCZandor_850::SSException&) {  // they cannot be read, or compare nothing
    return false;
  }
}

// The inputs of the records. One that the model needs and no record has is missing in each.
TextTable CasesOf(const LoadedModel& loaded, const output::Verification& verification) {
  TextTable table;
  table.name = "the verification records";
  const VerifyCase scored(loaded);
  const std::string target = scored.Prediction().name;
  std::vector<std::optional<std::size_t>> cells(verification.columns.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string& field = verification.columns[i].field;
    if (field == target || !scored.IsInput(field) || table.FindColumn(field) >= 0) continue;
    cells[i] = table.header.size();
    table.header.push_back(field);
  }
  for (const MCZandor_850::ScoreDictVar* var : loaded.needed) {
    if (table.FindColumn(var->GetName()) < 0) table.header.push_back(var->GetName());
  }
  output::ForEachRecord(verification, [&](transform::Cells record) {
    std::vector<std::string> row(table.header.size());
    for (const auto& [column, text] : record) {
      if (cells[column]) row[*cells[column]] = text;
    }
    table.rows.push_back(std::move(row));
  });
  return table;
}

// Records made from the same cases; nothing where they cannot be made, or are not confirmed.
std::optional<std::string> Rewritten(const LoadedModel& before, const LoadedModel& after,
                                     const LoadText& load, const std::string& name,
                                     const std::string& document) {
  const auto verification = output::ReadVerification(before.document.Dom());
  // In a record, what is missing is not there: no text means it. XML holds no such character.
  const CellRules rules({std::string(1, '\1')});
  const BlockPlace place = FindBlockPlace(document, name);
  try {
    std::string text =
        PutBlock(document, place,
                 VerificationBlock(after, CasesOf(before, *verification), rules, place.prefix));
    if (RecordsAgree(load(text))) return text;
  } catch (const BadCases&) {
  }
  return std::nullopt;
}

}  // namespace

RecordsFate UpdateRecords(const LoadedModel& before, const LoadText& load, const std::string& name,
                          std::string& document) {
  bool exist = true;
  try {
    exist = output::ReadVerification(before.document.Dom()).has_value();
  } catch (const MCZandor_850::SSException&) {  // they cannot be read
  }
  if (!exist) return RecordsFate::kNone;
  const LoadedModel after = load(document);
  if (RecordsAgree(after)) return RecordsFate::kKept;
  const bool agreed = RecordsAgree(before);
  if (agreed) {
    if (auto text = Rewritten(before, after, load, name, document)) {
      document = *std::move(text);
      return RecordsFate::kRewritten;
    }
  }
  const BlockPlace place = FindBlockPlace(document, name);
  document.erase(place.begin, place.end - place.begin);
  return agreed ? RecordsFate::kDropped : RecordsFate::kDroppedAsWrong;
}

}  // namespace svmscore::tools
