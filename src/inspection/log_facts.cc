#include "inspection/log_facts.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

#include "inspection/log_entries.h"
#include "values/device_id.h"
#include "values/format_version.h"

namespace system_info {
namespace {

using Captures = std::vector<std::string>;

struct ValueLine {
  std::string_view property;
  std::string_view class_start;
  PartName name;
};

// Which value a line of WMI is about. Twin of the plan of values.
constexpr ValueLine kValueLines[] = {
    {"UUID", "Win32_ComputerSystemProduct", PartName::kUuid},
    {"SerialNumber", "Win32_OperatingSystem", PartName::kSerial},
    {"VolumeSerialNumber", "win32_logicaldisk", PartName::kVolume},
    {"IdentifyingNumber", "Win32_ComputerSystemProduct", PartName::kProduct},
    {"SerialNumber", "Win32_BaseBoard", PartName::kBoard},
    {"MACAddress", "Win32_NetworkAdapter", PartName::kNetwork},
};

struct PlannedName {
  PartName name;
  HidFormatVersion from;
  HidFormatVersion below;
};

constexpr HidFormatVersion kNoEnd(9, 0);

// The values in the order in which they are read, as the library plans them.
constexpr PlannedName kPlan[] = {
    {PartName::kUuid, {0, 0}, {1, 4}},   {PartName::kSerial, {0, 0}, {1, 4}},
    {PartName::kVolume, {0, 0}, kNoEnd}, {PartName::kProduct, {0, 0}, kNoEnd},
    {PartName::kBoard, {0, 0}, kNoEnd},  {PartName::kNetwork, {1, 1}, kNoEnd},
};

constexpr std::string_view kEmulatedName = "GetHardwareIdEmulated";

template <typename Number>
std::optional<Number> ToNumber(const std::string& text) {
  Number number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// Reads the lines of one call. A method is what one kind of line tells.
struct Rule;

class Reader {
 public:
  // The line that is read now, as it stands.
  std::string line;
  // The line is the last one of the log, which may have been cut within it.
  bool last = false;
  bool is_error = false;
  // The line lacks its end, since a character before that has no narrow form.
  bool line_is_cut = false;

  // False in the text of an id file that is no id: it can hold lines of a log. Two kinds of lines
  // end it.
  bool Believes(const Rule& rule) const;

  LogFacts Finish() {
    if (!facts_.end) facts_.end = EndWithoutLine();
    // The number for a new machine is drawn without a line.
    const bool nothing_read =
        !facts_.readings.empty() && facts_.readings[0].whole && facts_.readings[0].Joined().empty();
    if (facts_.end == CallEnd::kNewMachine && nothing_read) facts_.random = true;
    return std::move(facts_);
  }

  void Begin(const Captures& found) {
    const std::size_t calls = facts_.calls + 1;
    *this = Reader();
    facts_.calls = calls;
    facts_.call = found[0] == kEmulatedName ? "GetHardwareIdMod" : found[0];
    facts_.format = found[1];
    if (IsSupportedVersion(found[1])) format_ = HidFormatVersion(found[1]);
    if (format_ == HidFormatVersion(1, 6)) BeginSearch(&facts_.id);
  }
  void Refuse(const Captures& found) {
    Begin(found);
    facts_.end = CallEnd::kRefused;
  }

  void NameNewFolder(const Captures& found) {
    EndCarryOvers();
    facts_.carried_over.push_back({found[0], {}, {}});
  }
  void NameOldFolder(const Captures& found) {
    if (!facts_.carried_over.empty()) facts_.carried_over.back().old_folder = found[0];
  }
  template <CarryOver::End end>
  void EndCarryOver(const Captures& /*found*/) {
    if (!facts_.carried_over.empty()) facts_.carried_over.back().end = end;
  }

  void SearchIdv2(const Captures& /*found*/) {
    EndCarryOvers();
    BeginSearch(&facts_.idv2);
  }
  void SearchId(const Captures& /*found*/) {
    facts_.idv2.good = false;
    BeginSearch(&facts_.id);
  }
  void Idv2IsGood(const Captures& /*found*/) { facts_.idv2.good = true; }
  void IdIsGood(const Captures& /*found*/) { facts_.id.good = true; }
  void IdIsBad(const Captures& /*found*/) { facts_.id.good = false; }
  void SearchIsBad(const Captures& /*found*/) {
    if (search_ != nullptr) search_->good = false;
    in_text_ = false;
  }
  template <Place place>
  void FindText(const Captures& found) {
    // A text that is no id may go on in a line that was cut off.
    if (search_ == nullptr || (last && !IsValidDeviceId(found[0]))) return;
    EndCarryOvers();
    search_->place = place;
    search_->text = found[0];
    in_text_ = !IsValidDeviceId(found[0]);
    searching_ = false;
    // Format 1.6 has no line for a good id; in format 2.0 one follows.
    if (format_ < HidFormatVersion(2, 0) && IsValidDeviceId(found[0])) search_->good = true;
  }
  void FindNothing(const Captures& /*found*/) { searching_ = false; }
  // A line that fails a reading or a writing of a file, and names no file.
  void FailFile(const Captures& /*found*/) {
    if (line.empty() && last) return;  // As a rule the rest was cut off.
    if (line.empty() && !is_error) return FailValue({});
    if (search_ != nullptr && searching_) {
      search_->read_errors.push_back(line);
    } else {
      write_error_ = line;
    }
  }
  void FailCommonWrite(const Captures& /*found*/) {
    facts_.common_write_errors.push_back(write_error_);
  }
  void FailUserWrite(const Captures& /*found*/) {
    facts_.user_write_errors.push_back(write_error_);
  }

  template <bool read>
  void ReadRecord(const Captures& /*found*/) {
    facts_.record_read = read;
  }

  void BeginReading(const Captures& /*found*/) {
    EndCarryOvers();
    facts_.readings.emplace_back();
  }
  void FailReading(const Captures& /*found*/) {
    if (facts_.readings.empty()) return;
    facts_.readings.back().failure = line;
    facts_.readings.back().whole = true;
  }
  // A failed value does not say which it is: the order tells.
  void FailValue(const Captures& /*found*/) {
    const std::optional<PartName> name = NextName();
    if (line.empty() && !facts_.readings.empty()) facts_.readings.back().untold = true;
    if (name) AddValue({*name, {}, line.empty() ? "its line is too long for the log" : line});
  }
  void FailVolume(const Captures& /*found*/) { AddValue({PartName::kVolume, {}, line}); }
  void ReadWmiValue(const Captures& found) {
    const auto name = NameOfProperty(found[0], found[1]);
    if (!name) return;
    if (name == PartName::kNetwork && Adapters()) TakeRule(AdapterRule::kAskedWmi);
    AddValue({*name, found[2], {}, line_is_cut});
  }
  // "Unexpected error in <>" and "Error in <>: <>", of a reader or of the whole call.
  void FailSomewhere(const Captures& found) {
    if (found[0] == "GetWmiProperty") return FailValue({});
    if (found[0] == "GetWmiProperties") return FailReading({});
    facts_.end = CallEnd::kFailed;
    facts_.failure = found.size() > 1 ? found[1] : std::string();
  }

  void ListAdapters(const Captures& found) {
    if (facts_.readings.empty()) return;
    for (std::string_view rest = found[0]; !rest.empty();) {
      const std::string_view row = rest.substr(0, rest.find('\n'));
      rest.remove_prefix(std::min(rest.size(), row.size() + 1));
      AddAdapter(row);
    }
  }
  void FailAdapters(const Captures& /*found*/) {
    if (!facts_.readings.empty()) facts_.readings.back().adapter_failure = line;
  }
  void FindPciAddress(const Captures& found) {
    TakeRule(AdapterRule::kPci);
    AddValue({PartName::kNetwork, found[0], {}});
  }
  template <AdapterRule rule>
  void TakeFirstAdapter(const Captures& /*found*/) {
    TakeRule(rule);
    const std::string address = FirstAddress();
    // Without an address WMI is asked, in a later line.
    if (!address.empty()) AddValue({PartName::kNetwork, address, {}});
  }

  void DrawNumber(const Captures& /*found*/) { facts_.random = true; }
  void MakeRuntimeId(const Captures& found) { facts_.runtime_id = found[0]; }
  void MakeLegacyId(const Captures& found) {
    facts_.runtime_id = found[0];
    facts_.end = CallEnd::kFromHardware;
  }
  void TellAge(const Captures& found) { facts_.age = ToNumber<std::int64_t>(found[0]); }
  void IgnoreAge(const Captures& /*found*/) { facts_.age_ignored = true; }
  template <CallEnd end>
  void End(const Captures& /*found*/) {
    facts_.end = end;
  }
  void BeginComparison(const Captures& /*found*/) { comparison_due_ = true; }
  void Count(const Captures& found) {
    const auto matches = ToNumber<std::size_t>(found[0]);
    const auto stored = ToNumber<std::size_t>(found[1]);
    const auto runtime = ToNumber<std::size_t>(found[2]);
    if (matches && stored && runtime) facts_.counts = {*matches, *stored, *runtime};
  }

 private:
  // A folder that could not be made has no line: the call just goes on.
  void EndCarryOvers() {
    for (CarryOver& carried : facts_.carried_over) {
      if (!carried.end) carried.end = CarryOver::End::kFolderNotMade;
    }
  }

  void BeginSearch(IdSearch* search) {
    search_ = search;
    search_->begun = true;
    searching_ = true;
  }

  bool Adapters() const { return format_ >= HidFormatVersion(1, 5); }

  void TakeRule(AdapterRule rule) {
    if (!facts_.readings.empty()) facts_.readings.back().adapter_rule = rule;
  }

  void AddAdapter(std::string_view row) {
    const std::size_t name_end = row.find(": ");
    if (name_end == std::string_view::npos) return;
    const std::string_view rest = row.substr(name_end + 2);
    const std::size_t address_end = rest.find(": ");
    if (address_end == std::string_view::npos) return;
    facts_.readings.back().adapters.push_back({std::string(row.substr(0, name_end)),
                                               std::string(rest.substr(0, address_end)),
                                               std::string(rest.substr(address_end + 2))});
  }

  // The address of the first adapter with a name; of two with one name the later one counts.
  std::string FirstAddress() const {
    std::string name;
    std::string address;
    if (facts_.readings.empty()) return {};
    for (const Adapter& adapter : facts_.readings.back().adapters) {
      if (name.empty()) name = adapter.name;
      if (adapter.name == name) address = adapter.address;
    }
    return address;
  }

  // The value that the reading has not come to yet.
  std::optional<PartName> NextName() const {
    if (facts_.readings.empty()) return std::nullopt;
    std::size_t place = facts_.readings.back().values.size();
    for (const PlannedName& planned : kPlan) {
      if (format_ < planned.from || format_ >= planned.below) continue;
      if (place == 0) return planned.name;
      --place;
    }
    return std::nullopt;
  }

  void AddValue(ReadValue value) {
    if (!NextName()) return;
    facts_.readings.back().values.push_back(std::move(value));
    facts_.readings.back().whole = !NextName();
  }

  // Some ends have no line of their own.
  std::optional<CallEnd> EndWithoutLine() const {
    const IdSearch* loaded = facts_.Loaded();
    if (format_ < HidFormatVersion(2, 0)) {
      return loaded != nullptr ? std::optional(CallEnd::kStoredId) : std::nullopt;
    }
    if (!facts_.record_read) return std::nullopt;
    const bool unknown = facts_.id.good == false;
    if (*facts_.record_read) {
      if (unknown) return CallEnd::kNoId;
      const bool unlisted =
          comparison_due_ && facts_.readings.size() > 1 && !facts_.readings.back().failure.empty();
      return unlisted ? std::optional(CallEnd::kHardwareIsUnknown) : std::nullopt;
    }
    if (facts_.readings.empty() || !facts_.readings[0].whole) return std::nullopt;
    if (unknown) return CallEnd::kNewMachine;
    if (loaded == nullptr) return std::nullopt;
    return facts_.readings[0].Joined().empty() ? CallEnd::kIdStays : CallEnd::kMadeAnew;
  }

  LogFacts facts_;
  HidFormatVersion format_{2, 0};
  IdSearch* search_ = nullptr;
  bool searching_ = false;
  bool in_text_ = false;
  bool comparison_due_ = false;
  std::string write_error_;
};

struct Rule {
  std::string_view text;  // "<>" stands for what varies.
  void (Reader::*tell)(const Captures&);
};

constexpr Rule kRules[] = {
    {"Execute <>, version <>", &Reader::Begin},

    {"[CopyDeviceIdFolder] new dir: <>", &Reader::NameNewFolder},
    {"[CopyDeviceIdFolder] old dir: <>", &Reader::NameOldFolder},
    {"[CopyDeviceIdFolder] old device.id not found",
     &Reader::EndCarryOver<CarryOver::End::kNothingThere>},
    {"[CopyDeviceIdFolder] Copy success", &Reader::EndCarryOver<CarryOver::End::kCopied>},
    {"[CopyDeviceIdFolder] Copy failed", &Reader::EndCarryOver<CarryOver::End::kCopyFailed>},

    {"Trying to get device.idv2.", &Reader::SearchIdv2},
    {"device.idv2 not found or not correct. Trying to get device.id", &Reader::SearchId},
    {"device.idv2 is correct.", &Reader::Idv2IsGood},
    {"device.id is correct. Saving into device.idv2", &Reader::IdIsGood},
    {"device.id is not found or not correct.", &Reader::IdIsBad},
    {"Device id version <> is incorrect.", &Reader::SearchIsBad},
    {"HID was loaded from common file: <>", &Reader::FindText<Place::kCommon>},
    {"HID was loaded from user file: <>", &Reader::FindText<Place::kUser>},
    {"Can not load HID from common and user directory", &Reader::FindNothing},
    {"Can not open file to read", &Reader::FailFile},
    {"Unable to read from file", &Reader::FailFile},
    {"", &Reader::FailFile},
    {"Can not open file to write", &Reader::FailFile},
    {"Unable to write to file", &Reader::FailFile},
    {"Unable to write in common dir", &Reader::FailCommonWrite},
    {"Unable to write in user dir", &Reader::FailUserWrite},

    {"Hardware settings are successfully read.", &Reader::ReadRecord<true>},
    {"Hardware settings are not read.", &Reader::ReadRecord<false>},

    {"We are getting the information about the hardware in the Windows environment",
     &Reader::BeginReading},
    {"Fail to initialize COM with error: <>", &Reader::FailReading},
    {"Failed to create WbemLocator instance", &Reader::FailReading},
    {"Failed to connect server", &Reader::FailReading},
    {"Failed to set proxy blanket", &Reader::FailReading},
    {R"(WMI property "<>" FOR CLASS "<>" = "<>")", &Reader::ReadWmiValue},
    {"Could not get ID of volume HDD", &Reader::FailVolume},
    {"Failed to execute query", &Reader::FailValue},
    {"Failed to get next query", &Reader::FailValue},
    {"Failed to get result", &Reader::FailValue},
    {"Unexpected error in <>", &Reader::FailSomewhere},
    {"Error in <>: <>", &Reader::FailSomewhere},
    {"Network Adapters List:<>", &Reader::ListAdapters},
    {"Find PCI MAC-Address: <> for <>", &Reader::FindPciAddress},
    {"Cannot find PCI MAC-Address #1. Return first found adapter",
     &Reader::TakeFirstAdapter<AdapterRule::kFirstWithoutPci>},
    {"Cannot find PCI MAC-Address #2. Return first found adapter",
     &Reader::TakeFirstAdapter<AdapterRule::kFirstPciMissing>},
    {"GetAdaptersInfo failed with code = <>", &Reader::FailAdapters},
    {"Cannot allocate memory #1", &Reader::FailAdapters},
    {"Cannot allocate memory #2", &Reader::FailAdapters},

    {"Generating random runtime hid: <>", &Reader::DrawNumber},
    {"Runtime device id: <>", &Reader::MakeRuntimeId},
    {"Diff seconds: <>", &Reader::TellAge},
    {"Skipping date check.", &Reader::IgnoreAge},
    {"Settings' last write date is less than 10 days ago. Returning file device id.",
     &Reader::End<CallEnd::kRecordIsYoung>},
    {"Settings' hid type is random.", &Reader::End<CallEnd::kRecordIsRandom>},
    {"Device id is not the same as file device id.", &Reader::End<CallEnd::kRecordHasOtherId>},
    {"Device id is the same as file device id and set hid type is generated.",
     &Reader::BeginComparison},
    {"There is match of <> hardware ids out of stored hw ids number of <> and runtime hw ids "
     "number "
     "of <>",
     &Reader::Count},
    {"There are more than 50% match, returning file device id.",
     &Reader::End<CallEnd::kHardwareMatches>},
    {"There are less or equal to 50% match, returning runtime device id.",
     &Reader::End<CallEnd::kHardwareHasChanged>},

    {"Failed to get any of all the hardware IDs. Will generate a random UUID", &Reader::DrawNumber},
    {"Received HID: <>", &Reader::MakeLegacyId},

    {"<> is not supported with version <>", &Reader::Refuse},
};

bool Reader::Believes(const Rule& rule) const {
  return !in_text_ || rule.tell == &Reader::SearchIsBad || rule.tell == &Reader::Begin;
}

// True if the last of `entries` ends where its line does.
bool IsWhole(std::string_view log, const std::vector<LogEntry>& entries) {
  const auto lines = ParseLog(log.substr(0, log.rfind('\n') + 1));
  return lines.size() == entries.size() && !lines.empty() &&
         lines.back().message == entries.back().message;
}

}  // namespace

std::vector<NamedValue> HardwareReading::Listed() const {
  std::vector<NamedValue> listed;
  for (const ReadValue& value : values) {
    const bool in_lists = value.name <= PartName::kNetwork;
    if (in_lists && !value.text.empty() && value.text != "0")
      listed.push_back({value.name, value.text});
  }
  return listed;
}

std::string HardwareReading::Joined() const {
  std::string joined;
  for (const ReadValue& value : values) {
    joined += value.text;
    if (value.cut) break;
  }
  return failure.empty() ? joined : std::string();
}

std::optional<PartName> NameOfProperty(std::string_view property, std::string_view class_text) {
  for (const ValueLine& value : kValueLines) {
    if (value.property == property && class_text.starts_with(value.class_start)) return value.name;
  }
  return std::nullopt;
}

const IdSearch* LogFacts::Loaded() const {
  if (idv2.good == true) return &idv2;
  return id.good == true ? &id : nullptr;
}

LogFacts ReadLogFacts(std::string_view log) {
  Reader reader;
  const std::vector<LogEntry> entries = ParseLog(log);
  const bool last_is_whole = IsWhole(log, entries);
  for (const LogEntry& entry : entries) {
    reader.line = entry.message;
    reader.last = &entry == &entries.back();
    reader.is_error = entry.level == "Error";
    reader.line_is_cut = entry.message.starts_with("WMI property ") && entry.message.back() != '"';
    const std::string message = entry.message + (reader.line_is_cut ? "\"" : "");
    for (const Rule& rule : kRules) {
      const auto found = MatchLogText(rule.text, message);
      if (!found || !reader.Believes(rule)) continue;
      // What varies in a line may go on where the log was cut.
      if (!reader.last || last_is_whole || found->empty()) (reader.*rule.tell)(*found);
      break;
    }
  }
  LogFacts facts = reader.Finish();
  facts.ends_in_line = log.empty() || log.ends_with('\n');
  return facts;
}

std::optional<std::vector<std::string>> MatchLogText(std::string_view text,
                                                     std::string_view message) {
  Captures found;
  std::size_t gap = text.find("<>");
  if (gap == std::string_view::npos) return text == message ? std::optional(found) : std::nullopt;
  if (!message.starts_with(text.substr(0, gap))) return std::nullopt;
  message.remove_prefix(gap);
  while (true) {
    text.remove_prefix(gap + 2);
    gap = text.find("<>");
    if (gap == std::string_view::npos) break;
    const std::size_t end = message.find(text.substr(0, gap));
    if (end == std::string_view::npos) return std::nullopt;
    found.emplace_back(message.substr(0, end));
    message.remove_prefix(end + gap);
  }
  if (!message.ends_with(text)) return std::nullopt;
  found.emplace_back(message.substr(0, message.size() - text.size()));
  return found;
}

std::vector<std::string> KnownLogTexts() {
  std::vector<std::string> texts;
  for (const Rule& rule : kRules) texts.emplace_back(rule.text);
  return texts;
}

}  // namespace system_info
