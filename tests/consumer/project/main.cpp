// A program of somebody else's: builds a frame with the installed library, and reads it back.
#include <vso/vso.h>

#include <iostream>

#include "qxshared/hexStr.h"

int main() {
  qx::ZclLevelControl dim;
  dim.setTsn(5);
  dim.moveToLevel(0x80, 10);

  std::string sent;
  qx::hexify(dim.contents, dim.length_, sent, true);
  std::cout << "cluster " << qx::hexStr(dim.getClusterId(), 2, true) << ": " << sent << "\n";

  const qx::ZclOnOff answer(std::string("1805010000001001"));
  const bool right = sent == "01 05 00 80 0a 00" && answer.on().value && answer.on().state == 1;
  return right ? 0 : 1;
}
