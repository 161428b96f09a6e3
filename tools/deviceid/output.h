// What the program says, and the statuses that it ends with.

#ifndef DEVICEID_TOOLS_DEVICEID_OUTPUT_H_
#define DEVICEID_TOOLS_DEVICEID_OUTPUT_H_

#include <stdexcept>
#include <string>
#include <vector>

namespace deviceid {

// Exit statuses beside the results of the library, which has no result 2, and those of a verdict,
// which are 0, 10 and 20.
enum Status : int {
  kGood = 0,
  kWrongUsage = 2,
  kBadData = 65,       // A file that is not what it should be, or too large.
  kNoInput = 66,       // A file or folder that is not there.
  kNoLibrary = 69,     // The library of --library cannot be loaded.
  kFailed = 70,        // Any other failure of the program itself.
  kPutBack = 71,       // A repair came out otherwise than announced; all is as before.
  kBusy = 72,          // Another repair is running, or the files changed meanwhile.
  kHalfDone = 73,      // A repair stopped, and its backup has to be brought back by hand.
  kWriteFailed = 74,   // Output, or a backup, cannot be written.
  kNeedsConsent = 75,  // Only with --yes.
  kRefused = 76,       // A repair that there is no need or no way for.
  kNoRights = 77,      // A file or folder that this account may not read.
};

// Ends the program with a status and one line on standard error.
class Failure : public std::runtime_error {
 public:
  Failure(Status status, const std::string& text) : std::runtime_error(text), status_(status) {}
  Status status() const { return status_; }

 private:
  Status status_;
};

// One line on standard error, whatever `text` holds.
void Complain(const std::string& text);

// Returns `status` if all output has arrived, else complains as far as it can and returns
// kWriteFailed.
int FinishOutput(int status);

// True if standard output is a terminal that shows colours and the user has not turned them off
// (NO_COLOR, TERM=dumb).
bool WantsColour();

// One of `names` that `word` was probably meant to be, for a complaint: `, did you mean
// "--format"?`. Empty if nothing is near enough, or several are equally near.
std::string Suggestion(const std::string& word, const std::vector<std::string>& names);

// The same, or all of `names` if none is the nearest: "; there are 1.5, 1.6, 2.0".
std::string SuggestionOrAll(const std::string& word, const std::vector<std::string>& names);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_OUTPUT_H_
