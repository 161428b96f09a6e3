#include "inspection/changed_hardware.h"

#include <utility>

#include "inspection/log_facts.h"
#include "platform/windows_api.h"
#include "support/text_conversions.h"

namespace system_info {
namespace {

class OverlayScope {
 public:
  explicit OverlayScope(HardwareOverlay* overlay) : previous_(SetHardwareOverlay(overlay)) {}
  OverlayScope(const OverlayScope&) = delete;
  OverlayScope& operator=(const OverlayScope&) = delete;
  ~OverlayScope() { SetHardwareOverlay(previous_); }

 private:
  HardwareOverlay* previous_;
};

}  // namespace

void ChangedHardware::Change(ChangedValues values, const std::string& address) {
  machine_ = ReadThisMachine();
  values_ = std::move(values);
  address_ = address;
}

HardwareIdString ChangedHardware::GetHardwareIdString(const HidFormatVersion& version,
                                                      const std::shared_ptr<HIDLog>& log) {
  const OverlayScope scope(this);
  return machine_->GetHardwareIdString(version, log);
}

HardwareIdSet ChangedHardware::GetHardwareIdList(const HidFormatVersion& version,
                                                 const std::shared_ptr<HIDLog>& log) {
  const OverlayScope scope(this);
  return machine_->GetHardwareIdList(version, log);
}

std::optional<std::wstring> ChangedHardware::WmiText(const std::wstring& class_text,
                                                     const std::wstring& property) {
  const auto name = NameOfProperty(ToNarrow(property), ToNarrow(class_text));
  const auto changed = name ? values_.find(*name) : values_.end();
  if (changed != values_.end()) {
    // A machine without adapters has no row of them, which ends the reading of the value.
    if (name == PartName::kNetwork && changed->second.empty()) _com_issue_error(E_POINTER);
    return ToWide(changed->second);
  }
  const auto known = wmi_texts_.find(class_text + L' ' + property);
  return known == wmi_texts_.end() ? std::nullopt : std::optional(known->second);
}

void ChangedHardware::NoteWmiText(const std::wstring& class_text, const std::wstring& property,
                                  const std::wstring& text) {
  // A text that holds a zero cannot be given again whole.
  if (text.find(L'\0') != std::wstring::npos) return;
  wmi_texts_[class_text + L' ' + property] = text;
}

bool ChangedHardware::HasAdapters() {
  const auto changed = values_.find(PartName::kNetwork);
  return changed == values_.end() || !changed->second.empty();
}

std::string ChangedHardware::AdapterAddress(const std::string& address) {
  const auto changed = values_.find(PartName::kNetwork);
  return changed == values_.end() || address != address_ ? address : changed->second;
}

}  // namespace system_info
