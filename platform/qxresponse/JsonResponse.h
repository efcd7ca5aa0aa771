// An answer as a JSON document.
#pragma once

#include <memory>
#include <string>

#include "qxresponse/IResponse.h"

namespace qx::response {

/// Objects become JSON objects and lists JSON arrays. The entries of an array have no names: the name of an object in a
/// list is dropped, and so is the count of the list, which the array shows itself. A value in a list becomes an object
/// of one member. Of two members with one name in an object the later stands.
///
/// Text that is not UTF-8 gets U+FFFD for each byte, or start of a sequence, that does not go on as one.
class JsonResponse : public IResponse {
 public:
  JsonResponse();
  ~JsonResponse() override;

  JsonResponse(const JsonResponse&) = delete;
  JsonResponse& operator=(const JsonResponse&) = delete;

  void startObject(const std::string& name, int reserved) override;
  /// Throws std::logic_error if what was opened last, and is still open, is no object.
  void endObject() override;
  void startArray(const std::string& name, int reserved) override;
  /// Throws std::logic_error if what was opened last, and is still open, is no list.
  void endArray() override;
  void addString(const std::string& name, const std::string& value) override;
  void addInteger(const std::string& name, long long value) override;
  void addCount(const std::string& name, unsigned long long value) override;

  /// The document so far, an object, on one line. What is still open counts as closed.
  std::string document() const;

 private:
  struct State;

  std::unique_ptr<State> state_;
};

}  // namespace qx::response
