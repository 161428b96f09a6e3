// What single changes do to the id of format 2.0, played by the library one by one.

#ifndef DEVICEID_STUDY_SCRIPTS_H_
#define DEVICEID_STUDY_SCRIPTS_H_

#include <nlohmann/json.hpp>

namespace system_info {

// True where the id stays:
//   changed/PART, gone/PART   of four parts, one has another value or none
//   together, in_turn         of the six pairs of parts, how many can change, at once or with three
//                             comparisons in between
//   placeholders/TEXT         the product says so from the first day; how many of the other three
//                             parts can change, each by itself
nlohmann::json PlayScripts();

}  // namespace system_info

#endif  // DEVICEID_STUDY_SCRIPTS_H_
