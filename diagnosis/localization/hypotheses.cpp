#include "diagnosis/localization/hypotheses.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <utility>

namespace diagnosis {
namespace {

/// The table under construction, for one row.
class Table {
 public:
  explicit Table(const RowData& data) : data_(data), row_(data.row) {
    for (std::size_t n = 0; n < data.wrongLanes; ++n)
      wrongAnswers_.insert(data.BitsAt(data.lanes[n]));
  }

  std::vector<Hypothesis> Make() {
    AddNumbers();
    AddViews();
    AddLanes();
    AddElements();
    AddUnwritten();
    AddConstant();
    AddPlaces();
    AddStrides();
    AddTimes();
    AddMappings();
    AddVague();
    return std::move(hypotheses_);
  }

 private:
  /// `set` makes the fault out of a right device.
  void Add(Rank rank, std::string name, std::string meaning, const std::function<void(Fault&)>& set,
           std::string detail = "") {
    Fault fault;
    set(fault);
    // With one or two answers in all wrong lanes, one of a great many places holds them by chance.
    constexpr std::size_t fewAnswers = 2;
    if (rank != Rank::named && wrongAnswers_.size() <= fewAnswers && IsElsewhere(fault)) return;
    hypotheses_.push_back({std::move(name), std::move(meaning), std::move(detail), rank, fault});
  }

  /// Whether what is read or stored stands somewhere else.
  static bool IsElsewhere(const Fault& fault) {
    const auto moved = [](const Reading& reading) {
      return reading.place != Place() || reading.lanes != ownLanes || reading.elementsOn != 0 ||
             reading.repetitionsBefore != 0;
    };
    return moved(fault.a) || moved(fault.b) || fault.result != Place() || fault.lanes != ownLanes ||
           fault.elements != ownElements || fault.repetitionsBefore != 0;
  }

