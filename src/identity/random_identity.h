// The text that takes the place of the hardware string when no hardware can be read, or when a host
// asks for an id that does not rest on it.

#ifndef DEVICEID_IDENTITY_RANDOM_IDENTITY_H_
#define DEVICEID_IDENTITY_RANDOM_IDENTITY_H_

#include <random>
#include <string>

namespace system_info {

// Draws a number from 0 to 2147483647 and returns it in decimal. Every call draws anew; only a
// stored id stays the same. Throws what std::random_device throws.
std::string MakeRandomHardwareString();

// The text that the next output of `generator` gives.
std::string RandomHardwareStringFrom(std::mt19937& generator);

}  // namespace system_info

#endif  // DEVICEID_IDENTITY_RANDOM_IDENTITY_H_
