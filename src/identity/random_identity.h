// The random text that replaces the hardware string when no hardware can be read, or when a host
// asks for an id that does not depend on hardware.

#ifndef DEVICEID_IDENTITY_RANDOM_IDENTITY_H_
#define DEVICEID_IDENTITY_RANDOM_IDENTITY_H_

#include <random>
#include <string>

namespace system_info {

// Returns a random number from 0 to 2147483647 in decimal. Throws what std::random_device throws.
std::string MakeRandomHardwareString();

// The text for the next output of `generator`.
std::string RandomHardwareStringFrom(std::mt19937& generator);

}  // namespace system_info

#endif  // DEVICEID_IDENTITY_RANDOM_IDENTITY_H_
