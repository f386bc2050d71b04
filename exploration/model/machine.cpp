#include "exploration/model/machine.h"

#include <algorithm>

#include "exploration/model/arithmetic.h"

namespace exploration {
namespace {

Touch::By Both(const Touch::By& earlier, const Touch::By& later) {
  if (earlier.item == Touch::nobody) return later;
  if (later.item == Touch::nobody) return earlier;
  Touch::By both = later;
  if (earlier.item != later.item) both.item = Touch::several;
  if (earlier.group != later.group) both.group = Touch::several;
  both.epoch = std::max(earlier.epoch, later.epoch);
  return both;
}

}  // namespace

Machine::Machine(const Program& ofProgram)
    : program(ofProgram),
      types(ofProgram.types),
      slots(static_cast<std::size_t>(ofProgram.Items())),
      answers(static_cast<std::size_t>(ofProgram.Items())) {
  for (const Buffer& buffer : program.buffers) Fill(buffer);
  for (const ConstantData& data : program.constants) Fill(data);
}

void Machine::Fill(const Buffer& buffer) {
  const int object = NewObject(buffer.variable);
  std::vector<Cell>& cells = objects[Index(object)]->cells;
  Require(cells.size() == buffer.bytes.size(), "a buffer of another size");
  for (std::size_t i = 0; i < cells.size(); ++i)
    cells[i].byte = {buffer.bytes[i], Knowledge::known};
  BindAll(buffer.variable, object);
}

void Machine::Fill(const ConstantData& data) {
  const int object = NewObject(data.variable);
  const Value value = Evaluate(data.initializer);
  std::vector<Cell>& cells = objects[Index(object)]->cells;
  for (std::size_t i = 0; i < cells.size(); ++i) cells[i].byte = value.bytes.at(i);
  BindAll(data.variable, object);
}

void Machine::BindAll(std::int64_t variable, int object) {
  const int current = item;
  for (item = 0; item < program.Items(); ++item) Bind(variable, object);
  item = current;
}

void Machine::ExecuteForAll(const Node& statement) {
  for (item = 0; item < program.Items(); ++item) Execute(statement);
  item = 0;
}

Machine& Machine::operator=(const Machine& other) {
  item = other.item;
  epoch = other.epoch;
  steps = other.steps;
  objects = other.objects;
  slots = other.slots;
  answers = other.answers;
  return *this;
}

Value Machine::Evaluate(const Node& node) {
  CountStep();
  if (node.construct->kind == Construct::Kind::value) return node.construct->value(node, *this);
  if (types[node.type].kind == Type::Kind::pointer) return PointerOf(node.numbers.at(0));
  return Load(Locate(node));
}

Value Machine::Evaluate(const Node& node, std::vector<Place>& watched) {
  loads = &watched;
  try {
    Value value = Evaluate(node);
    loads = nullptr;
    return value;
  } catch (...) {
    loads = nullptr;
    throw;
  }
}

Place Machine::Locate(const Node& node) {
  CountStep();
  return node.construct->place(node, *this);
}

void Machine::Execute(const Node& node) {
  CountStep();
  if (node.construct->kind == Construct::Kind::block) {
    for (const Node& statement : node.parts) Execute(statement);
  } else {
    node.construct->execute(node, *this);
  }
}

Value Machine::Load(const Place& place, int atomic) {
  Touched(place, false, atomic);
  if (loads != nullptr) loads->push_back(place);
  return Loaded(types, Changeable(place), place);
}

void Machine::StoreTo(const Place& place, const Value& value, int atomic) {
  Require(ObjectOf(place).space != Space::constantSpace, "a store to constant memory");
  Touched(place, true, atomic);
  Store(types, Changeable(place), place, value);
}

Object& Machine::Changeable(const Place& place) {
  std::shared_ptr<Object>& object = objects.at(Index(place.object));
  if (object.use_count() > 1) object = std::make_shared<Object>(*object);
  return *object;
}

int Machine::NewObject(std::int64_t variable) {
  const Variable& of = program.variables.at(Index(variable));
  objects.push_back(std::make_shared<Object>(MadeObject(types, of.type, of.space)));
  return static_cast<int>(objects.size()) - 1;
}

Machine::Slot& Machine::SlotOf(std::int64_t variable) {
  std::vector<Slot>& own = slots.at(Index(item));
  if (own.size() <= Index(variable)) own.resize(Index(variable) + 1);
  return own[Index(variable)];
}

// The first work-item of a group that comes to local memory makes it for all of the group.
void Machine::Declare(std::int64_t variable) {
  const int object = NewObject(variable);
  const int current = item;
  if (program.variables[Index(variable)].space == Space::privateSpace) {
    Bind(variable, object);
  } else if (LocalId() == 0) {
    for (int other = 0; other < program.localSize; ++other, ++item) Bind(variable, object);
  }
  item = current;
}

void Machine::Bind(std::int64_t variable, const Value& pointer) {
  SlotOf(variable).pointer = std::make_shared<const Value>(pointer);
}

void Machine::Bind(std::int64_t variable, int object) { SlotOf(variable).object = object; }

Place Machine::PlaceOf(std::int64_t variable) const {
  const std::vector<Slot>& own = slots.at(Index(item));
  Require(own.size() > Index(variable) && own[Index(variable)].object >= 0, "nothing there yet");
  Place place;
  place.object = own[Index(variable)].object;
  place.type = program.variables[Index(variable)].type;
  return place;
}

Value Machine::PointerOf(std::int64_t variable) const {
  const std::vector<Slot>& own = slots.at(Index(item));
  Require(own.size() > Index(variable) && own[Index(variable)].pointer != nullptr,
          "a pointer that points nowhere");
  return *own[Index(variable)].pointer;
}

std::int64_t Machine::Input(std::int64_t slot) const {
  return program.inputs.at(Index(item)).at(Index(slot));
}

void Machine::Answer(std::int64_t slot, const std::vector<Byte>& bytes) {
  std::vector<Byte>& own = answers.at(Index(item));
  own.resize(std::max(own.size(), 8 * (Index(slot) + 1)), {untouched, Knowledge::known});
  std::copy(bytes.begin(), bytes.end(), own.begin() + static_cast<std::ptrdiff_t>(8 * slot));
}

void Machine::CountStep() {
  constexpr int most = 200000;
  Require(++steps < most, "too many steps");
}

std::vector<Byte> Machine::BytesOf(const Buffer& buffer) const {
  std::vector<Byte> bytes;
  const Place place = PlaceOf(buffer.variable);
  for (const Cell& cell : ObjectOf(place).cells) bytes.push_back(cell.byte);
  return bytes;
}

// OpenCL C 1.2, 6.12.8: a barrier orders the accesses of a work-group; between work-groups nothing
// does. A store to a member may change the whole union that it is in. The same atomic function may
// be called by several at once, with one outcome; but with what is no call of it in between, that
// depends on which comes first.
void Machine::Touched(const Place& place, bool stores, int atomic) {
  if (ObjectOf(place).touches.empty()) return;
  std::size_t begin = place.offset;
  std::size_t end = begin + SizeOf(types, place.type);
  for (const Step& step : place.path) {
    if (atomic != notAtomic || !stores || types[step.record].kind != Type::Kind::unionType)
      continue;
    begin = std::min(begin, step.offset);
    end = std::max(end, step.offset + SizeOf(types, step.record));
  }
  const auto disturbs = [&](const Touch::By& by) {
    if (by.item == Touch::nobody || by.item == item) return false;
    if (atomic != notAtomic && by.atomic == atomic) return false;
    return by.group != Group() || by.epoch == epoch;
  };
  Object& object = Changeable(place);
  const Touch::By now = {static_cast<std::int16_t>(item), static_cast<std::int16_t>(Group()), epoch,
                         static_cast<std::int16_t>(atomic)};
  for (std::size_t i = begin; i < end; ++i) {
    Touch& touch = object.touches.at(i);
    Require(!disturbs(touch.writer) && !disturbs(touch.others),
            "two work-items, one of which stores");
    if (stores) {
      Require(!disturbs(touch.readers[0]) && !disturbs(touch.readers[1]) &&
                  (touch.readerGroup == Touch::nobody || touch.readerGroup == now.group),
              "two work-items, one of which stores");
      if (atomic == notAtomic) {
        // All that came before it is ordered with it, or would have disturbed it.
        touch.others = {};
        touch.writer = now;
      } else if (touch.writer.atomic == atomic) {
        touch.writer = Both(touch.writer, now);
      } else {
        touch.others = Both(touch.others, touch.writer);
        touch.others.atomic = notAtomic;
        touch.writer = now;
      }
    } else if (atomic == notAtomic) {
      if (touch.readers[0].item != now.item) touch.readers[1] = touch.readers[0];
      touch.readers[0] = now;
      const bool isFirst = touch.readerGroup == Touch::nobody || touch.readerGroup == now.group;
      touch.readerGroup = isFirst ? now.group : Touch::several;
    }
  }
}

std::int64_t KnownInteger(const Types& types, const Value& value) {
  const Number number = ComponentOf(types, value, 0);
  Require(number.knowledge == Knowledge::known, "a decision by what is not known");
  Require(!number.IsFloat(), "a decision by a float");
  return number.integer;
}

}  // namespace exploration
