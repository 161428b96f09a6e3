// The PC that the player plays on: a scripted machine natively, a real Windows with the real DLL
// otherwise. Each build has its own implementation.

#ifndef DEVICEID_TESTS_PC_PC_H_
#define DEVICEID_TESTS_PC_PC_H_

#include <string>
#include <vector>

#include "deviceid.h"

namespace pc {

struct Library {
  decltype(&::GetHardwareId) get;
  decltype(&::RecheckHardwareId) recheck;
  decltype(&::GetHardwareIdMod) mod;
  decltype(&::GetHardwareIdEx) ex;
  decltype(&::GetHIDVersion) version;
};
Library TheLibrary();

// The folder above the library's, for the machine or for the user.
std::string Root(bool common);

// Makes it another PC, with no file of the library's on it.
void Renew();

// Gives it another part: "product" or "board", a serial number as bytes; "pci", the instance id of
// its PCI adapter, which may be empty for none; "hardware" or "network", only to lose them;
// natively "account", an ordinary one instead of root, and "all", every value that WMI has, which
// is then asked for the address, too.
void SetPart(const std::string& part, const std::string& value);

// Puts this thread into the apartment "sta" or "mta" as the host, or ends that with "none" and says
// what the host could do in it and after it.
std::string SetApartment(const std::string& apartment);

// How often the hardware was collected since StartCounting, or -1.
int CountCollections();
void StartCounting();

// False if a call may find other files than there were before it.
bool IsForeseeable();

// Runs so many processes at once, each of which calls CountFailures on so many threads, and adds up
// what they counted.
std::string RunProcesses(int processes, int threads, const std::vector<std::string>& task);

// Calls the library CALLS times for the id ID in format 2.0 and counts what comes of it otherwise.
// `task` is CALLS KIND ID. On a "new" PC result 4 is no failure: there may be no id yet.
int CountFailures(const std::vector<std::string>& task);

// What only one of the builds can play.
std::string PlayOther(const std::vector<std::string>& step);

}  // namespace pc

#endif  // DEVICEID_TESTS_PC_PC_H_
