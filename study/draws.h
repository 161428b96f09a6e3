// Random numbers that are looked up and not drawn in turn.
//
// Each number is a digest of a seed, of what it is for, and of when. So a parameter that is changed
// changes what depends on it and nothing else, and two runs with one seed differ in that alone.

#ifndef DEVICEID_STUDY_DRAWS_H_
#define DEVICEID_STUDY_DRAWS_H_

#include <cstdint>
#include <string_view>

namespace system_info {

class Draws {
 public:
  explicit Draws(std::uint64_t seed) : seed_(seed) {}

  // Numbers of their own, for instance those of one machine.
  Draws For(std::string_view what, std::uint64_t number = 0) const {
    return Draws(Bits(what, number));
  }

  std::uint64_t Bits(std::string_view what, std::uint64_t number = 0) const {
    std::uint64_t hash = 0xcbf29ce484222325U;  // FNV-1a
    for (const char c : what) hash = (hash ^ static_cast<std::uint8_t>(c)) * 0x100000001b3U;
    return Mix(Mix(seed_ ^ hash) + number * 0x9e3779b97f4a7c15U);
  }

  // At least 0 and below 1.
  double Share(std::string_view what, std::uint64_t number = 0) const {
    return static_cast<double>(Bits(what, number) >> 11) * 0x1p-53;
  }

 private:
  // The last step of SplitMix64.
  static std::uint64_t Mix(std::uint64_t bits) {
    bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9U;
    bits = (bits ^ (bits >> 27)) * 0x94d049bb133111ebU;
    return bits ^ (bits >> 31);
  }

  std::uint64_t seed_;
};

}  // namespace system_info

#endif  // DEVICEID_STUDY_DRAWS_H_
