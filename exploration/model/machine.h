#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "exploration/model/memory.h"
#include "exploration/program/program.h"

namespace exploration {

/// Executes a program's statements, each for every work-item before the next. As work-items that do
/// not wait for each other may not touch what another stores (Invalid is thrown), this order is as
/// good as any. The program may grow while the machine runs it, so that a generator knows what
/// stands where. A copy is a state to go back to.
class Machine {
 public:
  explicit Machine(const Program& ofProgram);
  Machine(const Machine&) = default;
  Machine& operator=(const Machine& other);

  const Program& program;
  const Types& types;

  /// For a statement of the kernel's own block.
  void ExecuteForAll(const Node& statement);
  /// For what was added to the program since the machine was made.
  void Fill(const Buffer& buffer);
  void Fill(const ConstantData& data);

  // For the constructs, and of one work-item.
  void SetItem(int toItem) { item = toItem; }
  int Item() const { return item; }
  int Group() const { return item / program.localSize; }
  int LocalId() const { return item % program.localSize; }
  Value Evaluate(const Node& node);
  /// The same, and from which places anything was loaded.
  Value Evaluate(const Node& node, std::vector<Place>& loads);
  Place Locate(const Node& node);
  void Execute(const Node& node);

  /// With the number of an atomic function, of which several work-items may use the same.
  Value Load(const Place& place, int atomic = notAtomic);
  void StoreTo(const Place& place, const Value& value, int atomic = notAtomic);
  /// The object that a place lies in.
  const Object& ObjectOf(const Place& place) const { return *objects.at(Index(place.object)); }

  /// A new object for the variable, of which nothing is known: in local memory one for the group.
  void Declare(std::int64_t variable);
  /// What the variable's name means from now on: an object that is there, or for a pointer its
  /// value.
  void Bind(std::int64_t variable, const Value& pointer);
  void Bind(std::int64_t variable, int object);
  Place PlaceOf(std::int64_t variable) const;
  Value PointerOf(std::int64_t variable) const;

  std::int64_t Input(std::int64_t slot) const;
  /// Stores eight bytes into this work-item's part of `out`.
  void Answer(std::int64_t slot, const std::vector<Byte>& bytes);
  /// To be called for every work-item; no work-item goes on before all have come.
  void Barrier() { epoch += item == 0 ? 1 : 0; }
  /// The same at the end of a statement, for what comes after it.
  void BarrierBehind() { epoch += item == program.Items() - 1 ? 1 : 0; }
  /// Throws Invalid if there are too many.
  void CountStep();

  /// What `out` is full of before the kernel runs.
  static constexpr std::uint8_t untouched = 0xA5;
  /// Of each work-item eight bytes for each slot, up to the last that it has stored to.
  const std::vector<std::vector<Byte>>& Answers() const { return answers; }
  /// The bytes of a buffer of the program.
  std::vector<Byte> BytesOf(const Buffer& buffer) const;

 private:
  struct Slot {
    int object = -1;
    std::shared_ptr<const Value> pointer;
  };
  static std::size_t Index(std::int64_t number) { return static_cast<std::size_t>(number); }
  Slot& SlotOf(std::int64_t variable);
  void BindAll(std::int64_t variable, int object);
  Object& Changeable(const Place& place);
  int NewObject(std::int64_t variable);
  void Touched(const Place& place, bool stores, int atomic);

  std::vector<Place>* loads = nullptr;
  int item = 0;
  int epoch = 0;
  int steps = 0;
  std::vector<std::shared_ptr<Object>> objects;  ///< Those of copies too, until one stores.
  std::vector<std::vector<Slot>> slots;          ///< Of each work-item, by variable.
  std::vector<std::vector<Byte>> answers;
};

/// The value as an int, which must be known.
std::int64_t KnownInteger(const Types& types, const Value& value);

}  // namespace exploration
