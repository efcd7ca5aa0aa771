// The generated descriptors beside the schema that other programs were built with, both ways.
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

#include "SchemaTable.h"
#include "vso/proto/AccessPointPBuf.pb.h"
#include "vso/proto/ApsOptionPEnum.pb.h"
#include "vso/proto/EuidPBuf.pb.h"
#include "vso/proto/EventHistogramPBuf.pb.h"
#include "vso/proto/HopPBuf.pb.h"
#include "vso/proto/MeshParametersPBuf.pb.h"
#include "vso/proto/MeshSecurityDataPBuf.pb.h"
#include "vso/proto/MeshSecurityKeyDataPBuf.pb.h"
#include "vso/proto/NetworkHealthPBuf.pb.h"
#include "vso/proto/PanIdPBuf.pb.h"
#include "vso/proto/QxdiagnosticsNodeCountersPBuf.pb.h"
#include "vso/proto/RoutePBuf.pb.h"
#include "vso/proto/SourceRoutePBuf.pb.h"
#include "vso/proto/TriboolPEnum.pb.h"
#include "vso/proto/U255BuffPBuf.pb.h"
#include "vso/proto/VessoriMessagePriorityPEnum.pb.h"
#include "vso/proto/ZapPBuf.pb.h"
#include "vso/proto/ZapProxyPBuf.pb.h"
#include "vso/proto/ZigbeeNodeDeviceTypePEnum.pb.h"
#include "vso/proto/ZigbeeNodePBuf.pb.h"
#include "vso/proto/ZigbeeOtaUpgradeOperationPBuf.pb.h"

namespace qx::test {

namespace {

using google::protobuf::Descriptor;
using google::protobuf::EnumDescriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::FileDescriptor;

/// Name of the package, with the dot behind it.
const std::string PACKAGE = "qx.pb.";

std::string withoutPackage(const std::string& fullName) {
  return fullName.compare(0, PACKAGE.size(), PACKAGE) == 0 ? fullName.substr(PACKAGE.size()) : "outside: " + fullName;
}

std::string typeOf(const FieldDescriptor& field) {
  switch (field.type()) {
    case FieldDescriptor::TYPE_MESSAGE:
      return field.message_type()->full_name();
    case FieldDescriptor::TYPE_ENUM:
      return field.enum_type()->full_name();
    default:
      return field.type_name();
  }
}

std::string row(const std::string& file, const std::string& holder, int number, const std::string& name) {
  return file + " " + holder + " " + std::to_string(number) + " " + name;
}

/// Every field and value of the generated code, as text, file by file.
class GeneratedSchema {
 public:
  GeneratedSchema() {
    for (const FileDescriptor* file : {pb::AccessPointPBuf::descriptor()->file(),
                                       pb::ApsOptionPEnum_descriptor()->file(),
                                       pb::EuidPBuf::descriptor()->file(),
                                       pb::EventHistogramPBuf::descriptor()->file(),
                                       pb::HopPBuf::descriptor()->file(),
                                       pb::MeshParametersPBuf::descriptor()->file(),
                                       pb::MeshSecurityDataPBuf::descriptor()->file(),
                                       pb::MeshSecurityKeyDataPBuf::descriptor()->file(),
                                       pb::NetworkHealthPBuf::descriptor()->file(),
                                       pb::PanIdPBuf::descriptor()->file(),
                                       pb::QxdiagnosticsNodeCountersPBuf::descriptor()->file(),
                                       pb::RoutePBuf::descriptor()->file(),
                                       pb::SourceRoutePBuf::descriptor()->file(),
                                       pb::TriboolPEnum_descriptor()->file(),
                                       pb::U255BuffPBuf::descriptor()->file(),
                                       pb::VessoriMessagePriorityPEnum_descriptor()->file(),
                                       pb::ZapPBuf::descriptor()->file(),
                                       pb::ZapProxyPBuf::descriptor()->file(),
                                       pb::ZigbeeNodeDeviceTypePEnum_descriptor()->file(),
                                       pb::ZigbeeNodePBuf::descriptor()->file(),
                                       pb::ZigbeeOtaUpgradeOperationPBuf::descriptor()->file()}) {
      take(*file);
    }
  }

  std::set<std::string> files;
  std::set<std::string> fields;
  std::set<std::string> values;
  std::set<std::string> imports;

 private:
  /// Without extension, and files of this schema without their folder.
  static std::string shortName(const FileDescriptor& file) {
    const std::string folder = "vso/proto/";
    const std::string extension = ".proto";
    const std::string name = file.name().substr(0, file.name().size() - extension.size());
    return name.compare(0, folder.size(), folder) == 0 ? name.substr(folder.size()) : name;
  }