  // What the numbers suffer on their way.
  void AddNumbers() {
    const bool keeps = data_.mode.results == Denormals::kept;
    const auto add = [this](Rank rank, const char* name, const char* meaning,
                            const std::function<void(Fault&)>& set,
                            const char* detail = "") { Add(rank, name, meaning, set, detail); };
    if (keeps) {
      constexpr char name[] = "denormals-flushed";
      constexpr char meaning[] =
          "Denormals are flushed to zero, though the device reports that it keeps them.";
      for (const Denormals denormals : {Denormals::flushed, Denormals::mayBeFlushed}) {
        add(Rank::named, name, meaning,
            [&](Fault& fault) { fault.denormalOperands = fault.denormalResults = denormals; });
      }
      add(
          Rank::named, name, meaning,
          [](Fault& fault) { fault.denormalOperands = Denormals::flushed; }, "operands alone");
      add(
          Rank::named, name, meaning,
          [](Fault& fault) { fault.denormalResults = Denormals::flushed; }, "results alone");
    }

    struct Mode {
      Rounding rounding;
      const char* name;
      const char* words;
    };
    constexpr Mode modes[] = {{Rounding::towardZero, "toward-zero", "toward zero"},
                              {Rounding::upward, "up", "up"},
                              {Rounding::downward, "down", "down"},
                              {Rounding::toNearest, "to-nearest", "to nearest"}};
    for (const Mode& mode : modes) {
      if (mode.rounding == data_.mode.conversion) continue;
      Add(Rank::named, fmt::format("rounds-{}", mode.name),
          fmt::format("The conversion to float rounds {}.", mode.words),
          [&](Fault& fault) { fault.conversionRounding = mode.rounding; });
      if (!row_.twoInputs) continue;
      Add(Rank::named, fmt::format("rounds-arithmetic-{}", mode.name),
          fmt::format("The sum or product rounds {}.", mode.words),
          [&](Fault& fault) { fault.arithmeticRounding = mode.rounding; });
      Add(Rank::general, fmt::format("rounds-everything-{}", mode.name),
          fmt::format("The conversion to float and the sum or product round {}.", mode.words),
          [&](Fault& fault) {
            fault.conversionRounding = fault.arithmeticRounding = mode.rounding;
          });
    }

    constexpr char low24Bits[] = "Only the low 24 bits of the integer view count.";
    for (const Conversion conversion :
         {Conversion::low24Bits, Conversion::low24BitsSigned, Conversion::low24BitsOfMagnitude}) {
      add(Rank::named, "truncates-to-24-bits", low24Bits,
          [conversion](Fault& fault) { fault.conversion = conversion; });
    }
    add(Rank::named, "negated", "Every answer has the other sign.",
        [](Fault& fault) { fault.change = Change::negated; });
    if (row_.operation == Operation::floor) {
      add(Rank::named, "no-floor", "The floor is left out.",
          [](Fault& fault) { fault.formula = Formula::copy; });
    }

    const auto addIntegerStored = [&](Change change, Manner manner) {
      constexpr char meaning[] = "The bits of the result are those of an integer.";
      const auto set = [change, manner](Fault& fault) {
        fault.change = change;
        fault.amount = static_cast<std::int64_t>(manner);
      };
      add(Rank::named, "integer-stored", meaning, set);
      if (row_.width == sizeof(float)) return;
      add(
          Rank::named, "integer-stored", meaning,
          [&](Fault& fault) {
            set(fault);
            fault.resultWidth = static_cast<int>(row_.width);
            fault.result.step = static_cast<int>(row_.width);
          },
          "through the element member");
    };
    for (const Manner manner : {Manner::intNearest, Manner::intLowest, Manner::uintNearest,
                                Manner::uintHighest, Manner::lowBitsOfLong}) {
      addIntegerStored(Change::integerTruncated, manner);
      addIntegerStored(Change::integerRounded, manner);
    }
    addIntegerStored(Change::integerComputed, Manner::lowBitsOfLong);

    add(Rank::named, "sign-lost", "Every answer is positive.",
        [](Fault& fault) { fault.change = Change::magnitude; });
    add(Rank::named, "integer-sign-lost", "The integer view loses its sign.",
        [](Fault& fault) { fault.conversion = Conversion::positive; });
    add(Rank::named, "sign-of-zero-lost", "A zero may have the wrong sign.",
        [](Fault& fault) { fault.change = Change::zeroOfEitherSign; });
    add(Rank::named, "largest-for-infinite",
        "The largest float stands where the answer is an infinity.",
        [](Fault& fault) { fault.change = Change::largestForInfinite; });
    add(Rank::named, "converts-through-half",
        "The integer is converted by way of a float of 16 bits.",
        [](Fault& fault) { fault.conversion = Conversion::throughHalf; });
    add(Rank::named, "answers-through-half", "The answer goes by way of a float of 16 bits.",
        [](Fault& fault) { fault.change = Change::throughHalf; });
    add(Rank::named, "conversion-left-out", "The bits of the integer are taken for a float's.",
        [](Fault& fault) { fault.conversion = Conversion::leftOut; });
    add(Rank::named, "integer-complemented", "The bits of the integer are inverted.",
        [](Fault& fault) { fault.conversion = Conversion::complemented; });
    add(Rank::named, "element-as-bool", "The element is taken for a truth value: 0 or 1.",
        [](Fault& fault) { fault.conversion = Conversion::truth; });
    struct Narrow {
      const char* type;
      Conversion conversion;
    };
    for (const auto& [type, conversion] :
         {Narrow{"int", Conversion::saturatedToInt}, Narrow{"short", Conversion::saturatedToShort},
          Narrow{"ushort", Conversion::saturatedToUshort},
          Narrow{"char", Conversion::saturatedToChar},
          Narrow{"uchar", Conversion::saturatedToUchar}}) {
      Add(Rank::named, fmt::format("saturates-to-{}", type),
          fmt::format("The integer is cut to the range of {}.", type),
          [conversion = conversion](Fault& fault) { fault.conversion = conversion; });
    }
    if (row_.twoInputs) {
      add(Rank::named, "answers-a", "The converted integer is the answer.",
          [](Fault& fault) { fault.formula = Formula::copy; });
      add(Rank::named, "answers-b", "The float of B is the answer.",
          [](Fault& fault) { fault.formula = Formula::onlyB; });
      add(Rank::named, "other-operation", "A sum in place of a product, or a product of a sum.",
          [this](Fault& fault) {
            fault.formula = row_.operation == Operation::add ? Formula::product : Formula::sum;
          });
      add(Rank::named, "difference", "The float of B is subtracted.",
          [](Fault& fault) { fault.formula = Formula::difference; });
      add(Rank::named, "b-truncated", "The float of B is made an integer, and that a float.",
          [](Fault& fault) { fault.truncatedB = true; });
      add(Rank::named, "conversion-too-late",
          "The integer takes part as it is, and the sum or product is rounded once.",
          [](Fault& fault) { fault.formula = Formula::unconverted; });
      add(Rank::named, "computes-in-integers",
          "The float of B is made an integer, and the result of integers converted.",
          [](Fault& fault) { fault.formula = Formula::inIntegers; });
    }
    if (row_.operation == Operation::power) {
      add(Rank::named, "power-by-logarithm", "The power of a negative base is a NaN.",
          [](Fault& fault) { fault.formula = Formula::byLogarithm; });
      add(Rank::named, "answers-a", "The converted integer is the answer.",
          [](Fault& fault) { fault.formula = Formula::copy; });
      add(Rank::named, "exponent-exchanged",
          "The exponent is the lane in place of the element, or the element in place of the lane.",
          [](Fault& fault) { fault.formula = Formula::exponentOfLane; });
    }
    AddSteadyUlps();
    AddLostBits();
  }

