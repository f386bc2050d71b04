#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "exploration/features/basics.h"

// Ways to a place that several features share.

namespace exploration {

/// The part is a structure or union, numbers[0] which of its members.
Node MemberOf(const Program& program, Node record, int member);
/// What a pointer points to.
Node Pointee(const Program& program, Node pointer);
/// The address of a place.
Node AddressOf(Program& program, Node place);
/// The work-item's own element of a buffer, or of an array in local memory.
Node OwnElement(const Program& program, int variable);
/// With these arguments, of which the first may be records or addresses; numbers[0] is the
/// function.
extern const Construct callConstruct;
/// Of a whole structure or union.
Node WholeAssignment(const Program& program, Node to, Node from);

/// Where the object lies that the place is in.
Space SpaceOf(const Node& place, const Program& program);

// For constructs with an array and an index as their parts.
void CheckElement(const Node& node, const Program& program);
std::string PrintElement(const Node& node, const Printer& printer);
Place LocateElement(const Node& node, Machine& machine);
Place ElementAt(const Machine& machine, Place array, std::int64_t index);

/// Throws Invalid unless a pointer to the place's type may point there.
void RequireAligned(const Machine& machine, const Place& place);

/// Gives the parameters, nodes that name them, their values in this work-item.
void PassArguments(Machine& machine, const std::vector<Node>& parameters,
                   const std::vector<Node>& arguments);

}  // namespace exploration