  void take(const FileDescriptor& file) {
    EXPECT_EQ(file.syntax(), FileDescriptor::SYNTAX_PROTO3) << file.name();
    EXPECT_EQ(file.package(), "qx.pb") << file.name();
    const std::string name = shortName(file);
    files.insert(name);
    for (int i = 0; i < file.dependency_count(); ++i) imports.insert(name + " " + shortName(*file.dependency(i)));
    for (int i = 0; i < file.message_type_count(); ++i) take(name, *file.message_type(i));
    for (int i = 0; i < file.enum_type_count(); ++i) take(name, *file.enum_type(i));
  }

  void take(const std::string& file, const Descriptor& message) {
    const std::string name = withoutPackage(message.full_name());
    for (int i = 0; i < message.field_count(); ++i) {
      const FieldDescriptor& field = *message.field(i);
      EXPECT_FALSE(field.has_presence() && field.type() != FieldDescriptor::TYPE_MESSAGE) << field.full_name();
      EXPECT_EQ(field.real_containing_oneof(), nullptr) << field.full_name();
      fields.insert(row(file, name, field.number(), field.name()) + " " + typeOf(field) + " " +
                    (field.is_repeated() ? "repeated" : "singular"));
    }
    for (int i = 0; i < message.nested_type_count(); ++i) take(file, *message.nested_type(i));
    EXPECT_EQ(message.enum_type_count(), 0) << "enumerations stand at the top level: " << name;
  }

  void take(const std::string& file, const EnumDescriptor& enumeration) {
    for (int i = 0; i < enumeration.value_count(); ++i) {
      const auto& value = *enumeration.value(i);
      values.insert(row(file, withoutPackage(enumeration.full_name()), value.number(), value.name()));
    }
  }
};

}  // namespace

TEST(Schema, HasItsFiles) {
  std::set<std::string> expected;
  for (const SchemaField& field : SCHEMA_FIELDS) expected.insert(field.file);
  for (const SchemaValue& value : SCHEMA_VALUES) expected.insert(value.file);
  EXPECT_EQ(expected.size(), 21U);
  EXPECT_EQ(GeneratedSchema().files, expected);
}

TEST(Schema, HasJustItsFields) {
  std::set<std::string> expected;
  for (const SchemaField& field : SCHEMA_FIELDS) {
    expected.insert(row(field.file, field.message, field.number, field.name) + " " + field.type + " " + field.label);
  }
  EXPECT_EQ(expected.size(), std::size(SCHEMA_FIELDS));
  EXPECT_EQ(GeneratedSchema().fields, expected);
}

TEST(Schema, HasJustItsEnumerationValues) {
  std::set<std::string> expected;
  for (const SchemaValue& value : SCHEMA_VALUES) {
    expected.insert(row(value.file, value.enumeration, value.number, value.name));
  }
  EXPECT_EQ(expected.size(), std::size(SCHEMA_VALUES));
  EXPECT_EQ(GeneratedSchema().values, expected);
}

TEST(Schema, ImportsWhatItNeeds) {
  std::set<std::string> expected;
  for (const SchemaImport& row : SCHEMA_IMPORTS) expected.insert(std::string(row.file) + " " + row.imported);
  EXPECT_EQ(expected.size(), std::size(SCHEMA_IMPORTS));
  EXPECT_EQ(GeneratedSchema().imports, expected);
}

TEST(Schema, KeepsNodeHealthAsAMap) {
  const FieldDescriptor* field = pb::NetworkHealthPBuf::descriptor()->FindFieldByName("nodeHealth");
  ASSERT_NE(field, nullptr);
  EXPECT_TRUE(field->is_map());
}

TEST(Schema, KeepsTheSignOfAnRssi) {
  pb::ZapPBuf message;
  message.set_rssi(-40);
  // Field 25, varint, and -40 sign-extended to 64 bits in groups of seven, least significant first.
  EXPECT_EQ(message.SerializeAsString(), std::string("\xC8\x01\xD8\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x01", 12));
  pb::ZapPBuf read;
  ASSERT_TRUE(read.ParseFromString(message.SerializeAsString()));
  EXPECT_EQ(read.rssi(), -40);
}

TEST(Schema, PacksSixteenBitElements) {
  pb::U255U16BuffPBuf message;
  message.add_contents(1);
  message.add_contents(0x1234);
  EXPECT_EQ(message.SerializeAsString(), std::string("\x0A\x03\x01\xB4\x24", 5));
}

TEST(Schema, ParsesAHopWithoutAPanIdAsOneWithAnEmptyId) {
  pb::HopPBuf message;
  ASSERT_TRUE(message.ParseFromString(""));
  EXPECT_EQ(message.neighborpanid().addr(), "");
}

}  // namespace qx::test