  // Fewer bits of precision than a float has.
  void AddLostBits() {
    constexpr int mostBits = 16;
    for (int bits = 1; bits <= mostBits; ++bits) {
      const auto addLost = [&](Change change, std::int64_t ulps, const char* how) {
        Add(
            Rank::named, fmt::format("off-by-ulps-{}", ulps),
            fmt::format("The answers are off by {} in the last place.", Units(ulps)),
            [&](Fault& fault) {
              fault.change = change;
              fault.amount = bits;
            },
            fmt::format("at most: the low {} of the significand are {}", Bits(bits), how));
      };
      addLost(Change::bitsLost, (std::int64_t{1} << bits) - 1, "lost");
      addLost(Change::bitsRounded, std::int64_t{1} << (bits - 1), "rounded away");
    }
  }

  // As far off as the first wrong answer, and always so.
  void AddSteadyUlps() {
    const auto ulps = UlpsOfWrongLane(0);
    constexpr std::int64_t most = 1 << 20;
    if (!ulps || *ulps == 0 || *ulps > most) return;
    struct Direction {
      Change change;
      const char* words;
    };
    for (const auto& [change, words] :
         {Direction{Change::ulpsOutward, "away from zero"},
          Direction{Change::ulpsInward, "toward zero"}, Direction{Change::ulpsUpward, "up"},
          Direction{Change::ulpsDownward, "down"}}) {
      Add(
          Rank::named, fmt::format("off-by-ulps-{}", *ulps),
          fmt::format("The answers are off by {} in the last place.", Units(*ulps)),
          [&, change = change](Fault& fault) {
            fault.change = change;
            fault.amount = *ulps;
          },
          fmt::format("always, {}", words));
    }
  }

  // What a lane is taken for.
  void AddViews() {
    if (row_.isSigned) {
      Add(Rank::named, "element-as-unsigned", "The element is taken for unsigned.",
          [](Fault& fault) { fault.a.sign = Sign::isUnsigned; });
    } else {
      Add(Rank::named, "element-as-signed", "The element is taken for signed.",
          [](Fault& fault) { fault.a.sign = Sign::isSigned; });
    }
    Add(Rank::named, "float-view-of-a",
        "The float member of A is read in place of the integer one.",
        [](Fault& fault) { fault.a.view = View::real; });

    const auto reverse = [this](bool a, bool b, bool result, const char* detail) {
      Add(
          Rank::named, "byte-order", "The bytes of a lane are taken in the other order.",
          [&](Fault& fault) {
            fault.a.reversed = a;
            fault.b.reversed = b;
            if (result) fault.change = Change::reversed;
          },
          detail);
    };
    reverse(true, true, true, "in all members");
    reverse(false, false, true, "in the result");
    reverse(true, false, false, "in A");
    if (row_.twoInputs) {
      reverse(false, true, false, "in B");
      reverse(true, true, false, "in A and B");
    }
    if (row_.twoInputs) {
      Add(Rank::named, "integer-view-of-b",
          "The integer member of B is read in place of the float one.",
          [](Fault& fault) { fault.b.view = View::integer; });
      Add(
          Rank::named, "integer-view-of-b",
          "The integer member of B is read in place of the float one.",
          [](Fault& fault) {
            fault.b.view = View::integer;
            fault.formula = Formula::inIntegers;
          },
          "and computed with as an integer");
      Add(Rank::named, "inputs-exchanged", "A is read from B's buffer, and B from A's.",
          [](Fault& fault) { fault.a.otherInput = fault.b.otherInput = true; });
      Add(Rank::named, "a-from-b", "A is read from B's buffer.",
          [](Fault& fault) { fault.a.otherInput = true; });
      Add(Rank::named, "b-from-a", "B is read from A's buffer.",
          [](Fault& fault) { fault.b.otherInput = true; });
    }

    struct Type {
      const char* name;
      std::size_t width;
      bool isSigned;
    };
    constexpr Type types[] = {{"int", 4, true},     {"uint", 4, false}, {"short", 2, true},
                              {"ushort", 2, false}, {"char", 1, true},  {"uchar", 1, false}};
    for (const Type& type : types) {
      if (type.width == row_.width) continue;
      for (const std::size_t step : {type.width, row_.width}) {
        Add(
            Rank::named, fmt::format("element-as-{}", type.name),
            fmt::format("The element is taken for {} {}.", type.name[0] == 'i' ? "an" : "a",
                        type.name),
            [&](Fault& fault) {
              fault.a.width = static_cast<int>(type.width);
              fault.a.sign = type.isSigned ? Sign::isSigned : Sign::isUnsigned;
              fault.a.place.step = static_cast<int>(step);
            },
            fmt::format("lanes {} apart", Bytes(step)));
      }
    }
  }

