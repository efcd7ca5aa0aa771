// Application profiles that ZCL frames travel under.
#pragma once

namespace qx::ZclProfile {

/// The public Home Automation profile.
constexpr short HOME_AUTOMATION = 0x0104;
/// The maker's own: parameters that the server hands to devices. As `getProfileId` gives it, negative.
constexpr short QX_PRIVATE = static_cast<short>(0xC25D);
/// The maker's own: what devices tell the server of themselves. Negative too.
constexpr short QX_ANNOUNCE = static_cast<short>(0xC25F);

}  // namespace qx::ZclProfile
