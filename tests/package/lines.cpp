// SPDX-License-Identifier: Apache-2.0
#include <kestrel/kestrel.h>
#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

int main() {
  std::vector<char> id(Manufacturing_GetDeviceIdSize());
  const int line = GPIO_OpenAsInput(7);
  GpioLevel level = GpioLevel_High;
  if (line < 0 || GPIO_GetValue(line, &level) != 0 ||
      Manufacturing_GetDeviceId(id.data(), id.size()) < 0) {
    return 1;
  }
  std::cout << "C++: line 7 is " << (level == GpioLevel_High ? "high" : "low") << ", device "
            << std::string(id.data(), 4) << "\n";
  return close(line);
}