  /// `map` in the place of the lanes of the answers, of A alone and of B alone.
  void AddLaneMap(Rank rank, const std::string& name, const std::string& meaning,
                  const LaneMap& map, const std::string& detail = "") {
    const auto with = [&detail](const char* where) {
      return detail.empty() ? std::string(where) : fmt::format("{}, {}", detail, where);
    };
    Add(
        rank, name, meaning, [&](Fault& fault) { fault.lanes = map; }, detail);
    if (row_.twoInputs || row_.operation == Operation::power)
      Add(
          rank, name, meaning, [&](Fault& fault) { fault.a.lanes = map; }, with("of A alone"));
    if (row_.twoInputs)
      Add(
          rank, name, meaning, [&](Fault& fault) { fault.b.lanes = map; }, with("of B alone"));
  }

  LaneMap MapOfLanes(const std::function<int(int)>& source) const {
    LaneMap map = ownLanes;
    for (int lane = 0; lane < row_.lanes; ++lane)
      map[static_cast<std::size_t>(lane)] = static_cast<std::uint8_t>(source(lane));
    return map;
  }

  void AddLanes() {
    const int lanes = row_.lanes;
    if (lanes == 1) return;
    for (int n = 0; n < lanes; ++n) {
      AddLaneMap(Rank::named, fmt::format("lane-{}-for-all", n),
                 fmt::format("Every lane has the answer of lane {}.", n),
                 MapOfLanes([n](int) { return n; }));
    }
    AddLaneMap(Rank::general, "last-lane-for-all", "Every lane has the answer of the last one.",
               MapOfLanes([lanes](int) { return lanes - 1; }));
    AddLaneMap(Rank::named, "lanes-reversed", "The lanes stand in the opposite order.",
               MapOfLanes([lanes](int lane) { return lanes - 1 - lane; }));

    constexpr char shifted[] = "Each lane has the answer of one a few lanes on.";
    for (int on = 1; on < lanes; ++on) {
      const int least = 2 * on <= lanes ? on : on - lanes;
      AddLaneMap(Rank::named, "lanes-shifted", shifted,
                 MapOfLanes([on, lanes](int lane) { return (lane + on) % lanes; }),
                 fmt::format("lane j that of j{:+}, around the end", least));
    }
    for (int on = 1 - lanes; on < lanes; ++on) {
      if (on == 0) continue;
      const std::string detail = fmt::format("lane j that of j{:+}", on);
      Add(
          Rank::named, "lanes-shifted", shifted,
          [&](Fault& fault) {
            fault.a.place.offset = on * static_cast<int>(row_.width);
            fault.b.place.offset = on * static_cast<int>(sizeof(float));
          },
          detail + ", read on beyond the lanes");
      Add(
          Rank::named, "lanes-shifted", shifted,
          [&](Fault& fault) { fault.result.offset = -on * static_cast<int>(sizeof(float)); },
          detail + ", stored on beyond the lanes");
    }

    if (lanes % 2 != 0) return;
    AddLaneMap(Rank::general, "lane-halves-exchanged", "The halves of the lanes are exchanged.",
               MapOfLanes([lanes](int lane) { return (lane + lanes / 2) % lanes; }));
    AddLaneMap(Rank::general, "lane-pairs-exchanged", "Even and odd lanes are exchanged.",
               MapOfLanes([](int lane) { return lane ^ 1; }));
    AddLaneMap(Rank::general, "low-half-for-both", "The high half has the answers of the low one.",
               MapOfLanes([lanes](int lane) { return lane % (lanes / 2); }));
    AddLaneMap(Rank::general, "high-half-for-both", "The low half has the answers of the high one.",
               MapOfLanes([lanes](int lane) { return lane % (lanes / 2) + lanes / 2; }));
  }

