#include "exploration/model/memory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace exploration {
namespace {

/// union U { struct { char a; int b; } s; long l; int3 v; float f; uchar c[16]; } and what is done
/// to one, with its bytes written out: "41" known, "41?" customary, "--" unspecified.
class Memory : public testing::Test {
 protected:
  Memory() {
    Type record;
    record.kind = Type::Kind::structure;
    record.name = "S1";
    record.members = {{"a", TypeOf(Scalar::charType), 0}, {"b", TypeOf(Scalar::intType), 0}};
    structure = types.Add(record);
    record.kind = Type::Kind::unionType;
    record.name = "U1";
    record.members = {{"s", structure, 0},
                      {"l", TypeOf(Scalar::longType), 0},
                      {"v", VectorOf(Scalar::intType, 3), 0},
                      {"f", TypeOf(Scalar::floatType), 0},
                      {"c", types.ArrayOf(TypeOf(Scalar::ucharType), 16), 0}};
    unionType = types.Add(record);
    object = MadeObject(types, unionType, Space::privateSpace);
  }

  Place Whole() const {
    Place place;
    place.object = 0;
    place.type = unionType;
    return place;
  }
  Place Member(int member) const { return Member(Whole(), member); }
  Place Member(Place place, int member) const {
    place.path.push_back({place.type, place.offset, member});
    place.offset += OffsetOf(types, place.type, member);
    place.type = types[place.type].members[static_cast<std::size_t>(member)].type;
    return place;
  }
  Place Byte(std::size_t offset) const {
    Place place = Whole();
    place.offset = offset;
    place.type = TypeOf(Scalar::ucharType);
    return place;
  }
  static Place ThroughPointer(Place place) {
    place.throughPointer = true;
    return place;
  }

  /// Stores bytes that are all known: first, first + 1, first + 2 and so on.
  void Fill(const Place& place, std::uint8_t first) {
    Value value;
    value.type = place.type;
    if (!place.components.empty())
      value.type = VectorOf(types[place.type].scalar, static_cast<int>(place.components.size()));
    for (std::size_t i = 0; i < SizeOf(types, value.type); ++i)
      value.bytes.push_back({static_cast<std::uint8_t>(first + i), Knowledge::known});
    Store(types, object, place, value);
  }

  static std::string Text(const std::vector<exploration::Byte>& bytes) {
    std::string text;
    for (const exploration::Byte& byte : bytes) {
      constexpr char digits[] = "0123456789abcdef";
      if (byte.knowledge == Knowledge::unspecified) {
        text += "--";
      } else {
        text += digits[byte.value >> 4];
        text += digits[byte.value & 15];
        if (byte.knowledge == Knowledge::customary) text += '?';
      }
    }
    return text;
  }
  std::string Bytes() const {
    std::vector<exploration::Byte> bytes;
    for (const Cell& cell : object.cells) bytes.push_back(cell.byte);
    return Text(bytes);
  }

