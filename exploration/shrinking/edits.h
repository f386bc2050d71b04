#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "exploration/program/program.h"

// What the passes change programs with. The outcome need not be valid.

namespace exploration {

/// A statement, and the block that it stands in.
struct StatementAt {
  Node* block;
  std::size_t index;
  Node& Statement() const { return block->parts[index]; }
};
/// All of them, each before those in it. They are good until the program changes.
std::vector<StatementAt> StatementsOf(Program& program);

/// All nodes, each before its parts, until the program changes.
std::vector<Node*> NodesOf(Program& program);

bool Is(const Node& node, std::string_view construct);
/// The node or anything below it.
bool Holds(const Node& node, const std::function<bool(const Node&)>& which);

/// Erases the statements with these numbers in StatementsOf, and those that use what they declare.
void Erase(Program& program, const std::vector<bool>& which);
/// Erases the innermost statements that hold such a node. False if one stands in no statement that
/// can be erased, as in what a function returns.
bool EraseUsersOf(Program& program, const std::function<bool(const Node&)>& which);

/// Everything of the type that has a number here takes the other, noType for no change.
void Retype(Program& program, const std::vector<TypeId>& to);
std::vector<TypeId> NoChange(const Program& program);

/// An assignment of the kind that fits the type.
Node AssignmentOf(const Program& program, Node place, Node value);

/// Puts in order what a change has left behind: sizes of buffers, inputs and literals, indices
/// beyond an array, types that are there twice, and what nothing uses.
Program Tidied(Program program);

/// Of `parts` things that can be left out in halves, quarters and so on, and in the end one by one
/// from the last to the first: which the step of that number leaves out.
std::optional<std::vector<bool>> Chunk(std::size_t parts, std::size_t number);

}  // namespace exploration
