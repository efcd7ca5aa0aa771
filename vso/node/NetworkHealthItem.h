// One metric of a node's health.
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <iosfwd>
#include <string>
#include <vector>

namespace qx {

class XmlWriter;
namespace pb {
class NetworkHealthItemPBuf;
}
namespace response {
class IResponse;
}

/// A metric with its description, all as text: a report is shown, compared and passed on, never calculated with.
class NetworkHealthItem {
 public:
  /// How to read the texts of value and limits. Any other number may arrive.
  enum DataType : int {
    dt_unknown = 0,
    string = 1,     ///< Free text: colours, lists of thresholds.
    number = 2,     ///< Decimal.
    timestamp = 3,  ///< Date and time.
  };

  /// Of the record's format.
  static constexpr unsigned int VERSION = 1;

  NetworkHealthItem() = default;
  NetworkHealthItem(std::string name, DataType type, std::string min, std::string max, std::string value,
                    std::string units);
  NetworkHealthItem(const NetworkHealthItem&) = default;
  NetworkHealthItem(NetworkHealthItem&&) = default;
  NetworkHealthItem& operator=(const NetworkHealthItem&) = default;
  NetworkHealthItem& operator=(NetworkHealthItem&&) = default;
  virtual ~NetworkHealthItem() = default;

  /// Compare all fields.
  bool operator==(const NetworkHealthItem& other) const;
  bool operator!=(const NetworkHealthItem& other) const { return !(*this == other); }

  // Append a new item.
  static void add(std::vector<NetworkHealthItem>& items, const std::string& name, DataType type, const std::string& min,
                  const std::string& max, const std::string& value, const std::string& units);
  /// The number in decimal.
  static void add(std::vector<NetworkHealthItem>& items, const std::string& name, DataType type, const std::string& min,
                  const std::string& max, int value, const std::string& units);
  /// The number in six significant digits: "0.5", "1.66667", "1e-05".
  static void add(std::vector<NetworkHealthItem>& items, const std::string& name, DataType type, const std::string& min,
                  const std::string& max, double value, const std::string& units);

  unsigned int version() const { return version_; }
  /// Key of the metric, such as "reboot.sliding_quality".
  const std::string& name() const { return name_; }
  DataType type() const { return type_; }
  /// Least and greatest value; may be empty. Labels, which bound nothing.
  const std::string& min() const { return min_; }
  const std::string& max() const { return max_; }
  const std::string& value() const { return value_; }
  /// May be empty.
  const std::string& units() const { return units_; }

  /// Writes "{1, name, 2, min, max, value, units}" and returns the stream.
  std::ostream& print(std::ostream& out) const;
  /// A copy. Caller owns the result.
  NetworkHealthItem* clone() const;

  /// Caller owns the result. Bytes that are not UTF-8 become U+FFFD.
  pb::NetworkHealthItemPBuf* toProtobuf() const;
  /// Takes all fields. True on failure, of which there is none.
  bool fromProtobuf(const pb::NetworkHealthItemPBuf& message);
  void toXml(XmlWriter& writer, const std::string& name) const;
  /// Writes name and value.
  void toIResponse(boost::shared_ptr<response::IResponse> response) const;
  /// Writes everything but the value.
  void toIResponseData(boost::shared_ptr<response::IResponse> response) const;

 private:
  unsigned int version_ = VERSION;
  std::string name_;
  DataType type_ = dt_unknown;
  std::string min_;
  std::string max_;
  std::string value_;
  std::string units_;
};

}  // namespace qx
