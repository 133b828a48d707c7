// A hashed index over the rows of a table, by the values of one or several key columns.
#ifndef HOST_TRANSFORM_TABLE_TABLE_INDEX_H_
#define HOST_TRANSFORM_TABLE_TABLE_INDEX_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/text/number_key.h"
#include "host/transform/value/arena.h"
#include "host/transform/value/value.h"

namespace svmscore::transform {

// Numbers the distinct values of a column, compared by the type of the field that is looked up in
// it. Without a type, a number equals every text that can be read as that number.
class KeyColumn {
 public:
  explicit KeyColumn(std::optional<FieldType> type) : type_(type) {}

  // The number of a cell's value; -1 where no value of the field can equal it.
  int Add(std::string_view cell);
  // The number of a present value; -1 where no cell holds it. Takes constant time.
  int Find(const Value& value, Arena& arena) const;

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };

  bool ByText() const { return type_ && type_->data == DataType::kString; }

  std::optional<FieldType> type_;
  int count_ = 0;
  std::unordered_map<std::string, int, Hash, std::equal_to<>> texts_;
  std::unordered_map<NumberKey, int, NumberKeyHash> numbers_;
};

// Rows by the numbers of their keys: a step from key to key, each a hashed look-up.
class TableIndex {
 public:
  // False where a row with the same keys is already there.
  bool Add(const std::vector<int>& keys, int row);
  // One step from `node` (0 at the beginning) by the number of the next key; -1 where no row has
  // that key there. The node after the last key is the row.
  int Step(int node, int key) const {
    const auto found = edges_.find(EdgeOf(node, key));
    return found == edges_.end() ? -1 : found->second;
  }

 private:
  static std::uint64_t EdgeOf(int node, int key) {
    return static_cast<std::uint64_t>(static_cast<std::uint32_t>(node)) << 32 |
           static_cast<std::uint32_t>(key);
  }

  std::unordered_map<std::uint64_t, int> edges_;
  int nodes_ = 1;
};

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_TABLE_TABLE_INDEX_H_