  ElementMap MapOfElements(const std::function<int(int)>& source) const {
    ElementMap map = ownElements;
    for (int element = 0; element < elementsOfRow; ++element) {
      const int from = source(element);
      map[static_cast<std::size_t>(element)] =
          static_cast<std::int16_t>(from >= 0 && from < data_.items ? from : -1);
    }
    return map;
  }

  void AddElements() {
    const auto addShift = [&](int on, Rank rank) {
      const std::string name = fmt::format("element-shifted-{}", on);
      const std::string words = fmt::format("Element i has the answer of element i{:+}.", on);
      Add(rank, name, words, [&](Fault& fault) {
        fault.elements = MapOfElements([on](int element) { return element + on; });
      });
      if (row_.twoInputs || row_.operation == Operation::power) {
        Add(
            rank, name, words, [&](Fault& fault) { fault.a.elementsOn = on; }, "of A alone");
      }
      if (row_.twoInputs) {
        Add(
            rank, name, words, [&](Fault& fault) { fault.b.elementsOn = on; }, "of B alone");
      }
    };
    for (int on = 1; on < elementsOfRow; ++on) {
      addShift(on, Rank::named);
      addShift(-on, Rank::named);
    }
    for (int on = elementsOfRow; on < data_.items; ++on) addShift(on, Rank::general);
    for (int one = 0; one < elementsOfRow; ++one) {
      Add(Rank::general, fmt::format("element-{}-for-all", one),
          fmt::format("Every element has the answer of element {}.", one),
          [&](Fault& fault) { fault.elements = MapOfElements([one](int) { return one; }); });
    }
    Add(Rank::general, "elements-reversed", "The elements stand in the opposite order.",
        [&](Fault& fault) {
          fault.elements = MapOfElements([](int element) { return elementsOfRow - 1 - element; });
        });
  }

  void AddUnwritten() {
    // A buffer that nobody has written into is filled with one byte, or with this and that.
    const auto isFilled = [](std::uint32_t bits) { return bits == (bits & 0xFFU) * 0x01010101U; };
    constexpr std::size_t fewAnswers = 2;
    if (wrongAnswers_.size() <= fewAnswers && !std::ranges::all_of(wrongAnswers_, isFilled)) return;
    const auto elements = Unwritten([](const RowData::Lane& lane) { return lane.element; });
    const auto lanes = Unwritten([](const RowData::Lane& lane) { return lane.lane; });
    if (!elements.empty()) {
      Add(
          Rank::named, "elements-unwritten",
          "Some elements are not written: they keep what stood in the buffer.",
          [&](Fault& fault) { fault.unwrittenElements = MaskOf(elements); },
          elements.size() == elementsOfRow ? "all of them" : "these: " + List(elements));
    }
    if (!lanes.empty() && std::ssize(lanes) < row_.lanes) {
      Add(
          Rank::named, "lanes-unwritten",
          "Some lanes are not written: they keep what stood in the buffer.",
          [&](Fault& fault) { fault.unwrittenLanes = MaskOf(lanes); }, "these: " + List(lanes));
    }
  }

  // The same bits in all wrong lanes, or zeros of either sign, written or found there. Of one lane
  // that is nothing to say.
  void AddConstant() {
    constexpr std::size_t fewLanes = 2;
    const bool isZero = std::ranges::all_of(
        wrongAnswers_, [](std::uint32_t bits) { return (bits & 0x7FFFFFFFU) == 0; });
    if (!isZero && (wrongAnswers_.size() != 1 || data_.wrongLanes <= fewLanes)) return;
    const std::uint32_t bits = isZero ? 0 : *wrongAnswers_.begin();
    std::set<int> elements;
    std::set<int> lanes;
    for (std::size_t n = 0; n < data_.wrongLanes; ++n) {
      elements.insert(data_.lanes[n].element);
      lanes.insert(data_.lanes[n].lane);
    }
    const auto add = [&](std::uint32_t maskOfElements, std::uint32_t maskOfLanes,
                         const std::string& detail) {
      Add(
          Rank::named, fmt::format("answers-0x{:08X}", bits),
          "The same bits are the answer whatever the inputs are.",
          [&](Fault& fault) {
            fault.change = Change::bits;
            fault.amount = bits;
            fault.changedElements = maskOfElements;
            fault.changedLanes = maskOfLanes;
          },
          detail);
    };
    add(0, 0, "");
    if (elements.size() < elementsOfRow)
      add(MaskOf(elements), 0, "in these elements: " + List(elements));
    if (std::ssize(lanes) < row_.lanes) add(0, MaskOf(lanes), "in these lanes: " + List(lanes));
  }

