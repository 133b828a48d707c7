#include "host/model/instruction_set.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"

namespace svmscore {
namespace {

constexpr std::array kIsaNames = {"plain", "sse2", "avx2", "avx512"};

Isa BestIsa() {
  for (const Isa isa : {Isa::kAvx512, Isa::kAvx2}) {
    if (CpuHas(isa)) return isa;
  }
  return Isa::kSse2;
}

IsaChoice& ProcessChoice() {
  static IsaChoice choice = ChooseIsa(std::getenv("SVMSCORE_ISA"));
  return choice;
}

struct CertifyChoice {
  bool certifies = true;
  const char* error = nullptr;
};

CertifyChoice ChooseCertified(const char* forced) {
  const std::string_view given = forced == nullptr ? "" : forced;
  if (given.empty() || given == "on") return {};
  if (given == "off") return {false, nullptr};
  return {true, "SVMSCORE_CERTIFY must be on or off"};
}

CertifyChoice& ProcessCertifyChoice() {
  static CertifyChoice choice = ChooseCertified(std::getenv("SVMSCORE_CERTIFY"));
  return choice;
}

}  // namespace

bool CpuHas(Isa isa) {
  switch (isa) {
    case Isa::kPlain:
    case Isa::kSse2:
      return true;
    case Isa::kAvx2:
      return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    case Isa::kAvx512:
      return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
             __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("fma");
  }
  return false;
}

const char* NameOf(Isa isa) {
  return kIsaNames[static_cast<std::size_t>(isa)];
}

IsaChoice ChooseIsa(const char* forced) {
  if (forced == nullptr || *forced == '\0') return {BestIsa(), nullptr};
  for (const Isa isa : {Isa::kPlain, Isa::kSse2, Isa::kAvx2, Isa::kAvx512}) {
    if (std::string_view(forced) != NameOf(isa)) continue;
    if (CpuHas(isa)) return {isa, nullptr};
    return {BestIsa(), "SVMSCORE_ISA names an instruction set that this CPU does not have"};
  }
  return {BestIsa(), "SVMSCORE_ISA must be sse2, avx2, avx512 or plain"};
}

const IsaChoice& ChosenIsa() {
  return ProcessChoice();
}

void RequireChosenIsa() {
  for (const char* error : {ChosenIsa().error, ProcessCertifyChoice().error}) {
    if (error != nullptr) ThrowAt(nullptr, code::kInstructionSet, error);
  }
}

void UseIsa(Isa isa) {
  ProcessChoice() = {isa, nullptr};
}

bool CertifiesVotes() {
  return ProcessCertifyChoice().certifies;
}

void UseCertifiedVotes(bool certifies) {
  ProcessCertifyChoice() = {certifies, nullptr};
}

}  // namespace svmscore
