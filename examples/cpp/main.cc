// A host in C++ that links the library:
//
//   device_id_cpp [FORMAT]
//
// It prints the id, or tells on standard error why there is none and returns 1.

#include <exception>
#include <iostream>

#include "device_id.hpp"

int main(int argc, char** argv) try {
  const std::string format = argc > 1 ? argv[1] : "2.0";
  const example::Answer answer = example::GetDeviceId(format);
  switch (answer.result) {
    case example::Result::kSuccess:
      std::cout << answer.id << '\n';
      return 0;
    case example::Result::kUnsupportedVersion:
      std::cerr << "device_id_cpp: the library knows no format \"" << format << "\"\n";
      return 1;
    default:
      std::cerr << "device_id_cpp: result " << static_cast<int>(answer.result) << " for format \""
                << format << "\"\n";
      return 1;
  }
} catch (const std::exception& failure) {
  std::cerr << "device_id_cpp: " << failure.what() << '\n';
  return 1;
}
