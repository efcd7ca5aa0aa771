// How a neighbour stands to the device that reported it.
#pragma once

namespace qx {

/// The numbers of a Zigbee neighbour-table record. Any other number may arrive.
enum HopRelationship : int {
  NEIGHBOR_IS_PARENT = 0,
  NEIGHBOR_IS_CHILD = 1,
  NEIGHBOR_IS_SIBLING = 2,
  NONE_OF_THE_ABOVE = 3,
  PREVIOUS_CHILD = 4,
};

}  // namespace qx
