// What an answer to a client of the controller is written to.
#pragma once

#include <string>

namespace qx::response {

/// A tree of named objects, lists and values, written front to back; the writer need not know its form on the wire.
/// Each start has its end. The last argument of the starts is reserved and always 0.
class IResponse {
 public:
  virtual ~IResponse() = default;

  // The order of the virtual operations is part of the interface.

  /// Opens an object in what is open.
  virtual void startObject(const std::string& name, int reserved) = 0;
  /// Closes the object opened last.
  virtual void endObject() = 0;
  /// Opens a list.
  virtual void startArray(const std::string& name, int reserved) = 0;
  /// Closes the list opened last.
  virtual void endArray() = 0;
  virtual void addString(const std::string& name, const std::string& value) = 0;
  virtual void addInteger(const std::string& name, long long value) = 0;
  /// How many entries the open list has, told before them.
  virtual void addCount(const std::string& name, unsigned long long value) = 0;
};

}  // namespace qx::response
