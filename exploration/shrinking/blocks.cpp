#include <iterator>
#include <utility>

#include "exploration/features/basics.h"
#include "exploration/shrinking/edits.h"
#include "exploration/shrinking/steps.h"

namespace exploration {

/// The statements of a loop or of one branch in place of the whole; a counter is zero.
std::optional<Program> WithoutBlock(const Program& program, std::size_t number) {
  Program left = program;
  for (const StatementAt& at : StatementsOf(left)) {
    for (const Node& part : at.Statement().parts) {
      if (part.construct->kind != Construct::Kind::block || number-- != 0) continue;
      const Node whole = at.Statement();
      Node block = part;
      if (whole.construct->names == Construct::Names::declaration) {
        Visit(block, [&whole](Node& node) {
          if (node.construct->names == Construct::Names::variable &&
              node.numbers[0] == whole.numbers[0])
            node = {&literalConstruct, node.type, {}, {0}};
        });
      }
      std::vector<Node>& parts = at.block->parts;
      const auto begin = parts.begin() + static_cast<std::ptrdiff_t>(at.index);
      parts.insert(parts.erase(begin), std::make_move_iterator(block.parts.begin()),
                   std::make_move_iterator(block.parts.end()));
      return left;
    }
  }
  return std::nullopt;
}

}  // namespace exploration
