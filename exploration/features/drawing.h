#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "exploration/features/basics.h"
#include "exploration/features/feature.h"
#include "exploration/features/random.h"

namespace exploration {

/// A program while it is drawn: what was drawn so far has been executed, so that it is known what
/// stands where.
class Drawing {
 public:
  Drawing(std::uint64_t seed, std::uint64_t number, std::vector<const Feature*> withFeatures);
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;

  Random random;
  Program program;
  Machine machine;
  /// Those that this program may use.
  const std::vector<const Feature*> features;
  bool Has(const Feature& feature) const;

  /// Where drawing may begin: a variable, an element of a buffer.
  struct Root {
    Node node;
    bool isConstant = false;
  };
  std::vector<Root> roots;
  /// A counter or other index that is below `end` for all that are active.
  struct Index {
    Node node;
    int end;
  };
  std::vector<Index> indices;
  /// The work-items that get to where the drawing is.
  std::vector<int> active;

  int NewVariable(char letter, TypeId type, Space space, Variable::Role role);
  /// A structure or union, added to the program.
  TypeId NewRecord();
  /// A scalar or vector type that the features allow.
  TypeId NewLeafType();

  /// A value from outside, for each work-item another; in a helper function that is a parameter.
  Node NewInput(TypeId type);
  /// The same with these numbers, of each work-item one.
  Node NewInput(TypeId type, const std::vector<std::int64_t>& numbers);

  /// An expression of the type, known to all that are active.
  Node Value(TypeId type);
  /// A place of a scalar or vector type whose value is known, or one that can be stored to.
  std::optional<Node> KnownLeaf();
  std::optional<Node> Target();
  /// A structure or union of which something is known, or that can be stored to.
  std::optional<Node> KnownRecord();
  std::optional<Node> TargetRecord();
  /// One step from an array, structure, union or vector into it.
  std::optional<Node> Step(const Node& from);
  /// Whether the value is known to all that are active; of a structure or union, anything of it.
  bool IsKnown(const Node& node) const;

  /// Executes a statement and adds it to the block. Throws Invalid.
  void Add(const Node& statement);
  /// Adds a statement that some feature draws. False if none did.
  bool AddOne();
  /// A block of about so many statements, which leaves the machine as it was.
  Node NewBlock(int statements, const std::vector<int>& forItems);
  void AddAnswer(const Node& value);
  bool IsOutermost() const { return blocks.size() == 1; }
  bool IsInFunction() const { return arguments != nullptr; }
  /// In a helper function: what the call passes for the parameters that NewInput makes.
  std::vector<Node>* arguments = nullptr;
  std::vector<int>* parameters = nullptr;

  /// The whole program as it is now.
  Program Finished();

 private:
  std::optional<Node> Leaf(bool forStore);
  std::optional<Node> Record(bool forStore);
  std::optional<Node> Derived(TypeId type);
  bool Attempt(const Feature& feature);
  TypeId DrawnRecord(int depth, bool isAnonymous, int& names);
  std::int64_t DrawnNumber(Scalar scalar);

  std::vector<std::vector<Node>> blocks;
  int depth = 0;     ///< Of expressions.
  int inBlocks = 0;  ///< Of statements.
  std::vector<int> counts;
};

}  // namespace exploration
