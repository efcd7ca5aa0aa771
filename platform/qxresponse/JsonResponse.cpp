#include "qxresponse/JsonResponse.h"

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>
#include <vector>

namespace qx::response {

namespace {

/// Keeps the order in which members are added.
using Json = nlohmann::ordered_json;

}  // namespace

/// What is open, outermost first. Each is moved into the one round it when it is closed.
struct JsonResponse::State {
  struct Open {
    std::string name;
    Json value;
  };

  void start(const std::string& name, Json value) { open.push_back({name, std::move(value)}); }

  void end(bool isWanted) {
    if (!isWanted) throw std::logic_error("JsonResponse: end of what is not open");
    Open closed = std::move(open.back());
    open.pop_back();
    put(open.back().value, closed.name, std::move(closed.value));
  }

  /// Into an array goes the value alone.
  static void put(Json& into, const std::string& name, Json value) {
    if (into.is_array()) {
      into.push_back(std::move(value));
    } else {
      into[name] = std::move(value);
    }
  }

  void add(const std::string& name, Json value) {
    Json& into = open.back().value;
    if (into.is_array()) {
      Json object = Json::object();
      object[name] = std::move(value);
      into.push_back(std::move(object));
    } else {
      into[name] = std::move(value);
    }
  }

  bool isOpen(Json::value_t type) const { return open.size() > 1 && open.back().value.type() == type; }

  std::vector<Open> open{{std::string(), Json::object()}};
};

JsonResponse::JsonResponse() : state_(std::make_unique<State>()) {}
JsonResponse::~JsonResponse() = default;

void JsonResponse::startObject(const std::string& name, int) { state_->start(name, Json::object()); }
void JsonResponse::endObject() { state_->end(state_->isOpen(Json::value_t::object)); }
void JsonResponse::startArray(const std::string& name, int) { state_->start(name, Json::array()); }
void JsonResponse::endArray() { state_->end(state_->isOpen(Json::value_t::array)); }

void JsonResponse::addString(const std::string& name, const std::string& value) { state_->add(name, value); }
void JsonResponse::addInteger(const std::string& name, long long value) { state_->add(name, value); }

void JsonResponse::addCount(const std::string& name, unsigned long long value) {
  if (!state_->open.back().value.is_array()) state_->add(name, value);
}

std::string JsonResponse::document() const {
  State rest = *state_;
  while (rest.open.size() > 1) rest.end(true);
  return rest.open.front().value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace qx::response
