// Tables of the mesh as rows to show.
#pragma once

#include <list>

#include "apps/vso/decode/DecodedFrame.h"
#include "vso/identifiers/FrameReader.h"
#include "vso/identifiers/U255Buff.h"

namespace qx {
class AccessPoint;
class PayloadWalk;
}  // namespace qx

namespace qx::app {

/// True if `walk` stands at a table, of which `table` is then the rows that lie wholly within the frame, as the library
/// reads them.
bool readTable(const PayloadWalk& walk, const U255Buff<unsigned char>& frame, DecodedTable& table);

DecodedTable tableOf(const std::list<AccessPoint>& accessPoints);

}  // namespace qx::app
