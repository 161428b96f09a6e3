#include "identity/resolution.h"

#include <optional>
#include <string>

#include "identity/hardware_id_matching.h"
#include "identity/random_identity.h"
#include "storage/device_id_files.h"
#include "storage/emulated_hardware_ids.h"
#include "storage/hid_settings.h"
#include "support/clock.h"
#include "support/text_conversions.h"
#include "values/device_id.h"
#include "values/resolution_flags.h"

namespace system_info {
namespace {

constexpr HidFormatVersion kFormat(2, 0);

// The previous format, whose id is migrated. The files of both formats store ids with its prefix.
constexpr HidFormatVersion kFormatBefore(1, 6);

constexpr std::int64_t kTenDays = 864'000 * kTicksPerSecond;

// The id to return for a known machine, and what is stored.
enum class Outcome {
  kRecordIsYoung,       // The stored id; nothing is stored.
  kRecordIsRandom,      // The stored id; the record is renewed.
  kRecordHasOtherId,    // The stored id; the record is renewed.
  kHardwareMatches,     // The stored id; the record is renewed.
  kHardwareHasChanged,  // The runtime id; id and record are replaced.
  kHardwareIsUnknown,   // No id; nothing is stored.
};

// One run. The steps fill the members.
class Resolution {
 public:
  Resolution(OSManager& manager, HIDLog& log, std::uint32_t flags)
      : manager_(manager), log_(log), flags_(flags) {}

  // The id to return, or none.
  std::optional<DeviceId> Run() {
    id_loaded_ = LoadFileId();
    if (!file_id_.empty()) file_id_ = RewriteDeviceIdPrefix(file_id_, kFormat);
    settings_ = LoadHidSettings();
    Info(settings_ ? L"Hardware settings are successfully read."
                   : L"Hardware settings are not read.");

    if (id_loaded_ && settings_) return KnownMachine();
    if (id_loaded_) return IdWithoutRecord();
    if (!settings_) return NewMachine();
    return std::nullopt;
  }

 private:
  void Info(const std::wstring& message) { log_.WriteWide(message, LogLevel::Info); }

  bool Has(ResolutionFlags flag) const { return (flags_ & flag) != 0; }

  bool LoadFileId() {
    Info(L"Trying to get device.idv2.");
    if (LoadDeviceId(manager_, log_, file_id_, kFormat)) {
      Info(L"device.idv2 is correct.");
      return true;
    }
    Info(L"device.idv2 not found or not correct. Trying to get device.id");
    if (LoadDeviceId(manager_, log_, file_id_, kFormatBefore)) {
      Info(L"device.id is correct. Saving into device.idv2");
      SaveDeviceId(manager_, log_, file_id_, kFormat);
      return true;
    }
    Info(L"device.id is not found or not correct.");
    return false;
  }

  std::optional<DeviceId> KnownMachine() {
    ReadHardwareString();
    if (hardware_string_.empty()) {
      DrawHardwareString();
      Info(L"Generating random runtime hid: " + ToWide(hardware_string_));
    } else {
      Info(L"Hid is generated.");
    }
    runtime_id_ = MakeDeviceId(hardware_string_, kFormat);
    Info(L"Runtime device id: " + ToWide(runtime_id_));

    switch (JudgeRecord()) {
      case Outcome::kRecordIsYoung:
        return file_id_;
      case Outcome::kRecordIsRandom:
      case Outcome::kRecordHasOtherId:
      case Outcome::kHardwareMatches:
        RenewRecord();
        return file_id_;
      case Outcome::kHardwareHasChanged:
        ReplaceIdAndRecord();
        return runtime_id_;
      case Outcome::kHardwareIsUnknown:
        break;
    }
    return std::nullopt;
  }

  std::optional<DeviceId> IdWithoutRecord() {
    ReadHardwareString();
    if (hardware_string_.empty()) {
      runtime_id_ = file_id_;
      runtime_type_ = HidType::Random;
    } else {
      runtime_id_ = MakeDeviceId(hardware_string_, kFormat);
      SaveRuntimeId();
    }
    ReadHardwareIds();
    if (runtime_ids_) MakeRecord();
    return runtime_id_;
  }

  std::optional<DeviceId> NewMachine() {
    ReadHardwareString();
    if (hardware_string_.empty()) DrawHardwareString();
    runtime_id_ = MakeDeviceId(hardware_string_, kFormat);
    SaveRuntimeId();
    ReadHardwareIds();
    if (runtime_ids_) {
      Info(L"Saving hardware settings. No settings file.");
      Info(L"Saving hardware settings");
      MakeRecord();
    }
    return runtime_id_;
  }

