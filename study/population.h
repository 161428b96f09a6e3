// Makes up the machines of a population.

#ifndef DEVICEID_STUDY_POPULATION_H_
#define DEVICEID_STUDY_POPULATION_H_

#include <string>

#include "study/computer.h"
#include "study/draws.h"
#include "study/parameters.h"
#include "study/played_library.h"

namespace system_info {

struct Population {
  std::string name;
  Parameters parameters;
  Draws draws;
  int size;
};

// An ordinary PC with four good values, nothing else of which is drawn.
Computer OrdinaryComputer(const Draws& draws);

// Machine `number`. Its image may have been used before: then `library` has stored files in it.
Computer MakeComputer(const Population& population, int number, PlayedLibrary& library);

// Puts a container on one of the hosts of the population; any number stands for one.
void PutOnHost(const Population& population, std::uint64_t host, Computer& container);

// Gives the adapter of a container its address for the start of that number: drawn by the kernel,
// or made from its place on the network of the host.
void DrawContainerAddress(const Draws& draws, std::uint64_t start, Adapter& adapter);

// "ab" and digits: a text that nothing else has.
std::string UniqueText(const char* prefix, std::uint64_t bits);

Adapter MakeAdapter(AdapterKind kind, const std::string& name, std::uint64_t bits);

// The text that a maker leaves where the filter knows it.
inline constexpr const char* kFilteredPlaceholder = "To be filled by O.E.M.";

}  // namespace system_info

#endif  // DEVICEID_STUDY_POPULATION_H_
