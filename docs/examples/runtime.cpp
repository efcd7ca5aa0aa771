#include <vso/vso.h>

#include <iostream>
#include <stdexcept>
#include <thread>

int main() {
  // True until somebody votes against it.
  qx::DeposableBool accepting(true);
  accepting.elect("upgrade");
  accepting.elect("backup");
  std::cout << accepting << "\n";
  accepting.depose("upgrade");
  accepting.depose("backup");
  std::cout << accepting << "\n";

  // More than two failures within a minute?
  qx::TimedCount failures(2, 60'000);
  ++failures;
  ++failures;
  std::cout << "after 2: " << failures.exceededThresholds();
  ++failures;
  std::cout << ", after 3: " << failures.exceededThresholds() << "\n";

  // One thread waits for what another finds out.
  qx::WaitableBool isCoordinator;
  std::thread radio([&] { isCoordinator.set(true); });
  std::cout << "coordinator: " << isCoordinator.get() << "\n";
  radio.join();

  // A result in the platform's own words, and what an exception says.
  std::cout << qx::resultXToStr(0) << ", " << qx::resultXToStr(-1) << "\n";
  try {
    qx::Xfile device("/nowhere/radio", qx::Xfile::READ | qx::Xfile::WRITE);
    device.open();
  } catch (const std::runtime_error& error) {
    std::cout << error.what() << "\n";
  }
}
