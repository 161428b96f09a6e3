#include "bench/linux/pairs.h"
#include "inspection/explanation_text.h"
#include "tools/deviceid/machine_state.h"
#include "tools/deviceid/state_folders.h"

namespace bench {

Pair Explain() {
  CallLibrary();  // The first call stores the id.
  const auto explain = [] {
    const auto hardware = system_info::ReadThisMachine();
    const auto machine = deviceid::LookAtMachine("2.0", *hardware);
    system_info::ToText(system_info::ExplainMachine(machine), {false, deviceid::LocalDate});
  };
  return {Timed(explain), Timed(CallLibrary)};
}

}  // namespace bench
