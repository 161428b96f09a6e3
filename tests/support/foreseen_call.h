// Calls that are played first and made then.

#ifndef DEVICEID_TESTS_SUPPORT_FORESEEN_CALL_H_
#define DEVICEID_TESTS_SUPPORT_FORESEEN_CALL_H_

#include <functional>
#include <string>

#include "inspection/played_call.h"
#include "support/scripted_machine.h"

namespace system_info {

struct ForeseenCall {
  PlayedExport which = PlayedExport::kGet;
  std::string format = "2.0";
  std::uint32_t flags = 0;
};

// Plays `call`, makes it with `make`, and tells everything that is otherwise than it was played, or
// that playing changed in or below `folder`; empty if nothing. `account` runs what it is given as
// the account that calls.
std::string DifferencesOf(const ForeseenCall& call, HardwareSource& hardware,
                          const std::string& folder, const std::function<Reply()>& make,
                          const std::function<void(const std::function<void()>&)>& account);

}  // namespace system_info

#endif  // DEVICEID_TESTS_SUPPORT_FORESEEN_CALL_H_