  // The steps of a known machine, in the order in which one of them decides.
  Outcome JudgeRecord() {
    if (!RecordIsOld()) return Outcome::kRecordIsYoung;
    if (settings_->hid_type == HidType::Random) {
      Info(L"Settings' hid type is random.");
      Info(L"Return file device id.");
      return Outcome::kRecordIsRandom;
    }
    if (settings_->device_id != file_id_) {
      Info(L"Device id is not the same as file device id.");
      Info(L"Return file device id.");
      return Outcome::kRecordHasOtherId;
    }
    Info(L"Device id is the same as file device id and set hid type is generated.");
    ReadHardwareIds();
    if (!runtime_ids_) return Outcome::kHardwareIsUnknown;
    return HardwareMatches() ? Outcome::kHardwareMatches : Outcome::kHardwareHasChanged;
  }

  bool RecordIsOld() {
    // Unsigned, since a stored date can be any number.
    const std::uint64_t written = static_cast<std::uint64_t>(settings_->last_write_date) *
                                  static_cast<std::uint64_t>(kTicksPerSecond);
    const auto diff =
        static_cast<std::int64_t>(static_cast<std::uint64_t>(PresentTicks()) - written);
    Info(L"Diff seconds: " + std::to_wstring(diff / kTicksPerSecond));
    if (Has(SkipDateCheck)) {
      Info(L"Skipping date check.");
      return true;
    }
    if (diff < kTenDays) {
      Info(L"Settings' last write date is less than 10 days ago. Returning file device id.");
      return false;
    }
    Info(L"Settings' last write date is more than 10 days ago.");
    return true;
  }

  bool HardwareMatches() {
    Info(L"Comparing runtime hardware ids.");
    int matches = 0;
    const bool match = MatchHardwareIds(settings_->hardware_ids, *runtime_ids_, matches);
    Info(L"There is match of " + std::to_wstring(matches) +
         L" hardware ids out of stored hw ids number of " +
         std::to_wstring(settings_->hardware_ids.size()) + L" and runtime hw ids number of " +
         std::to_wstring(runtime_ids_->size()));
    Info(match ? L"There are more than 50% match, returning file device id."
               : L"There are less or equal to 50% match, returning runtime device id.");
    return match;
  }

  // Empties the hardware string if there is no hardware to make an id from.
  void ReadHardwareString() {
    hardware_string_ = manager_.GetHardwareIdString(kFormat);
    if (Has(ForceRandomHid)) hardware_string_.clear();
  }

  void DrawHardwareString() {
    hardware_string_ = MakeRandomHardwareString();
    runtime_type_ = HidType::Random;
  }

  void ReadHardwareIds() {
    runtime_ids_ = Has(UseEmulatedHardwareIds) ? ReadEmulatedHardwareIds()
                                               : manager_.GetHardwareIdList(kFormat);
  }

  void SaveRuntimeId() {
    SaveDeviceId(manager_, log_, RewriteDeviceIdPrefix(runtime_id_, kFormatBefore), kFormat);
  }

  void MakeRecord() {
    SaveHidSettings(HidSettings(kFormat, runtime_type_, runtime_id_, *runtime_ids_));
  }

  // Keep the stored list: changes accumulate against the list from when the id was made.
  void RenewRecord() {
    settings_->device_id = file_id_;
    SaveHidSettings(*settings_);
  }

  void ReplaceIdAndRecord() {
    settings_->hid_type = runtime_type_;
    settings_->device_id = runtime_id_;
    settings_->hardware_ids = *runtime_ids_;
    SaveRuntimeId();
    SaveHidSettings(*settings_);
  }

  OSManager& manager_;
  HIDLog& log_;
  const std::uint32_t flags_;

  DeviceId file_id_;
  bool id_loaded_ = false;
  std::optional<HidSettings> settings_;
  std::string hardware_string_;
  DeviceId runtime_id_;
  HidType runtime_type_ = HidType::Generated;
  HardwareIdSet runtime_ids_;
};

}  // namespace

HidResult ResolveDeviceId(OSManager& manager, HIDLog& log, const HostBuffers& buffers,
                          std::uint32_t flags) {
  const std::optional<DeviceId> id = Resolution(manager, log, flags).Run();
  if (!id) return HidResult::UnexpectedFailure;
  const HidResult result = buffers.PutId(*id);
  buffers.PutLog(log);
  return result;
}

}  // namespace system_info
