#include "inspection/redacted_log.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <vector>

#include "inspection/log_entries.h"
#include "inspection/log_facts.h"
#include "values/device_id.h"
#include "values/format_version.h"

namespace system_info {
namespace {

constexpr HidFormatVersion kFormat(2, 0);

constexpr const char* kLeftOut = "(left out)";

// What varies in a line.
enum class Gap { kWord, kVersion, kNumber, kId, kPath, kValue, kText, kReason, kAdapter, kRows };

struct LineForm {
  std::string_view text;  // "<>" stands for what varies.
  std::array<Gap, 3> gaps = {};
};

// The lines whose gaps are filled, and those that log_facts.h does not read.
constexpr LineForm kForms[] = {
    {"Execute <>, version <>", {Gap::kWord, Gap::kVersion}},
    {"<> is not supported with version <>", {Gap::kWord, Gap::kVersion}},
    {"[CopyDeviceIdFolder] new dir: <>", {Gap::kPath}},
    {"[CopyDeviceIdFolder] old dir: <>", {Gap::kPath}},
    {"[CopyDeviceIdFolder] Create new dir: <>", {Gap::kPath}},
    {"HID was loaded from common file: <>", {Gap::kId}},
    {"HID was loaded from user file: <>", {Gap::kId}},
    {"Device id version <> is incorrect.", {Gap::kVersion}},
    {"Fail to initialize COM with error: <>", {Gap::kNumber}},
    {R"(WMI property "<>" FOR CLASS "<>" = "<>")", {Gap::kText, Gap::kText, Gap::kValue}},
    {"Unexpected error in <>", {Gap::kWord}},
    {"Error in <>: <>", {Gap::kWord, Gap::kReason}},
    // Before the list whose name is a part of this one.
    {"PCI Network Adapters List:<>", {Gap::kRows}},
    {"Network Adapters List:<>", {Gap::kRows}},
    {"Find PCI MAC-Address: <> for <>", {Gap::kValue, Gap::kAdapter}},
    {"GetAdaptersInfo failed with code = <>", {Gap::kNumber}},
    {"Generating random runtime hid: <>", {Gap::kValue}},
    {"Runtime device id: <>", {Gap::kId}},
    {"Diff seconds: <>", {Gap::kNumber}},
    {"There is match of <> hardware ids out of stored hw ids number of <> and runtime hw ids "
     "number "
     "of <>",
     {Gap::kNumber, Gap::kNumber, Gap::kNumber}},
    {"Received HID: <>", {Gap::kId}},
    {"SetupDiGetClassDevs failed", {}},
    {"Hid is generated.", {}},
    {"Settings' last write date is more than 10 days ago.", {}},
    {"Return file device id.", {}},
    {"Comparing runtime hardware ids.", {}},
    {"Saving hardware settings. No settings file.", {}},
    {"Saving hardware settings", {}},
    {"IDs are received.", {}},
};

// Reasons that decide what is told of a call. Others can hold anything.
constexpr std::string_view kReasons[] = {"invalid stoi argument", "stoi argument out of range",
                                         "basic_string::resize", "std::bad_alloc"};

// How kernels name adapters by themselves.
constexpr std::string_view kAdapterNames[] = {
    "eth", "en",   "wlan", "wl",     "ww",    "usb", "br",    "ib",  "tun", "tap",
    "ppp", "bond", "veth", "docker", "virbr", "lo",  "dummy", "ifb", "ham", "sit"};

struct FilledForm {
  const LineForm* form = nullptr;
  std::vector<std::string> found;
};

std::optional<FilledForm> FindForm(std::string_view message) {
  for (const LineForm& form : kForms) {
    if (auto found = MatchLogText(form.text, message)) return FilledForm{&form, *std::move(found)};
  }
  return std::nullopt;
}

// A line without a gap that log_facts.h reads.
bool IsPlainLine(std::string_view message) {
  static const std::vector<std::string> kTexts = KnownLogTexts();
  return std::find(kTexts.begin(), kTexts.end(), message) != kTexts.end() &&
         message.find("<>") == std::string_view::npos;
}

bool IsNumber(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  return !text.empty() && text.size() < 20 &&
         text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool IsWord(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  return text.size() <= kLongest && std::all_of(text.begin(), text.end(), [](unsigned char c) {
           return std::isalpha(c) != 0;
         });
}

// "EMFILE, too many open files in the process"
bool IsKnownReason(std::string_view text) {
  if (std::find(std::begin(kReasons), std::end(kReasons), text) != std::end(kReasons)) return true;
  const std::size_t comma = text.find(", ");
  return text.starts_with('E') && comma != std::string_view::npos &&
         IsWord(text.substr(0, comma)) &&
         text.find_first_not_of("abcdefghijklmnopqrstuvwxyz ,", comma) == std::string_view::npos;
}

// Of a kernel: its start, and a number or what stands for a place on a bus.
bool IsKernelName(std::string_view name) {
  constexpr std::size_t kLongest = 15;
  constexpr std::string_view kPlaces = "0123456789abcdefopsx";
  return name.size() <= kLongest &&
         std::any_of(std::begin(kAdapterNames), std::end(kAdapterNames), [&](auto start) {
           return name.starts_with(start) &&
                  name.find_first_not_of(kPlaces, start.size()) == std::string_view::npos;
         });
}

std::string RedactAdapter(const std::string& name, Redactor& redactor) {
  const bool guid = name.starts_with('{') && name.ends_with('}');
  if (!guid) return IsKernelName(name) ? redactor.Text(name) : redactor.Name(name);
  return "{" + redactor.Value(name.substr(1, name.size() - 2)) + "}";
}

// "name: address: description", or "description: name" of an adapter on the PCI bus.
std::string RedactRow(const std::string& row, bool pci, Redactor& redactor) {
  const std::size_t first = pci ? row.rfind(": ") : row.find(": ");
  if (first == std::string::npos) return row.empty() ? "" : kLeftOut;
  const std::string start = row.substr(0, first);
  const std::string rest = row.substr(first + 2);
  if (pci) return redactor.Text(start) + ": " + RedactAdapter(rest, redactor);
  const std::size_t second = rest.find(": ");
  if (second == std::string::npos) return kLeftOut;
  return RedactAdapter(start, redactor) + ": " + redactor.Value(rest.substr(0, second)) + ": " +
         redactor.Text(rest.substr(second + 2));
}

std::string RedactRows(const std::string& rows, bool pci, Redactor& redactor) {
  std::string redacted;
  for (std::size_t begin = 0; begin <= rows.size();) {
    const std::size_t end = std::min(rows.find('\n', begin), rows.size());
    redacted += RedactRow(rows.substr(begin, end - begin), pci, redactor);
    if (end < rows.size()) redacted += '\n';
    begin = end + 1;
  }
  return redacted;
}

// A damaged id file can hold anything: what stands around an id stays if it is blank.
std::string RedactId(const std::string& text, Redactor& redactor) {
  constexpr std::string_view kAround = " \t\r\n\"";
  const std::size_t begin = std::min(text.find_first_not_of(kAround), text.size());
  const std::size_t end = text.find_last_not_of(kAround) + 1;
  if (begin >= end) return text;
  return text.substr(0, begin) + redactor.Value(text.substr(begin, end - begin)) + text.substr(end);
}

std::string Fill(Gap gap, const std::string& found, bool pci, Redactor& redactor) {
  switch (gap) {
    case Gap::kWord:
      return IsWord(found) ? found : kLeftOut;
    case Gap::kVersion:
      return IsSupportedVersion(found) ? found : redactor.Value(found);
    case Gap::kNumber:
      return IsNumber(found) ? found : kLeftOut;
    case Gap::kId:
      return RedactId(found, redactor);
    case Gap::kPath:
      return redactor.Path(found);
    case Gap::kValue:
      return redactor.Value(found);
    case Gap::kText:
      return redactor.Text(found);
    case Gap::kReason:
      return IsKnownReason(found) ? found : kLeftOut;
    case Gap::kAdapter:
      return RedactAdapter(found, redactor);
    case Gap::kRows:
      break;
  }
  return RedactRows(found, pci, redactor);
}

std::string RedactFilled(const FilledForm& filled, Redactor& redactor) {
  std::string redacted;
  std::string_view text = filled.form->text;
  const bool pci = text.starts_with("PCI");
  for (std::size_t i = 0; i < filled.found.size(); ++i) {
    const std::size_t gap = text.find("<>");
    redacted += text.substr(0, gap);
    redacted += Fill(filled.form->gaps[i], filled.found[i], pci, redactor);
    text.remove_prefix(gap + 2);
  }
  return redacted.append(text);
}

// What follows the first line of a message that is no list was put there by somebody else. Such a
// line is not read as one of the library, and still must not be.
std::string RedactMessage(const std::string& message, Redactor& redactor) {
  if (IsPlainLine(message)) return message;
  if (const auto filled = FindForm(message)) return RedactFilled(*filled, redactor);
  const std::size_t end = message.find('\n');
  if (end == std::string::npos) return kLeftOut;
  return RedactMessage(message.substr(0, end), redactor) + "\n" + kLeftOut;
}

std::string HeaderOf(const LogEntry& entry) {
  const std::string header = "[" + entry.time + "] [" + entry.level + "] ";
  return entry.level == "Info" ? header + " " : header;
}

// What varies in a line that was cut tells nothing.
bool IsCutLine(std::string_view message) { return !IsPlainLine(message) && !message.empty(); }

void LearnRows(const std::string& rows, Redactor& redactor) {
  for (std::size_t begin = 0; begin < rows.size();) {
    const std::size_t end = std::min(rows.find('\n', begin), rows.size());
    const std::string row = rows.substr(begin, end - begin);
    redactor.LearnFrom(row);
    const std::string name = row.substr(0, row.find(": "));
    if (!IsKernelName(name) && name.size() < row.size()) redactor.LearnName(name);
    begin = end + 1;
  }
}

void LearnGap(Gap gap, const std::string& found, bool pci, Redactor& redactor) {
  if (gap == Gap::kValue || gap == Gap::kId) redactor.Learn(found);
  if (gap == Gap::kPath) redactor.LearnPath(found);
  if (gap == Gap::kRows && !pci) LearnRows(found, redactor);
  redactor.LearnFrom(found);
}

}  // namespace

void LearnFromLog(std::string_view log, Redactor& redactor) {
  for (const LogEntry& entry : ParseLog(log)) {
    const auto filled = FindForm(entry.message);
    if (!filled) continue;
    const bool pci = filled->form->text.starts_with("PCI");
    for (std::size_t i = 0; i < filled->found.size(); ++i) {
      LearnGap(filled->form->gaps[i], filled->found[i], pci, redactor);
    }
  }
}

void BindMadeId(std::string_view log, Redactor& redactor) {
  const LogFacts facts = ReadLogFacts(log);
  if (facts.readings.empty() || facts.readings[0].Joined().empty()) return;
  std::string redacted;
  for (const ReadValue& value : facts.readings[0].values) redacted += redactor.Value(value.text);
  redactor.Bind(MakeDeviceId(facts.readings[0].Joined(), kFormat), MakeDeviceId(redacted, kFormat));
}

std::string RedactLog(std::string_view log, Redactor& redactor) {
  const std::vector<LogEntry> entries = ParseLog(log);
  const std::size_t last_line = log.rfind('\n') + 1;
  const bool cut = last_line < log.size();
  // Of a header that was cut no entry was made.
  const bool cut_header = cut && ParseLog(log.substr(0, last_line)).size() == entries.size() &&
                          log.substr(last_line).starts_with('[');
  std::string redacted;
  for (const LogEntry& entry : entries) {
    const bool cut_here = cut && !cut_header && &entry == &entries.back();
    redacted += HeaderOf(entry);
    redacted +=
        cut_here && IsCutLine(entry.message) ? kLeftOut : RedactMessage(entry.message, redactor);
    if (!cut_here) redacted += '\n';
  }
  return cut_header ? redacted + "[" : redacted;
}

}  // namespace system_info
