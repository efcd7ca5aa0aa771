// Typed readers of single attributes, which the cluster classes share.
#pragma once

#include "vso/zcl/ZclReading.h"

namespace qx {

class ZclMessage;

namespace detail {

/// The value of attribute `id` in a read attributes response (its first record with success) or in a report (its first
/// record), without making a list. The command alone decides how the frame is read, the frame type does not. T is bool
/// (true if the first byte is 1), unsigned char (the first byte) or unsigned short (two bytes, little-endian), whatever
/// type the frame gives the attribute.
template <typename T>
ZclReading<T> readAttribute(const ZclMessage& frame, unsigned short id);

extern template ZclReading<bool> readAttribute(const ZclMessage&, unsigned short);
extern template ZclReading<unsigned char> readAttribute(const ZclMessage&, unsigned short);
extern template ZclReading<unsigned short> readAttribute(const ZclMessage&, unsigned short);

/// True with ANSWERED if a write attributes response holds a success for attribute `id`; otherwise false with
/// NOT_ANSWERED, be it a failure or nothing at all. The response of a single status byte, which stands for all
/// attributes, counts for attribute 0 only.
ZclReading<bool> wroteAttribute(const ZclMessage& frame, unsigned short id);

}  // namespace detail

}  // namespace qx
