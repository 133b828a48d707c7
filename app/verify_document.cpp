#include "app/verify_document.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "app/failure.h"
#include "host/message_codes.h"
#include "host/pmml/elements.h"
#include "host/ss_exception.h"

namespace svmscore::app {
namespace {

using output::Verification;
using output::VerificationColumn;

struct Roles {
  std::vector<std::pair<std::size_t, std::string>> inputs;  // columns and the fields they fill
  std::vector<std::pair<std::size_t, Quantity>> expected;   // columns and what they expect
};

bool IsInMiningSchema(const LoadedModel& loaded, const std::string& name) {
  const auto* schema = FindChild(FindModelElement(loaded.document.Dom()), "MiningSchema");
  for (const auto* field : Children(schema, "MiningField")) {
    if (FindAttribute(field, "name") == name) return true;
  }
  return false;
}

bool IsDerived(const LoadedModel& loaded, const std::string& name) {
  const auto* derived = loaded.model->GetTransformationDictionary();
  return derived != nullptr && derived->FindVar(name) != nullptr;
}

Roles RolesOf(const LoadedModel& loaded, const Verification& verification, const VerifyCase& scored,
              VerifyReport& report) {
  Roles roles;
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
    if (scored.IsInput(name)) roles.inputs.emplace_back(i, name);
    if (scored.IsInput(name) && !target) continue;
    if (auto output = scored.FindOutputField(name)) {
      roles.expected.emplace_back(i, *std::move(output));
    } else if (target) {
      if (!outputs) roles.expected.emplace_back(i, prediction);
    } else if (auto derived = scored.FindDerived(name)) {
      report.Remark(fmt::format("{} is a derived field: its values are compared", name));
      roles.expected.emplace_back(i, *std::move(derived));
    } else if (IsDerived(loaded, name)) {
      report.Remark(fmt::format(
          "{} is a derived field that nothing else needs: it is not computed, and not compared",
          name));
    } else if (!IsInMiningSchema(loaded, name)) {
      ThrowAt(column.element, code::kUnknownField, name, "VerificationField");
    }
  }
  return roles;
}

void Run(const Verification& verification, const Roles& roles, VerifyCase& scored,
         VerifyReport& report) {
  for (std::size_t record = 0; record < verification.records.size(); ++record) {
    const auto& cells = verification.records[record].cells;
    scored.Clear();
    for (const auto& [column, name] : roles.inputs) {
      if (cells[column]) scored.Set(name, *cells[column]);
    }
    scored.Score();
    for (const auto& [column, quantity] : roles.expected) {
      report.Compare(record + 1, quantity, cells[column].value_or(""),
                     verification.columns[column].allowance, scored);
    }
  }
}

VerifyReport Verify(const LoadedModel& loaded) {
  const auto verification = output::ReadVerification(loaded.document.Dom());
  if (!verification) {
    throw Failure(kModelError,
                  fmt::format("{}: the document holds no verification records (ModelVerification); "
                              "make some with --input CASES --write FILE, or compare with a file "
                              "of expected scores: --input CASES --expected FILE",
                              loaded.document.Name()));
  }
  VerifyCase scored(loaded);
  VerifyReport report;
  for (const output::Note& note : verification->notes) report.Remark(note.text);
  const Roles roles = RolesOf(loaded, *verification, scored, report);
  Run(*verification, roles, scored, report);
  if (report.Compared() == 0) {
    ThrowAt(verification->element, code::kBadContent, "no record has a value to compare",
            "ModelVerification");
  }
  return report;
}

}  // namespace

VerifyReport VerifyDocument(const LoadedModel& loaded) {
  try {
    return Verify(loaded);
  } catch (MCZandor_850::SSException& error) {
    loaded.document.Locate(error);
    throw;
  }
}

}  // namespace svmscore::app
