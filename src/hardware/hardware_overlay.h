// Replaces single values under the readers of the hardware, to simulate a call on another machine.
//
// Like the file overlay, it is compiled out of the shared library. An overlay belongs to the thread
// that set it.

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

  // The text of a property of the first row of a class; nullopt to query WMI. Raises what reading a
  // class without rows raises.
  virtual std::optional<std::wstring> WmiText(const std::wstring& class_text,
                                              const std::wstring& property) = 0;
  // Reports the text that WMI returned.
  virtual void NoteWmiText(const std::wstring& class_text, const std::wstring& property,
                           const std::wstring& text) = 0;

  // False if the system has no network adapters to list.
  virtual bool HasAdapters() = 0;
  // The replacement of an address in the list of adapters.
  virtual std::string AdapterAddress(const std::string& address) = 0;
};

#if defined(DEVICEID_WITH_FILE_OVERLAY)

// The overlay of this thread, or null.
HardwareOverlay* PresentHardwareOverlay();

// Sets the overlay of this thread, which may be null, and returns the previous one.
HardwareOverlay* SetHardwareOverlay(HardwareOverlay* overlay);

#else

constexpr HardwareOverlay* PresentHardwareOverlay() { return nullptr; }

#endif

}  // namespace system_info

#endif  // DEVICEID_HARDWARE_HARDWARE_OVERLAY_H_
