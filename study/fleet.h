// All machines of a population, played, and what came of it as numbers.

#ifndef DEVICEID_STUDY_FLEET_H_
#define DEVICEID_STUDY_FLEET_H_

#include <nlohmann/json.hpp>

#include "study/life.h"

namespace system_info {

// Plays the machines of `population` and all that is copied from them. Counts of machines:
//   machines, copies       how many there were; copies are not among the machines
//   calls                  of the library
//   rules/RULE/none        had no id on the first day
//   rules/RULE/kept        had the id of the first day at every look, for one, two and three years
//   rules/RULE/back        had it at the last look, whatever was in between
//   rules/RULE/own         machines and copies with an id at the end that no other one has
//   rules/RULE/own_copies  copies among them
//   losses/CAUSES          why format 2.0 gave another id first
//   lost_by_order          losses only because a part appeared or went and moved the others
//   kinds/KIND             the same for format 2.0, by what stood for product and board
nlohmann::json PlayFleet(const Population& population, const Habit& habit);

}  // namespace system_info

#endif  // DEVICEID_STUDY_FLEET_H_
