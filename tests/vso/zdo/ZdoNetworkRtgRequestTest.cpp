#include "vso/zdo/ZdoNetworkRtgRequest.h"

#include <gtest/gtest.h>

#include "TableRequest.h"

namespace qx {
namespace {

TEST(ZdoNetworkRtgRequest, CarriesTheStartIndex) { test::expectPageRequest<ZdoNetworkRtgRequest>(0x0032); }

TEST(ZdoNetworkRtgRequest, CarriesAnyStartIndex) { test::expectAnyStartIndex<ZdoNetworkRtgRequest>(); }

}  // namespace
}  // namespace qx
