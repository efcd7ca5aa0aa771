// Attributes as the command line gives them, as records of the general commands.
#pragma once

#include <string>

#include "vso/zcl/ReadAttributeStatusRecord.h"
#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/WriteAttributeRecord.h"
#include "vso/zcl/WriteAttributeReportRecord.h"

namespace qx::app {

// Each throws BadArgument if the text does not do. Values are in wire form.

/// "0x0000".
unsigned short parseAttributeId(const std::string& text);

/// "0x0000:uint16:5". The type is one of the names that `typeNames` gives, or the code of a type. The value is:
///   numbers                         in C notation, signed for the types int8 to int32
///   boolean                         true, false, or a number
///   single-float, double-float      a decimal number
///   semi-float                      a number, the 16 bits as they stand
///   text, character-string          the characters, colons too
///   octet-string                    hexadecimal digits
///   ieee-address                    16 hexadecimal digits
AttributeRecordData parseAttributeValue(const std::string& text);

/// A value, or "0x0000:not-found", an id and the status with which it was refused.
ReadAttributeStatusRecord parseAttributeAnswer(const std::string& text);

/// "0x0000:not-found".
WriteAttributeReportRecord parseAttributeStatus(const std::string& text);

/// Bytes of the value in a frame.
unsigned int sizeOfValue(const AttributeRecordData& record);

/// All names of types, with blanks between them.
std::string typeNames();

}  // namespace qx::app
