// The hardware of the running machine with some of its values changed.
//
// The library's own readers, filter and rules run on the changed values, so that all comes out, the
// log included, as it would on a machine that really has them.

#ifndef DEVICEID_INSPECTION_CHANGED_HARDWARE_H_
#define DEVICEID_INSPECTION_CHANGED_HARDWARE_H_

#include <map>
#include <memory>
#include <string>

#include "hardware/hardware_overlay.h"
#include "inspection/hardware_parts.h"
#include "inspection/played_call.h"

namespace system_info {

// What a machine has in place of its own values, in ASCII; an empty text for no value.
using ChangedValues = std::map<PartName, std::string>;

// Begins with the machine as it is. WMI is asked for a value once, for all changes.
class ChangedHardware final : public HardwareSource, private HardwareOverlay {
 public:
  ChangedHardware() : machine_(ReadThisMachine()) {}

  // Puts `values` in the place of the machine's own and of all former changes. Of the network
  // adapters those change that have `address`, which is the one that counts as the network value
  // of the unchanged machine.
  void Change(ChangedValues values, const std::string& address);

  HardwareIdString GetHardwareIdString(const HidFormatVersion& version,
                                       const std::shared_ptr<HIDLog>& log) override;
  HardwareIdSet GetHardwareIdList(const HidFormatVersion& version,
                                  const std::shared_ptr<HIDLog>& log) override;

 private:
  std::optional<std::wstring> WmiText(const std::wstring& class_text,
                                      const std::wstring& property) override;
  void NoteWmiText(const std::wstring& class_text, const std::wstring& property,
                   const std::wstring& text) override;
  bool HasAdapters() override;
  std::string AdapterAddress(const std::string& address) override;

  std::unique_ptr<HardwareSource> machine_;
  ChangedValues values_;
  std::string address_;
  std::map<std::wstring, std::wstring> wmi_texts_;  // By class and property.
};

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_CHANGED_HARDWARE_H_
