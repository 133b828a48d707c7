// Scored tables as Arrow's arrays.
#include <array>
#include <string>
#include <utility>

#include "capi/arrow_columns.h"

namespace svmscore::capi {
namespace {

// A child may be moved out of its parent and released by itself: each has its own memory.
struct SchemaNode {
  std::string name;
  std::vector<std::unique_ptr<ArrowSchema>> children;
  std::vector<ArrowSchema*> pointers;
  std::unique_ptr<ArrowSchema> dictionary;
};

struct ArrayNode {
  std::shared_ptr<const ResultTable> table;
  std::array<const void*, 3> buffers{};
  std::vector<std::unique_ptr<ArrowArray>> children;
  std::vector<ArrowArray*> pointers;
  std::unique_ptr<ArrowArray> dictionary;
};

template <typename Node, typename Struct>
void Release(Struct* exported) {
  const std::unique_ptr<Node> node(static_cast<Node*>(exported->private_data));
  for (auto& child : node->children) {
    if (child->release != nullptr) child->release(child.get());
  }
  if (node->dictionary != nullptr && node->dictionary->release != nullptr) {
    node->dictionary->release(node->dictionary.get());
  }
  exported->release = nullptr;
  exported->private_data = nullptr;
}

// Releases what has been made when the rest fails.
template <typename Struct>
struct Releaser {
  void operator()(Struct* made) const {
    if (made->release != nullptr) made->release(made);
    delete made;
  }
};
using MadeSchema = std::unique_ptr<ArrowSchema, Releaser<ArrowSchema>>;
using MadeArray = std::unique_ptr<ArrowArray, Releaser<ArrowArray>>;

MadeSchema NewSchema(const char* format, const std::string& name) {
  auto node = std::make_unique<SchemaNode>();
  node->name = name;
  MadeSchema schema(new ArrowSchema());
  schema->format = format;
  schema->name = node->name.c_str();
  schema->flags = ARROW_FLAG_NULLABLE;
  schema->release = Release<SchemaNode, ArrowSchema>;
  schema->private_data = node.release();
  return schema;
}

MadeArray NewArray(const std::shared_ptr<ResultTable>& table, std::size_t length) {
  auto node = std::make_unique<ArrayNode>();
  node->table = table;
  MadeArray array(new ArrowArray());
  array->length = static_cast<std::int64_t>(length);
  array->buffers = node->buffers.data();
  array->release = Release<ArrayNode, ArrowArray>;
  array->private_data = node.release();
  return array;
}

template <typename Node, typename Made>
void AddChild(const Made& parent, Made child) {
  auto& node = *static_cast<Node*>(parent->private_data);
  node.pointers.reserve(node.pointers.size() + 1);
  node.children.emplace_back(child.get());
  node.pointers.push_back(child.release());
  parent->children = node.pointers.data();
  parent->n_children = static_cast<std::int64_t>(node.pointers.size());
}

template <typename Node, typename Made>
void SetDictionary(const Made& parent, Made dictionary) {
  auto& node = *static_cast<Node*>(parent->private_data);
  node.dictionary.reset(dictionary.release());
  parent->dictionary = node.dictionary.get();
}

const char* FormatOf(int type) {
  switch (type) {
    case SVMSCORE_F64:
      return "g";
    case SVMSCORE_I64:
      return "l";
    case SVMSCORE_DICTIONARY:
      return "i";
    default:
      return "U";
  }
}

// Buffers of no length are not null either, for readers that expect some.
const void* NotNull(const void* buffer) {
  static constexpr std::uint64_t kNothing = 0;
  return buffer == nullptr ? &kNothing : buffer;
}

void SetBuffers(const svmscore_column& column, std::size_t missing, const MadeArray& array) {
  auto& buffers = static_cast<ArrayNode*>(array->private_data)->buffers;
  array->null_count = static_cast<std::int64_t>(missing);
  buffers[0] = column.validity;
  if (column.type == SVMSCORE_UTF8_64) {
    buffers[1] = column.offsets;
    buffers[2] = NotNull(column.data);
    array->n_buffers = 3;
  } else {
    buffers[1] = NotNull(column.data);
    array->n_buffers = 2;
  }
}

// Hands a struct over as the interface says: its content moves.
template <typename Made, typename Struct>
void Move(Made made, Struct* to) {
  *to = *made;
  made->release = nullptr;
}

}  // namespace

void ExportSchema(const ResultTable& table, ArrowSchema* schema) {
  MadeSchema all = NewSchema("+s", "");
  all->flags = 0;
  for (const ResultTable::Column& column : table.Columns()) {
    MadeSchema child = NewSchema(FormatOf(column.type), column.name);
    if (column.type == SVMSCORE_DICTIONARY) {
      SetDictionary<SchemaNode>(child, NewSchema("U", ""));
    }
    AddChild<SchemaNode>(all, std::move(child));
  }
  Move(std::move(all), schema);
}

void ExportTable(const std::shared_ptr<ResultTable>& table, ArrowArray* array) {
  const svmscore_table view = table->View();
  MadeArray all = NewArray(table, view.row_count);
  all->n_buffers = 1;
  for (std::size_t i = 0; i < view.column_count; ++i) {
    const svmscore_column& column = view.columns[i];
    MadeArray child = NewArray(table, view.row_count);
    SetBuffers(column, table->Columns()[i].missing, child);
    if (column.type == SVMSCORE_DICTIONARY) {
      MadeArray dictionary = NewArray(table, table->Dictionary().length);
      SetBuffers(table->Dictionary(), 0, dictionary);
      SetDictionary<ArrayNode>(child, std::move(dictionary));
    }
    AddChild<ArrayNode>(all, std::move(child));
  }
  Move(std::move(all), array);
}

}  // namespace svmscore::capi
