// What the classes under test do with their locks, in a program whose lockers say so.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qx::test {

/// Takes note of what the calling thread does, in order.
struct LockRecord {
  inline static thread_local std::vector<std::string> events;
  /// The lines that were noted.
  inline static thread_local std::vector<int> lines;
  /// The mutexes that were taken by each name.
  inline static thread_local std::map<std::string, std::set<const void*>> mutexes;
  /// Called with each event right when it happens.
  inline static thread_local std::function<void(const std::string&)> hook;

  static void clear() {
    events.clear();
    lines.clear();
    mutexes.clear();
    hook = nullptr;
  }

  static void add(const std::string& event) {
    events.push_back(event);
    if (hook) hook(event);
  }
};

/// A record that begins anew, with a hook for as long as this lives.
class LockHook {
 public:
  explicit LockHook(std::function<void(const std::string&)> hook) {
    LockRecord::clear();
    LockRecord::hook = std::move(hook);
  }
  ~LockHook() { LockRecord::hook = nullptr; }
  LockHook(const LockHook&) = delete;
  LockHook& operator=(const LockHook&) = delete;
};

}  // namespace qx::test
