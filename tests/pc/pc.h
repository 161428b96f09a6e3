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

// Gives it another "product" or "board" serial number, or "pci" adapter, by its instance id, which
// may be empty for none; natively, another "volume", or the same value for "all".
void SetPart(const std::string& part, const std::string& value);

// What comes behind the name of a step; wrong arguments are a std::exception.
using Arguments = std::vector<std::string>;
using Verb = void (*)(const Arguments& arguments, std::string& answer);

// Plays a step of these, or returns false:
//
//   lose WHAT            the "hardware" or the "network"; natively, the "rights" of root
//   enter APARTMENT      the host's thread enters an "sta" or "mta"; natively, "late" is an "sta"
//                        that begins between the two readings of a call
//   leave                ends that, and answers what the host could do in the apartment and after
//   it cycle TIMES          on Windows: loads, calls and unloads the library, and answers what is
//   left beside DLL           on Windows: loads the library anew into a process that has that DLL
//   threads N TASK       on Windows: CountFailures on so many threads of this process
//   fail CALL [FOLDER]   natively: a platform call fails from now on
//   pass DAYS            natively: the clock goes on
//   halt, race, lost     natively: COM throws; another process is faster; the folders are unknown
bool PlayOther(const std::string& verb, const Arguments& arguments, std::string& answer);

// How often the hardware was collected since StartCounting, or -1.
int CountCollections();
void StartCounting();

// False if a call may find other files than there were before it.
bool IsForeseeable();

// Runs so many processes at once, each of which calls CountFailures on so many threads, and adds up
// what they counted.
int RunProcesses(int processes, int threads, const Arguments& task);

// Calls the library CALLS times for the id ID in format 2.0 and counts what comes of it otherwise.
// `task` is CALLS KIND ID. On a "new" PC result 4 is no failure: there may be no id yet.
int CountFailures(const Arguments& task);

}  // namespace pc

#endif  // DEVICEID_TESTS_PC_PC_H_
