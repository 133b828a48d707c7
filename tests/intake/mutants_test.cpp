// Damaged documents, read to the letter and by default: whatever is scored to the letter is scored
// by default too, unless it cannot have been meant, and what a translator refuses is refused with
// its own code.
//
// With SVMSCORE_MUTANTS=NUMBER that many are made of each document, and with
// SVMSCORE_DOCUMENTS=FOLDER also of those in this folder.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fuzz/choices.h"
#include "fuzz/grammar.h"
#include "fuzz/tree.h"
#include "host/xml/elements.h"
#include "host/xml/transcoder.h"
#include "tests/intake/document_parts.h"

namespace svmscore_test {
namespace {

using MCZandor_850::SSException;
using svmscore::LoadChecks;
using svmscore::fuzz::Choices;
using svmscore::fuzz::Node;
namespace code = svmscore::code;
namespace fs = std::filesystem;

const std::set<std::string> kArrays = {"Array",     "REAL-ARRAY", "NUM-ARRAY",
                                       "INT-ARRAY", "REAL-Array", "INT-Array"};

// Whether a derived field that the model needs cannot be computed: a translator then drops it.
bool LacksDerivedFields(const std::string& text) {
  const svmscore::LoadedModel loaded = Load(text, LoadChecks::kTolerate);
  const auto* root = loaded.document.Dom()->getDocumentElement();
  const auto* model = svmscore::FindModelElement(loaded.document.Dom());
  return loaded.model->GetTransformationDictionary() == nullptr &&
         (svmscore::FindChild(root, "TransformationDictionary") != nullptr ||
          svmscore::FindChild(model, "LocalTransformations") != nullptr);
}

// What is refused although a translator scores it.
bool CannotHaveBeenMeant(const SSException& error, const std::string& text) {
  const std::string element = error.Where().element;
  switch (error.GetErrorCode()) {
    case code::kUnknownField:     // a name that no field has
    case code::kFieldNotNumeric:  // a text in place of a number
    case code::kNotScorable:
    case code::kBeyondLimit:
      return true;
    case code::kBadContent:
      // An array that does not fit, or a machine without usable terms.
      if (kArrays.contains(element) || element == "SupportVectorMachine") return true;
      break;
    case code::kBadValue:
      // Words in an array, or an offset that is not a number.
      if (kArrays.contains(element) || element == "Coefficients") return true;
      break;
    default:
      break;
  }
  return LacksDerivedFields(text);
}

Node TreeOf(const xercesc::DOMElement* element) {
  Node node(svmscore::NameOf(element));
  const xercesc::DOMNamedNodeMap* attributes = element->getAttributes();
  for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
    node.Set(svmscore::ToUtf8(attributes->item(i)->getNodeName()),
             svmscore::ToUtf8(attributes->item(i)->getNodeValue()));
  }
  for (const xercesc::DOMNode* child = element->getFirstChild(); child != nullptr;
       child = child->getNextSibling()) {
    if (child->getNodeType() == xercesc::DOMNode::ELEMENT_NODE) {
      node.Add(TreeOf(static_cast<const xercesc::DOMElement*>(child)));
    } else if (child->getNodeType() == xercesc::DOMNode::TEXT_NODE) {
      node.text += svmscore::ToUtf8(child->getNodeValue());
    }
  }
  return node;
}

// Elements of the model, now and then hidden in an Extension, given a prefix or another version.
void Disguise(Node& root, Choices& choices) {
  constexpr std::array kVersions = {"2.1", "3.0", "4.4", "5.0", "1.1", "44", "", "x"};
  if (choices.Rarely()) {
    for (auto& [name, value] : root.attributes) {
      if (name == "version") value = choices.Pick(kVersions);
    }
  }
  Node* at = &root;
  while (!at->children.empty() && choices.Byte() > 70) {
    at = &at->children[choices.Below(at->children.size())];
  }
  if (at == &root || !choices.Rarely()) return;
  if (choices.Half()) {
    root.Set("xmlns:p", "http://www.dmg.org/PMML-4_4");
    at->name = "p:" + at->name;
  } else {
    Node around("Extension");
    if (choices.Half()) around.Set("extender", choices.Half() ? "svmscore" : "other");
    around.Add(std::move(*at));
    *at = std::move(around);
  }
}

struct Reading {
  bool scores = false;
  std::optional<SSException> error;
  bool to_the_letter = false;
};

Reading ReadAs(const std::string& text, LoadChecks checks) {
  Reading reading;
  try {
    const svmscore::LoadedModel loaded = Load(text, checks);
    reading.scores = true;
    for (const auto& finding : loaded.findings) {
      if (finding.Name() == "read-to-the-letter") reading.to_the_letter = true;
    }
  } catch (const SSException& error) {
    reading.error = error;
  }
  return reading;
}

// The code with which a translator refuses what the intake makes of the document; 0 where it does
// not.
int CodeOfReadable(const std::string& text) {
  try {
    Load(text, LoadChecks::kTolerate);
  } catch (const SSException& error) {
    return error.GetErrorCode();
  }
  return 0;
}

class Mutants : public testing::Test {
 protected:
  void Compare(const std::string& text) {
    const Reading letter = ReadAs(text, LoadChecks::kAsIs);
    const Reading meant = ReadAs(text, LoadChecks::kRefuse);
    ++tally_["all"];
    if (letter.scores) ++tally_["letter"];
    if (meant.scores) ++tally_["meant"];
    if (meant.to_the_letter) ++tally_["only to the letter"];
    if (letter.scores && !meant.scores) {
      ++tally_["refused"];
      EXPECT_TRUE(CannotHaveBeenMeant(*meant.error, text)) << meant.error->what() << '\n' << text;
    }
    if (letter.scores || meant.scores) return;
    const int own = letter.error->GetErrorCode();
    const int given = meant.error->GetErrorCode();
    EXPECT_TRUE(given == own || given == CodeOfReadable(text)) << letter.error->what() << '\n'
                                                               << meant.error->what() << '\n'
                                                               << text;
  }

