#include "inspection/warnings.h"

#include <map>
#include <string>
#include <string_view>

#include "inspection/stored_bytes.h"

namespace system_info {
namespace {

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

std::string FileIn(const StateFolder& folder, const char* name) {
  return std::string(name) + (folder.path.empty() ? "" : " in " + folder.path);
}

// True if there are bytes to judge.
bool CanBeJudged(const StoredFile& file, const std::string& name, std::vector<Warning>& warnings) {
  if (file.state == StoredFile::State::kUnreadable) {
    warnings.push_back({"unreadable-file", name + " cannot be read: " + file.why + "."});
  }
  return file.state == StoredFile::State::kRead;
}

void WarnOfIdFile(const StoredFile& file, const std::string& name, std::vector<Warning>& warnings) {
  if (!CanBeJudged(file, name, warnings)) return;
  const IdContent content = JudgeIdBytes(file.bytes);
  if (content.state != ContentState::kDamaged) return;
  const std::string legible = content.legible ? " It held the id " + *content.legible + "." : "";
  warnings.push_back({"damaged-file", name + " is damaged: " + content.damage + "." + legible});
}

void WarnOfRecord(const StoredFile& file, const std::string& name, std::vector<Warning>& warnings) {
  if (!CanBeJudged(file, name, warnings)) return;
  const RecordContent content = DecodeRecord(file.bytes);
  if (content.state == ContentState::kEmpty) {
    warnings.push_back({"damaged-file", name + " is empty. The next call removes it."});
  }
  if (content.state == ContentState::kDamaged) {
    static const std::map<RecordUse, const char*> kFates = {
        {RecordUse::kRead, ". It is not compared with the hardware."},
        {RecordUse::kRemoved, ". The next call removes it."},
        {RecordUse::kFatal, ". Each call fails and leaves it there."}};
    warnings.push_back(
        {"damaged-file", name + " is damaged: " + content.damage + kFates.at(content.use)});
  }
  if (content.trailing_bytes > 0) {
    const std::uint64_t trailing_bytes = content.trailing_bytes + file.unread;
    warnings.push_back({"trailing-bytes", name + " has " + std::to_string(trailing_bytes) +
                                              " bytes behind its end. They do no harm."});
  }
}

struct AdapterWarning {
  AdapterRule rule;
  const char* text;
};

constexpr AdapterWarning kAdapterWarnings[] = {
    {AdapterRule::kFirstWithoutPci,
     "There is no network adapter on the PCI bus, so the address of the first adapter is taken. It "
     "changes as adapters come and go."},
    {AdapterRule::kFirstPciMissing,
     "The first network adapter on the PCI bus is not among the active ones, so the address of the "
     "first adapter is taken. Switched on again, it counts again."},
    {AdapterRule::kAskedWmi,
     "The network adapters could not be listed, so the address is the first that WMI names."},
};

void WarnOfReading(const HardwareReading& reading, std::vector<Warning>& warnings) {
  if (!reading.failure.empty()) {
    warnings.push_back(
        {"hardware-unreadable", "The hardware was not read: " + reading.failure + "."});
  }
  for (const ReadValue& value : reading.values) {
    // No enabled adapter is a usual state, and has its own warning.
    if (value.failure.empty() || value.name == PartName::kNetwork) continue;
    warnings.push_back({"value-unreadable", std::string("The ") + TextOf(value.name) +
                                                " was not read: " + value.failure + "."});
  }
  for (const AdapterWarning& warning : kAdapterWarnings) {
    if (reading.adapter_rule == warning.rule) warnings.push_back({"adapter-choice", warning.text});
  }
}

}  // namespace

void WarnOfParts(const std::vector<Part>& parts, std::vector<Warning>& warnings) {
  for (const Part& part : parts) {
    const std::string name = NameOf(part);
    if (part.stored && part.present && IsSameTextRespelled(*part.stored, *part.present)) {
      warnings.push_back(
          {"respelled", Quoted(*part.stored) + " and " + Quoted(*part.present) + " are the same " +
                            name + " in two spellings. The comparison takes them for two."});
    }
    const std::optional<std::string>& text = part.present ? part.present : part.stored;
    if (!text || part.names.empty()) continue;
    const std::string doubt = DoubtAbout(part.names.front(), *text);
    if (doubt.empty()) continue;
    std::string told = "The " + name;
    told.append(" ").append(Quoted(*text)).append(" is ").append(doubt).append(".");
    warnings.push_back({"doubtful-part", told});
  }
}

void WarnOfFiles(const std::vector<StateFolder>& folders, std::vector<Warning>& warnings) {
  for (const StateFolder& folder : folders) {
    WarnOfIdFile(folder.idv2, FileIn(folder, "device.idv2"), warnings);
    WarnOfIdFile(folder.id, FileIn(folder, "device.id"), warnings);
    WarnOfRecord(folder.record, FileIn(folder, "hid_settings"), warnings);
  }
}

void WarnOfCall(const LogFacts& facts, std::vector<Warning>& warnings) {
  if (!facts.readings.empty()) WarnOfReading(facts.readings.back(), warnings);
  if (facts.age && *facts.age < 0) {
    warnings.push_back({"future-record",
                        "The date of the record is in the future, so the clock was set back. The "
                        "record is not compared before that date."});
  }
  if (!facts.user_write_errors.empty()) {
    warnings.push_back(
        {"id-not-stored", "The id can be stored in neither folder, so each call makes it anew."});
  } else if (!facts.common_write_errors.empty()) {
    warnings.push_back(
        {"own-id", "This account cannot write the common folder, so it has an id of its own."});
  }
  for (const CarryOver& carried : facts.carried_over) {
    if (carried.end == CarryOver::End::kCopyFailed ||
        carried.end == CarryOver::End::kFolderNotMade) {
      warnings.push_back({"not-carried-over", "The id in " + carried.old_folder +
                                                  " cannot be carried over to " +
                                                  carried.new_folder + "."});
    }
  }
}

}  // namespace system_info
