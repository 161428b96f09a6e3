// What can take the place of single values under the readers of the hardware, so that a call can be
// played as it would go on another machine.
//
// As with a file overlay, the shared library is compiled without the places at which one is asked
// for. An overlay belongs to the thread that set it.

#ifndef DEVICEID_HARDWARE_HARDWARE_OVERLAY_H_
#define DEVICEID_HARDWARE_HARDWARE_OVERLAY_H_

#include <optional>
#include <string>

namespace system_info {

class HardwareOverlay {
 public:
  HardwareOverlay() = default;
  HardwareOverlay(const HardwareOverlay&) = delete;
  HardwareOverlay& operator=(const HardwareOverlay&) = delete;
  virtual ~HardwareOverlay() = default;

  // The text that WMI has for a property of the first row of a class, or none to ask WMI. Raises
  // what the reading of a class without rows raises.
  virtual std::optional<std::wstring> WmiText(const std::wstring& class_text,
                                              const std::wstring& property) = 0;
  // What WMI gave when it was asked.
  virtual void NoteWmiText(const std::wstring& class_text, const std::wstring& property,
                           const std::wstring& text) = 0;

  // False if the system has no network adapters to list.
  virtual bool HasAdapters() = 0;
  // What stands for an address in the list of adapters.
  virtual std::string AdapterAddress(const std::string& address) = 0;
};

#if defined(DEVICEID_WITH_FILE_OVERLAY)

// The overlay of this thread, or null.
HardwareOverlay* PresentHardwareOverlay();

// Puts `overlay`, which may be null, in the place of the present one of this thread and returns
// that one.
HardwareOverlay* SetHardwareOverlay(HardwareOverlay* overlay);

#else

constexpr HardwareOverlay* PresentHardwareOverlay() { return nullptr; }

#endif

}  // namespace system_info

#endif  // DEVICEID_HARDWARE_HARDWARE_OVERLAY_H_