  /// The groups of lanes that may be unwritten: in each repetition of which it is known what stood
  /// in the buffer, all of them keep it. If it is known of none, those with a wrong lane.
  std::set<int> Unwritten(const std::function<int(const RowData::Lane&)>& groupOf) const {
    std::set<int> groups;
    std::set<int> others;
    bool anyBefore = false;
    for (std::size_t n = 0; n < data_.lanes.size(); ++n) {
      const RowData::Lane& lane = data_.lanes[n];
      const RowData::Seen& seen = data_.repetitions[lane.repetition];
      if (n < data_.wrongLanes) groups.insert(groupOf(lane));
      if (!seen.before) continue;
      anyBefore = true;
      const auto before =
          std::span(*seen.before).subspan(row_.stride * static_cast<std::size_t>(lane.element));
      const auto bits = std::bit_cast<std::uint32_t>(FloatLane(before, lane.lane));
      if (bits != data_.BitsAt(lane)) others.insert(groupOf(lane));
    }
    if (anyBefore) std::erase_if(groups, [&others](int group) { return others.contains(group); });
    return groups;
  }

  static std::uint32_t MaskOf(const std::set<int>& numbers) {
    std::uint32_t mask = 0;
    for (const int number : numbers) mask |= 1U << number;
    return mask;
  }

  // A member where another structure would have it.
  void AddPlaces() {
    const auto element = static_cast<int>(row_.width);
    const bool isVector = row_.shape != Shape::arrays && row_.shape != Shape::scalar;
    const int lanes = row_.lanes;
    const int slots = lanes == 3 ? 4 : lanes;
    const auto stride = static_cast<int>(row_.stride);
    const int real = sizeof(float);

    // Behind the element member, or behind the float member; aligned, packed, or where a vector of
    // three has three places only.
    const auto aligned = [&](int size, int width) {
      const int alignment = isVector ? slots * width : width;
      return (size + alignment - 1) / alignment * alignment;
    };
    const std::set<int> behindElement = {aligned(slots * element, real), slots * element,
                                         lanes * element};
    const std::set<int> behindFloat = {aligned(slots * real, element), slots * real, lanes * real};
    const auto grown = [&](int size) {
      const int alignment = std::max(32, isVector ? slots * real : real);
      return (size + alignment - 1) / alignment * alignment;
    };

    const auto add = [&](const char* prefix, const char* member, int at, int size,
                         Place Fault::*result, Reading Fault::*operand, bool isStruct) {
      const auto set = [&](int itsStride) {
        return [=](Fault& fault) {
          Place& place = operand != nullptr ? (fault.*operand).place : fault.*result;
          place.offset = at;
          place.stride = itsStride;
        };
      };
      const Rank rank = isStruct ? Rank::named : Rank::general;
      const std::string name = fmt::format("{}-at-{}", prefix, at);
      const std::string meaning = fmt::format("The {} lies at byte {} in place of 0.", member, at);
      Add(rank, name, meaning, set(0));
      if (isStruct && grown(at + size) > stride) {
        Add(rank, name, meaning, set(grown(at + size)),
            fmt::format("elements {} apart", Bytes(grown(at + size))));
      }
    };
    for (const bool isStruct : {true, false}) {
      for (int at = 1; at < stride + (isStruct ? 1 : 0); ++at) {
        if (row_.twoInputs && behindElement.contains(at) == isStruct)
          add("b", "float member of B", at, slots * real, nullptr, &Fault::b, isStruct);
        if (behindElement.contains(at) == isStruct)
          add("result", "float member of the result", at, slots * real, &Fault::result, nullptr,
              isStruct);
        if (behindFloat.contains(at) == isStruct)
          add("a", "integer member of A", at, slots * element, nullptr, &Fault::a, isStruct);
      }
    }
    for (const int at : behindElement) {
      const int size = grown(at + slots * real);
      Add(Rank::general, "union-as-struct",
          "In every union the members lie one behind the other, as in a struct.",
          [&](Fault& fault) {
            const int itsStride = size > stride ? size : 0;
            fault.a.place.stride = itsStride;
            fault.b.place = fault.result = {.offset = at, .stride = itsStride, .step = 0};
          });
    }
  }

