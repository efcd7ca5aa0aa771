// Application profiles that ZCL frames travel under.
#pragma once

namespace qx::ZclProfile {

/// The public Home Automation profile.
constexpr short HOME_AUTOMATION = 0x0104;

}  // namespace qx::ZclProfile
