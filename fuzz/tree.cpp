#include "fuzz/tree.h"

#include <algorithm>
#include <string_view>

namespace svmscore::fuzz {
namespace {

constexpr std::size_t kMostNodes = 3000;
constexpr std::size_t kMostMutations = 6;

std::string Escaped(std::string_view text) {
  std::string out;
  for (const char letter : text) {
    switch (letter) {
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '&':
        out += "&amp;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += letter;
    }
  }
  return out;
}

void Write(const Node& node, std::string& out) {
  out += '<' + node.name;
  for (std::size_t i = 0; i < node.attributes.size(); ++i) {
    const auto& [name, value] = node.attributes[i];
    // A second attribute of the same name would only be a parse error.
    const auto same = [&key = name](const auto& other) { return other.first == key; };
    if (std::any_of(node.attributes.begin(), node.attributes.begin() + static_cast<long>(i),
                    same)) {
      continue;
    }
    out += ' ' + name + "=\"" + Escaped(value) + '"';
  }
  out += '>' + Escaped(node.text);
  for (const Node& child : node.children) Write(child, out);
  out += "</" + node.name + ">\n";
}

void Collect(Node& node, std::vector<Node*>& nodes) {
  nodes.push_back(&node);
  for (Node& child : node.children) Collect(child, nodes);
}

void MutateChildren(Node& node, std::size_t total, Choices& choices) {
  if (node.children.empty()) return;
  const std::size_t which = choices.Below(node.children.size());
  const auto child = node.children.begin() + static_cast<std::ptrdiff_t>(which);
  switch (choices.Below(4)) {
    case 0:
      node.children.erase(child);
      break;
    case 1:
      if (total < kMostNodes / 2) node.children.insert(child, Node(*child));
      break;
    case 2:
      std::iter_swap(child, node.children.begin() +
                                static_cast<std::ptrdiff_t>(choices.Below(node.children.size())));
      break;
    default:
      for (std::size_t depth = choices.Below(total < kMostNodes ? 300 : 1); depth > 0; --depth) {
        Node around(child->name);
        around.attributes = child->attributes;
        around.Add(std::move(*child));
        *child = std::move(around);
      }
  }
}

void MutateAttributes(Node& node, const std::vector<Node*>& nodes, Choices& choices) {
  if (node.attributes.empty()) {
    node.Set(choices.Half() ? "value" : "mapMissingTo", NumberText(choices));
    return;
  }
  const std::size_t which = choices.Below(node.attributes.size());
  auto& [name, value] = node.attributes[which];
  switch (choices.Below(5)) {
    case 0:
      node.attributes.erase(node.attributes.begin() + static_cast<std::ptrdiff_t>(which));
      break;
    case 1:
      value = NumberText(choices);
      break;
    case 2:
      value = Word(choices);
      break;
    case 3:
      name += 'x';
      break;
    default:
      // A value from elsewhere in the document: a name that exists.
      const auto& others = choices.Pick(nodes)->attributes;
      if (!others.empty()) value = std::string(choices.Pick(others).second);
  }
}

}  // namespace

std::string XmlOf(const Node& root) {
  std::string out;
  Write(root, out);
  return out;
}

void Mutate(Node& root, Choices& choices) {
  for (std::size_t left = choices.Below(kMostMutations); left > 0; --left) {
    std::vector<Node*> nodes;
    Collect(root, nodes);
    Node& node = *nodes[choices.Below(std::min<std::size_t>(nodes.size(), 65536))];
    switch (choices.Below(6)) {
      case 0:
      case 1:
        MutateChildren(node, nodes.size(), choices);
        break;
      case 2:
      case 3:
        MutateAttributes(node, nodes, choices);
        break;
      case 4:
        node.text = choices.Half() ? NumberText(choices) : Word(choices);
        break;
      default:
        node.name = std::string(choices.Pick(nodes)->name);
    }
  }
}

}  // namespace svmscore::fuzz