  // Elements closer together or farther apart.
  void AddStrides() {
    const auto own = static_cast<int>(row_.stride);
    const int slots = row_.lanes == 3 ? 4 : row_.lanes;
    const auto element = static_cast<int>(row_.width);
    std::set<int> likely = {4, 8, 12, 16, 32, 64, 128};
    for (const int lanes : {slots, row_.lanes}) {
      likely.insert(lanes * element);
      likely.insert(lanes * static_cast<int>(sizeof(float)));
    }
    likely.erase(own);
    std::set<int> possible;
    for (int stride = 1; stride <= 256; stride += stride < 16 ? 1 : 4) {
      if (stride != own && !likely.contains(stride)) possible.insert(stride);
    }
    const auto add = [&](Rank rank, int stride) {
      const auto one = [&](bool a, bool b, bool result, const char* where) {
        Add(rank, fmt::format("stride-{}{}{}", stride, *where != '\0' ? "-of-" : "", where),
            fmt::format("The elements of {} lie {} apart.", *where == '\0' ? "all buffers" : where,
                        Bytes(stride)),
            [&](Fault& fault) {
              if (a) fault.a.place.stride = stride;
              if (b) fault.b.place.stride = stride;
              if (result) fault.result.stride = stride;
            });
      };
      one(true, false, false, "a");
      one(false, false, true, "result");
      one(true, true, true, "");
      if (!row_.twoInputs) return;
      one(false, true, false, "b");
      one(true, true, false, "inputs");
    };
    for (const int stride : likely) add(Rank::named, stride);
    for (const int stride : possible) add(Rank::general, stride);

    // Lanes closer together or farther apart.
    for (const int step : {1, 2, 4, 8, 16}) {
      if (step != element) {
        Add(Rank::general, fmt::format("lane-stride-{}-of-a", step),
            fmt::format("The lanes of A lie {} apart.", Bytes(step)),
            [&](Fault& fault) { fault.a.place.step = step; });
      }
      if (step == sizeof(float)) continue;
      Add(Rank::general, fmt::format("lane-stride-{}-of-result", step),
          fmt::format("The lanes of the result lie {} apart.", Bytes(step)),
          [&](Fault& fault) { fault.result.step = step; });
      if (!row_.twoInputs) continue;
      Add(Rank::general, fmt::format("lane-stride-{}-of-b", step),
          fmt::format("The lanes of B lie {} apart.", Bytes(step)),
          [&](Fault& fault) { fault.b.place.step = step; });
    }
  }

  // What belongs to another repetition.
  void AddTimes() {
    if (data_.repetitions.size() < 2) return;
    Add(Rank::general, "answers-of-repetition-before",
        "The answers are those of the repetition before.",
        [](Fault& fault) { fault.repetitionsBefore = 1; });
    Add(Rank::general, "a-of-repetition-before", "A is read as it was in the repetition before.",
        [](Fault& fault) { fault.a.repetitionsBefore = 1; });
    if (!row_.twoInputs) return;
    Add(Rank::general, "b-of-repetition-before", "B is read as it was in the repetition before.",
        [](Fault& fault) { fault.b.repetitionsBefore = 1; });
  }

  // Any lane in the place of any, any element in the place of any: from the answers themselves.
  void AddMappings() {
    if (row_.lanes > 1) {
      if (const auto map = LaneMapOfAnswers(); map && *map != ownLanes) {
        std::vector<int> sources(map->begin(), map->begin() + row_.lanes);
        Add(
            Rank::fitted, "lanes-permuted", "Lanes have the answers of other lanes.",
            [&](Fault& fault) { fault.lanes = *map; },
            fmt::format("in this order: {}", fmt::join(sources, ", ")));
      }
    }
    if (const auto map = ElementMapOfAnswers(); map && *map != ownElements) {
      Add(
          Rank::fitted, "elements-permuted", "Elements have the answers of other elements.",
          [&](Fault& fault) { fault.elements = *map; },
          fmt::format("in this order: {}", fmt::join(*map, ", ")));
    }
  }

