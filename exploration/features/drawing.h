#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "exploration/features/basics.h"
#include "exploration/features/feature.h"
#include "exploration/features/random.h"

namespace exploration {

/// A program while it is drawn: what was drawn so far has been executed, so that it is known what
/// stands where.
class Drawing {
 public:
  Drawing(Random withRandom, Program empty, std::vector<const Feature*> withFeatures);
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;

  Random random;
  Program program;
  Machine machine;
  /// Those that this program may use.
  const std::vector<const Feature*> features;
  bool Has(const Feature& feature) const;

  /// Where a way to a place may begin: a variable, an element of a buffer.
  std::vector<Node> roots;
  /// A counter or something else that is below `end` for all that are active.
  struct Index {
    Node node;
    int end = 0;
  };
  std::vector<Index> indices;
  /// The work-items that get to where the drawing is.
  std::vector<int> active;

  int NewVariable(char letter, TypeId type, Space space, Variable::Role role);
  /// A structure or union, added to the program.
  TypeId NewRecord();
  /// A scalar or vector type that the features allow.
  TypeId NewLeafType();
  /// The bits of a number for `in`, or for a literal.
  std::int64_t NewNumber(Scalar scalar);

  /// A value from outside, for each work-item another; in a helper function that is a parameter.
  Node NewInput(TypeId type);
  /// The same for a scalar with these numbers, of each work-item one.
  Node NewInput(TypeId type, const std::vector<std::int64_t>& numbers);

  /// An expression of the scalar or vector type, known to all that are active.
  Node NewValue(TypeId type);
  /// A place of a scalar or vector type whose value is known, or one that can be stored to.
  std::optional<Node> KnownLeaf() { return Leaf(false); }
  std::optional<Node> TargetLeaf() { return Leaf(true); }
  /// A structure or union of which something is known, or that can be stored to.
  std::optional<Node> KnownRecord() { return Record(false); }
  std::optional<Node> TargetRecord() { return Record(true); }
  /// From an array, structure, union or vector one step into it.
  std::optional<Node> Step(const Node& from);
  /// Whether the value is known to all that are active; of a structure or union, anything of it.
  bool IsKnown(const Node& node) const;

  /// Executes a statement and adds it to the block. Throws Invalid.
  void Add(const Node& statement);
  /// Adds a statement that some feature draws.
  void AddOne();
  /// An answer; nothing if there are many already.
  void AddAnswer(const Node& value);
  /// A block of so many statements, executed by those work-items, with the machine as it was
  /// before.
  Node NewBlock(int statements, const std::vector<int>& items);
  /// A call of a new helper function to which these arguments are passed. `result` makes what it
  /// returns from its parameters, in the state at its end; nothing for a void function.
  Node NewCall(const std::vector<Node>& arguments,
               const std::function<std::optional<Node>(const std::vector<Node>&)>& result);

  /// Statements may stand here that wait for all work-items.
  bool IsOutermost() const { return blocks.size() == 1; }
  /// Statements with blocks may stand here.
  bool MayNest() const { return blocks.size() <= 3; }
  bool IsInFunction() const { return function != nullptr; }
  /// The kernel's block so far, at the end.
  Program Finished();

 private:
  struct Binding {
    int parameter;
    Node argument;
  };
  struct Mark;
  std::optional<Node> Leaf(bool forStore);
  std::optional<Node> Record(bool forStore);
  std::optional<Node> Derived(TypeId type);
  bool Attempt(const Feature& feature);
  TypeId NewRecord(int depth, bool isAnonymous, int& names);
  Member NewMember(int depth, int& names);
  void Bind(const Binding& binding);
  void BindAgain();

  std::vector<std::vector<Node>> blocks;
  std::vector<Node> answered;                ///< Since anything was stored.
  int depth = 0;                             ///< Of expressions.
  std::vector<int> counts;                   ///< Of the names of each letter.
  std::vector<Binding>* function = nullptr;  ///< The helper function's that is being drawn.
};

}  // namespace exploration