  void TearDown() override {
    for (const auto& [what, count] : tally_) RecordProperty(what, count);
    // The checks after the intake should never be needed.
    EXPECT_LE(tally_["only to the letter"] * 50, tally_["all"]);
    // The test would be worthless if hardly any document were read.
    EXPECT_GE(tally_["letter"] * 10, tally_["all"]);
  }

  std::string Bytes(std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i) bytes += static_cast<char>(random_() & 0xff);
    return bytes;
  }

  template <typename Make>
  void CompareMade(const Make& make) {
    const std::string bytes = Bytes(600);
    Choices choices(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    Choices damage = choices.SplitOff(1, 4);
    Node document = make(choices);
    Disguise(document, damage);
    svmscore::fuzz::Mutate(document, damage);
    Compare(XmlOf(document));
  }

  std::mt19937 random_{20240229};  // NOLINT: the same every time
  std::map<std::string, int> tally_;
};

int Count(int usual) {
  const char* asked = std::getenv("SVMSCORE_MUTANTS");
  return asked == nullptr ? usual : std::atoi(asked);
}

TEST_F(Mutants, OfAGrammar) {
  for (int i = 0; i < Count(600) && !HasFailure(); ++i) {
    CompareMade([](Choices& choices) { return svmscore::fuzz::Document(choices); });
  }
}

TEST_F(Mutants, OfTheDocumentsOfTests) {
  std::vector<fs::path> folders = {TEST_FOLDER};
  if (const char* folder = std::getenv("SVMSCORE_DOCUMENTS")) folders.emplace_back(folder);
  std::vector<fs::path> paths;
  for (const fs::path& folder : folders) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.path().extension() == ".pmml") paths.push_back(entry.path());
    }
  }
  std::sort(paths.begin(), paths.end());
  for (const fs::path& path : paths) {
    std::optional<Node> tree;
    try {
      tree = TreeOf(svmscore::PmmlDocument::FromFile(path.string()).Dom()->getDocumentElement());
    } catch (const SSException&) {
      continue;  // no document that could be damaged any further
    }
    for (int i = 0; i < Count(60) && !HasFailure(); ++i) {
      CompareMade([&tree](Choices&) { return *tree; });
    }
  }
}

}  // namespace
}  // namespace svmscore_test
