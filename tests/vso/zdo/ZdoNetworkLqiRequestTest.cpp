#include "vso/zdo/ZdoNetworkLqiRequest.h"

#include <gtest/gtest.h>

#include "TableRequest.h"

namespace qx {
namespace {

TEST(ZdoNetworkLqiRequest, CarriesTheStartIndex) { test::expectPageRequest<ZdoNetworkLqiRequest>(0x0031); }

TEST(ZdoNetworkLqiRequest, CarriesAnyStartIndex) { test::expectAnyStartIndex<ZdoNetworkLqiRequest>(); }

}  // namespace
}  // namespace qx
