#include "hardware/hardware_overlay.h"

#include <utility>

namespace system_info {
namespace {

thread_local HardwareOverlay* present = nullptr;

}  // namespace

HardwareOverlay* PresentHardwareOverlay() { return present; }

HardwareOverlay* SetHardwareOverlay(HardwareOverlay* overlay) {
  return std::exchange(present, overlay);
}

}  // namespace system_info