  /// The right answers of a lane in the terms of this row's bytes.
  RightAnswers RightAt(std::size_t repetition, int element, int lane) const {
    const RowData::Seen& seen = data_.repetitions[repetition];
    const auto at = row_.stride * static_cast<std::size_t>(element);
    const float a =
        Converted(IntegerLane(row_, std::span(seen.a).subspan(at), lane), data_.mode.conversion);
    const float b = row_.twoInputs ? FloatLane(std::span(seen.b).subspan(at), lane) : 0.0F;
    return RightAnswersOf(row_.operation, a, b, ExponentOf(row_, element, lane), data_.mode);
  }

  std::optional<LaneMap> LaneMapOfAnswers() const {
    LaneMap map = ownLanes;
    for (int lane = 0; lane < row_.lanes; ++lane) {
      const auto stands = [&](int source) {
        return std::ranges::all_of(data_.lanes, [&](const RowData::Lane& one) {
          return one.lane != lane || RightAt(one.repetition, one.element, source)
                                         .Allow(std::bit_cast<float>(data_.BitsAt(one)));
        });
      };
      int source = lane;
      for (int next = 0; !stands(source); ++next) {
        if (next == row_.lanes) return std::nullopt;
        source = next;
      }
      map[static_cast<std::size_t>(lane)] = static_cast<std::uint8_t>(source);
    }
    return map;
  }

  std::optional<ElementMap> ElementMapOfAnswers() const {
    ElementMap map = ownElements;
    for (int element = 0; element < elementsOfRow; ++element) {
      const auto stands = [&](int source) {
        return std::ranges::all_of(data_.lanes, [&](const RowData::Lane& one) {
          return one.element != element || RightAt(one.repetition, source, one.lane)
                                               .Allow(std::bit_cast<float>(data_.BitsAt(one)));
        });
      };
      int source = element;
      for (int next = 0; !stands(source); ++next) {
        if (next == std::min(data_.items, 4 * elementsOfRow)) return std::nullopt;
        source = next;
      }
      map[static_cast<std::size_t>(element)] = static_cast<std::int16_t>(source);
    }
    return map;
  }

  // No more than how far off the answers are.
  void AddVague() {
    std::int64_t most = 0;
    for (std::size_t n = 0; n < data_.wrongLanes; ++n) {
      const auto ulps = UlpsOfWrongLane(n);
      if (!ulps || *ulps > mostUlps) return;
      most = std::max(most, *ulps);
    }
    if (most == 0) return;
    struct Direction {
      Change change;
      const char* words;
    };
    for (const auto& [change, words] : {Direction{Change::ulpsAtMostOutward, ", away from zero"},
                                        Direction{Change::ulpsAtMostInward, ", toward zero"},
                                        Direction{Change::ulpsAround, ""}}) {
      Add(
          Rank::vague, fmt::format("off-by-ulps-{}", most),
          fmt::format("The answers are off by {} in the last place.", Units(most)),
          [&, change = change](Fault& fault) {
            fault.change = change;
            fault.amount = most;
          },
          fmt::format("at most{}", words));
    }
  }

  static constexpr std::int64_t mostUlps = 1024;

  /// How far a wrong answer lies from the nearest right one.
  std::optional<std::int64_t> UlpsOfWrongLane(std::size_t number) const {
    if (number >= data_.wrongLanes) return std::nullopt;
    const RowData::Lane& lane = data_.lanes[number];
    const auto answer = std::bit_cast<float>(data_.BitsAt(lane));
    const float right = RightAt(lane.repetition, lane.element, lane.lane).NearestTo(answer);
    if (std::isnan(answer) || std::isnan(right)) return std::nullopt;
    return static_cast<std::int64_t>(UlpsBetween(answer, right));
  }

  static std::string Units(std::int64_t ulps) {
    return fmt::format("{} unit{}", ulps, ulps == 1 ? "" : "s");
  }

  static std::string Bits(int count) { return count == 1 ? "bit" : fmt::format("{} bits", count); }

  template <class Number>
  static std::string Bytes(Number count) {
    return fmt::format("{} byte{}", count, count == 1 ? "" : "s");
  }

  static std::string List(const std::set<int>& numbers) {
    return fmt::format("{}", fmt::join(numbers, ", "));
  }

  const RowData& data_;
  const Row& row_;
  std::set<std::uint32_t> wrongAnswers_;
  std::vector<Hypothesis> hypotheses_;
};

}  // namespace

std::vector<Hypothesis> HypothesesOn(const RowData& data) { return Table(data).Make(); }

}  // namespace diagnosis
