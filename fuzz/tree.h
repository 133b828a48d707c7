// The elements of a document, as plain values.
#ifndef FUZZ_TREE_H_
#define FUZZ_TREE_H_

#include <string>
#include <utility>
#include <vector>

#include "fuzz/choices.h"

namespace svmscore::fuzz {

struct Node {
  std::string name;
  std::vector<std::pair<std::string, std::string>> attributes;
  std::vector<Node> children;
  std::string text;

  explicit Node(std::string element) : name(std::move(element)) {}
  Node& Set(const std::string& attribute, std::string value) {
    attributes.emplace_back(attribute, std::move(value));
    return *this;
  }
  // The reference is valid until the next child is added.
  Node& Add(Node child) { return children.emplace_back(std::move(child)); }
  Node& Add(const std::string& element) { return children.emplace_back(element); }
};

std::string XmlOf(const Node& root);

// Damages a few elements below the root: removes, doubles, swaps and nests them, renames them and
// their attributes, and changes the values of attributes and texts. Keeps the tree small.
void Mutate(Node& root, Choices& choices);

}  // namespace svmscore::fuzz

#endif  // FUZZ_TREE_H_
