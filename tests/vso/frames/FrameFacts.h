// What an independent decoder states of a frame.
#pragma once

#include <string>
#include <vector>

#include "tests/vso/frames/FramesFile.h"
#include "vso/zcl/AttributeRecordData.h"

namespace qx::test {

// Kinds of frames, as the file names them; HEADER_ONLY is that of a frame of which only the header is stated.
constexpr char HEADER_ONLY[] = "header only";
constexpr char DEFAULT_RESPONSE[] = "defaultResponse";
constexpr char CLUSTER_COMMAND[] = "clusterCommand";
constexpr char READ_ATTRIBUTES[] = "readAttributes";
constexpr char READ_RESPONSE[] = "readAttributesResponse";
constexpr char WRITE_ATTRIBUTES[] = "writeAttributes";
constexpr char WRITE_RESPONSE[] = "writeAttributesResponse";
constexpr char REPORT[] = "reportAttributes";

/// One of these.
std::string kindOf(const RecordedFrame& frame);

/// True for the frames whose payload the library knows: the general commands of every cluster, and all commands of the
/// clusters that it has a class for.
bool isCompared(const RecordedFrame& frame);

/// The frame control byte of a header; composed of its bits where it is not stated itself.
unsigned char frameControlOf(const nlohmann::json& header);

// Of an attribute that has a type and a value.

/// The value as it stands in the frame. Where the facts have no bytes, those of the number that they have.
std::vector<unsigned char> rawOf(const nlohmann::json& attribute);
/// The value as the list readers give it by default: text without its length byte, octets as hexadecimal text.
std::vector<unsigned char> readableOf(const nlohmann::json& attribute);
/// The value as it is to be printed.
std::string printedOf(const nlohmann::json& attribute);

/// Digits of `count` bytes.
std::string digitsOf(const unsigned char* data, std::size_t count);
/// The data of a record that holds these bytes.
AttributeRecordData::Data dataOf(const std::vector<unsigned char>& bytes);

}  // namespace qx::test
