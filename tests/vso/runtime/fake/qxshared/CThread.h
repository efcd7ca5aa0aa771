// Stands in for a thread's record: tells a test which places were noted.
#pragma once

#include <string>

#include "tests/vso/runtime/LockRecord.h"

namespace qx {

class CThread {
 public:
  static CThread* myCThread(int reserved) {
    static thread_local CThread record;
    if (reserved != 0) test::LockRecord::add("record " + std::to_string(reserved));
    return &record;
  }

  void sourceLocation(const char* file, int line) {
    const std::string path = file;
    test::LockRecord::lines.push_back(line);
    test::LockRecord::add("at " + path.substr(path.rfind('/') + 1));
  }
};

}  // namespace qx
