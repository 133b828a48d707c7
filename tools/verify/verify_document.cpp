#include "tools/verify/verify_document.h"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/xml/attributes.h"
#include "tools/base/bad_input.h"

namespace svmscore::tools {
namespace {

using output::Verification;
using output::VerificationColumn;

// What a column of the records is for: either, both or neither.
struct Role {
  std::optional<VerifyCase::Input> input;
  std::optional<Quantity> expected;
};

std::unordered_set<std::string> NamesInMiningSchema(const LoadedModel& loaded) {
  std::unordered_set<std::string> names;
  const auto* schema = FindChild(FindModelElement(loaded.document.Dom()), "MiningSchema");
  for (const auto* field : Children(schema, "MiningField")) {
    if (auto name = FindAttribute(field, "name")) names.insert(*std::move(name));
  }
  return names;
}

bool IsDerived(const LoadedModel& loaded, const std::string& name) {
  const auto* derived = loaded.model->GetTransformationDictionary();
  return derived != nullptr && derived->FindVar(name) != nullptr;
}

// One a column.
std::vector<Role> RolesOf(const LoadedModel& loaded, const Verification& verification,
                          const VerifyCase& scored, VerifyReport& report) {
  std::vector<Role> roles(verification.columns.size());
  const std::unordered_set<std::string> schema = NamesInMiningSchema(loaded);
  const Quantity prediction = scored.Prediction();
  const bool outputs =
      std::any_of(verification.columns.begin(), verification.columns.end(),
                  [&scored, &prediction](const VerificationColumn& column) {
                    return (!scored.IsInput(column.field) || column.field == prediction.name) &&
                           scored.FindOutputField(column.field);
                  });
  for (std::size_t i = 0; i < verification.columns.size(); ++i) {
    const VerificationColumn& column = verification.columns[i];
    const std::string& name = column.field;
    const bool target = name == prediction.name;
    roles[i].input = scored.FindInput(name);
    if (roles[i].input && !target) continue;
    if (auto output = scored.FindOutputField(name)) {
      roles[i].expected = std::move(output);
    } else if (target) {
      if (!outputs) roles[i].expected = prediction;
    } else if (auto derived = scored.FindDerived(name)) {
      report.Remark(fmt::format("{} is a derived field: its values are compared", name));
      roles[i].expected = std::move(derived);
    } else if (IsDerived(loaded, name)) {
      report.Remark(fmt::format(
          "{} is a derived field that nothing else needs: it is not computed, and not compared",
          name));
    } else if (!schema.contains(name)) {
      ThrowAt(column.element, code::kUnknownField, name, "VerificationField");
    }
  }
  return roles;
}

void Run(const Verification& verification, const std::vector<Role>& roles, VerifyCase& scored,
         VerifyReport& report) {
  std::size_t record = 0;
  output::ForEachRecord(verification, [&](transform::Cells cells) {
    ++record;
    scored.Clear();
    for (const auto& [column, text] : cells) {
      if (roles[column].input) scored.Set(*roles[column].input, text);
    }
    scored.Score();
    for (const auto& [column, text] : cells) {
      if (!roles[column].expected) continue;
      report.Compare(record, *roles[column].expected, text, verification.columns[column].allowance,
                     scored);
    }
  });
}

VerifyReport Verify(const LoadedModel& loaded, VerifyReport::Sink sink) {
  const auto verification = output::ReadVerification(loaded.document.Dom());
  if (!verification) {
    throw BadDocument(
        fmt::format("{}: the document holds no verification records (ModelVerification); "
                    "make some with --input CASES --write FILE, or compare with a file "
                    "of expected scores: --input CASES --expected FILE",
                    loaded.document.Name()));
  }
  VerifyCase scored(loaded);
  VerifyReport report(std::move(sink));
  for (const output::Note& note : verification->notes) report.Remark(note.text);
  const std::vector<Role> roles = RolesOf(loaded, *verification, scored, report);
  Run(*verification, roles, scored, report);
  if (report.Compared() == 0) {
    ThrowAt(verification->element, code::kBadContent, "no record has a value to compare",
            "ModelVerification");
  }
  return report;
}

}  // namespace

VerifyReport VerifyDocument(const LoadedModel& loaded, VerifyReport::Sink sink) {
  try {
    return Verify(loaded, std::move(sink));
  } catch (MCZandor_850::SSException& error) {
    loaded.document.Locate(error);
    throw;
  }
}

}  // namespace svmscore::tools
