// Calls that are played first and made then.

#ifndef DEVICEID_TESTS_SUPPORT_FORESEEN_CALL_H_
#define DEVICEID_TESTS_SUPPORT_FORESEEN_CALL_H_

#include <functional>
#include <string>
#include <vector>

#include "inspection/played_call.h"

namespace system_info {

struct ForeseenCall {
  PlayedExport which = PlayedExport::kGet;
  std::string format = "2.0";
  std::uint32_t flags = 0;
};

// What a call left in the host's buffers.
struct MadeCall {
  int result = -1;
  std::string id;
  std::optional<std::string> log;  // None if the buffer was left alone.
};

// Plays `call`, makes it with `make`, and tells everything that came out otherwise than it was
// played, or that playing changed in or below one of `folders`; empty if nothing. Times may differ.
// `account` runs what it is given as the account that calls.
std::string DifferencesOf(
    const ForeseenCall& call, HardwareSource& hardware, const std::vector<std::string>& folders,
    const std::function<MadeCall()>& make,
    const std::function<void(const std::function<void()>&)>& account = [](const auto& action) {
      action();
    });

// What `action` changes in or below one of `folders`: names, bytes, rights, dates. Empty if
// nothing.
std::string TracesOf(const std::vector<std::string>& folders, const std::function<void()>& action);

// All that the system tells of a path, but for its bytes and when it was last read. Each build has
// its own implementation.
std::string StatusText(const std::string& path);

}  // namespace system_info

#endif  // DEVICEID_TESTS_SUPPORT_FORESEEN_CALL_H_
