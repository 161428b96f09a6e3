// How the findings of health_checks.h are shown, and the times among them.

#include <algorithm>
#include <array>
#include <charconv>
#include <nlohmann/json.hpp>

#include "inspection/health_checks.h"
#include "inspection/log_entries.h"
#include "inspection/shown_text.h"

namespace system_info {
namespace {

using Json = nlohmann::ordered_json;

struct LevelLook {
  const char* shown;
  const char* name;
  const char* colour;
  int status;
};

// In the order of HealthLevel.
constexpr std::array<LevelLook, 3> kLooks = {{
    {"OK    ", "ok", "\x1b[1;32m", 0},
    {"WARN  ", "warn", "\x1b[1;33m", 10},
    {"FAIL  ", "fail", "\x1b[1;31m", 20},
}};

constexpr std::size_t kCodeWidth = 23;  // Of the longest code, and a gap.
constexpr std::int64_t kDay = 86'400'000;

const LevelLook& LookOf(HealthLevel level) { return kLooks[static_cast<std::size_t>(level)]; }

// Milliseconds since midnight of "HH:MM:SS:mmm".
std::int64_t TimeOf(const LogEntry& entry) {
  std::array<std::int64_t, 4> parts = {};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const char* begin = entry.time.data() + 3 * i;
    std::from_chars(begin, entry.time.data() + entry.time.size(), parts[i]);
  }
  return ((parts[0] * 60 + parts[1]) * 60 + parts[2]) * 1000 + parts[3];
}

// `WMI property "SerialNumber" FOR CLASS "Win32_BaseBoard" = "..."`
std::string SourceOf(const std::string& message) {
  constexpr std::string_view kStart = "WMI property \"";
  constexpr std::string_view kMiddle = "\" FOR CLASS \"";
  const std::string line = message.substr(0, message.find('\n'));
  if (line.starts_with("Network Adapters List")) return "The list of network adapters";
  if (line.starts_with("PCI Network Adapters List")) return "The network adapters on the PCI bus";
  const std::size_t middle = line.find(kMiddle);
  if (!line.starts_with(kStart) || middle == std::string::npos) return {};
  const std::size_t name = middle + kMiddle.size();
  const std::size_t end = line.find_first_of(" \"", name);
  return line.substr(kStart.size(), middle - kStart.size()) + " of " +
         line.substr(name, end - name);
}

}  // namespace

std::vector<SourceTime> TimesOfSources(const std::string& hardware_log) {
  const std::vector<LogEntry> entries = ParseLog(hardware_log);
  std::vector<SourceTime> times;
  for (std::size_t i = 1; i < entries.size(); ++i) {
    const std::string source = SourceOf(entries[i].message);
    if (source.empty()) continue;
    const std::int64_t passed = TimeOf(entries[i]) - TimeOf(entries[i - 1]);
    times.push_back({source, passed < 0 ? passed + kDay : passed});
  }
  return times;
}

int StatusOf(const std::vector<HealthFinding>& findings) {
  int status = 0;
  for (const HealthFinding& finding : findings) {
    status = std::max(status, LookOf(finding.level).status);
  }
  return status;
}

std::string ToText(const std::vector<HealthFinding>& findings, bool colour) {
  std::string text;
  for (const auto& [level, code, sentence, remedy] : findings) {
    const LevelLook& look = LookOf(level);
    text += colour ? look.colour + std::string(look.shown) + "\x1b[0m" : look.shown;
    text += code + std::string(kCodeWidth - std::min(kCodeWidth, code.size()), ' ');
    text += Harmless(sentence) + (remedy.empty() ? "" : " Do: " + Harmless(remedy)) + "\n";
  }
  return text;
}

std::string ToJson(const std::vector<HealthFinding>& findings) {
  Json list = Json::array();
  for (const auto& [level, code, text, remedy] : findings) {
    list.push_back({{"code", code},
                    {"level", LookOf(level).name},
                    {"text", ToUtf8(text)},
                    {"remedy", remedy.empty() ? Json(nullptr) : Json(ToUtf8(remedy))}});
  }
  const Json object = {
      {"schema", 1}, {"command", "doctor"}, {"status", StatusOf(findings)}, {"findings", list}};
  return object.dump(2);
}

}  // namespace system_info