  Types types;
  TypeId structure = noType;
  TypeId unionType = noType;
  Object object;
};

TEST_F(Memory, IsUnspecifiedAtFirst) {
  EXPECT_EQ(Bytes(), "--------------------------------");
  EXPECT_THROW(Loaded(types, object, Member(3)), Invalid);
  EXPECT_THROW(Loaded(types, object, Whole()), Invalid);
}

TEST_F(Memory, AStoreToAMemberLeavesTheOthersBytesCustomary) {
  Fill(Member(1), 0x10);
  EXPECT_EQ(Bytes(), "1011121314151617----------------");
  Fill(Member(3), 0x41);
  EXPECT_EQ(Bytes(), "4142434414?15?16?17?----------------");
  EXPECT_EQ(Text(Loaded(types, object, Member(3)).bytes), "41424344");
  EXPECT_EQ(Loaded(types, object, Member(1)).KnowledgeOf(types), Knowledge::customary);
}

TEST_F(Memory, AStoreToAStructsMemberLeavesItsPaddingCustomary) {
  Fill(Member(1), 0x10);
  Fill(Member(Member(0), 0), 0x51);
  EXPECT_EQ(Bytes(), "5111?12?13?14151617----------------");
}

TEST_F(Memory, AStoreOfAWholeStructLeavesItsPaddingUnspecified) {
  Fill(Member(1), 0x10);
  Fill(Member(0), 0x20);
  EXPECT_EQ(Bytes(), "20------24252627----------------");
}

TEST_F(Memory, TheFourthComponentOfThreeIsUnspecified) {
  Fill(Byte(13), 0x77);
  Fill(Member(2), 0x10);
  EXPECT_EQ(Bytes(), "101112131415161718191a1b--------");
  Place part = Member(2);
  part.components = {2, 0};
  Fill(part, 0x60);
  EXPECT_EQ(Bytes(), "646566671415161760616263--------");
  EXPECT_EQ(Text(Loaded(types, object, part).bytes), "6061626364656667");
}

TEST_F(Memory, AByteChangesNoOther) {
  Fill(Member(1), 0x10);
  Fill(Byte(3), 0x77);
  EXPECT_EQ(Bytes(), "1011127714151617----------------");
}

TEST_F(Memory, ACopyOfAUnionCarriesWhatIsKnownOfAnyMember) {
  Fill(Member(1), 0x10);
  Fill(Byte(12), 0x66);
  EXPECT_EQ(Text(Loaded(types, object, Whole()).bytes), "1011121314151617--------66------");
  EXPECT_EQ(Text(Loaded(types, object, Member(0)).bytes), "10------14151617");
}

TEST_F(Memory, ACopyMayChangeWhatIsNoOrdinaryFloat) {
  Fill(Member(1), 0x10);
  Fill(Byte(3), 0x7f);
  Fill(Byte(2), 0xc0);
  EXPECT_EQ(Text(Loaded(types, object, Whole()).bytes), "10?11?c0?7f?14151617----------------");
  EXPECT_THROW(Loaded(types, object, Member(3)), Invalid);
}

TEST_F(Memory, WhatIsStoredThroughAPointerIsOfThatTypeAlone) {
  Fill(Member(3), 0x41);
  EXPECT_NO_THROW(Loaded(types, object, ThroughPointer(Member(3))));
  EXPECT_THROW(Loaded(types, object, ThroughPointer(Member(1))), Invalid);
  EXPECT_THROW(Loaded(types, object, Member(Member(0), 1)), Invalid);
  EXPECT_THROW(Fill(Member(1), 0x10), Invalid);
  EXPECT_NO_THROW(Loaded(types, object, Byte(2)));
  // As the union it may be any member's again.
  Fill(Whole(), 0x10);
  EXPECT_NO_THROW(Loaded(types, object, Member(1)));
}

TEST_F(Memory, SidesOfAnAssignmentOverlapUnlessTheyAreTheSame) {
  EXPECT_TRUE(Overlap(types, Member(1), Member(3)));
  EXPECT_FALSE(Overlap(types, Member(1), Member(1)));
  EXPECT_FALSE(Overlap(types, Byte(4), Member(3)));
  Place xy = Member(2);
  xy.components = {0, 1};
  Place yx = Member(2);
  yx.components = {1, 0};
  Place z = Member(2);
  z.components = {2};
  EXPECT_TRUE(Overlap(types, xy, yx));
  EXPECT_FALSE(Overlap(types, xy, z));
}

TEST(Ordinary, NeitherDenormalNorInfiniteNorNaN) {
  const struct {
    Scalar scalar;
    std::vector<std::uint8_t> bytes;
    bool isOrdinary;
  } rows[] = {
      {Scalar::floatType, {0, 0, 0x80, 0x3f}, true},
      {Scalar::floatType, {0, 0, 0, 0x80}, true},
      {Scalar::floatType, {1, 0, 0, 0}, false},
      {Scalar::floatType, {0, 0, 0x80, 0x7f}, false},
      {Scalar::floatType, {0, 0, 0xc0, 0xff}, false},
      {Scalar::halfType, {0, 0x3c}, true},
      {Scalar::halfType, {0, 0x80}, true},
      {Scalar::halfType, {1, 0x80}, false},
      {Scalar::halfType, {0, 0x7c}, false},
      {Scalar::doubleType, {0, 0, 0, 0, 0, 0, 0xf0, 0x3f}, true},
      {Scalar::doubleType, {1, 0, 0, 0, 0, 0, 0, 0}, false},
      {Scalar::intType, {1, 0, 0, 0}, true},
  };
  for (const auto& row : rows)
    EXPECT_EQ(IsOrdinary(row.scalar, row.bytes.data()), row.isOrdinary)
        << TraitsOf(row.scalar).name << " " << int{row.bytes.back()};
}

}  // namespace
}  // namespace exploration
