#include "inspection/explanation_json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>

#include "inspection/shown_text.h"

namespace system_info {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kSchema = 1;

// The first second of the year 0 and the last one of the year 9999.
constexpr std::int64_t kFirstSecond = -62'167'219'200;
constexpr std::int64_t kLastSecond = 253'402'300'799;

Json Text(const std::string& text) { return ToUtf8(text); }

Json Text(const std::optional<std::string>& text) { return text ? Text(*text) : Json(nullptr); }

Json Number(const std::optional<std::size_t>& number) {
  return number ? Json(*number) : Json(nullptr);
}

Json Date(std::int64_t seconds) {
  const std::string text = UtcText(seconds);
  return text.empty() ? Json(nullptr) : Json(text);
}

Json Outcome(const std::optional<CallOutcome>& outcome) {
  if (!outcome) return nullptr;
  return {{"result", outcome->result}, {"id", Text(outcome->id)}, {"random", outcome->random}};
}

Json Folder(StateFolder::Kind kind) {
  if (kind == StateFolder::Kind::kCopy) return nullptr;
  return kind == StateFolder::Kind::kCommon ? "common" : "user";
}

Json Record(const std::optional<RecordSummary>& record) {
  if (!record) return nullptr;
  Json parts = Json::array();
  for (const std::string& part : record->parts) parts.push_back(Text(part));
  return {{"date", Date(record->date)},
          {"compared_from", Date(record->compared_from)},
          {"folder", Folder(record->folder)},
          {"path", Text(record->path)},
          {"type", record->type},
          {"id", Text(record->id)},
          {"format", Text(record->format)},
          {"parts", parts},
          {"trailing_bytes", record->trailing_bytes}};
}

Json Parts(const std::vector<Part>& parts) {
  Json array = Json::array();
  for (const Part& part : parts) {
    array.push_back({{"name", part.names.size() == 1 ? TextOf(part.names[0]) : "unnamed"},
                     {"stored", Text(part.stored)},
                     {"present", Text(part.present)},
                     {"state", TextOf(part.state)}});
  }
  return array;
}

Json Warnings(const std::vector<Warning>& warnings) {
  Json array = Json::array();
  for (const auto& [code, text] : warnings) array.push_back({{"code", code}, {"text", Text(text)}});
  return array;
}

Json Differences(const std::vector<Difference>& differences) {
  Json array = Json::array();
  for (const auto& [what, kept, present] : differences) {
    array.push_back({{"what", what}, {"kept", Text(kept)}, {"present", Text(present)}});
  }
  return array;
}

Json Changes(const std::vector<SimulatedChange>& changes) {
  Json array = Json::array();
  for (const auto& [change, text] : changes) {
    array.push_back({{"change", Text(change)}, {"text", Text(text)}});
  }
  return array;
}

std::string Padded(std::int64_t number, std::size_t width) {
  const std::string digits = std::to_string(number);
  return std::string(width - std::min(width, digits.size()), '0') + digits;
}

}  // namespace

std::string ToJson(const Explanation& explanation) {
  const char* verdict = TextOf(explanation.verdict);
  Json object = {
      {"schema", kSchema},
      {"command", explanation.simulated ? "simulate" : "explain"},
      {"verdict", verdict != nullptr ? Json(verdict) : Json(nullptr)},
      {"sentence", Text(explanation.sentence)},
      {"advice", Text(explanation.advice)},
      {"situation", explanation.situation ? Json(TextOf(*explanation.situation)) : Json(nullptr)},
      {"id", Text(explanation.id)},
      {"next", Outcome(explanation.next)},
      {"recheck", Outcome(explanation.recheck)},
      {"record", Record(explanation.record)},
      {"parts", Parts(explanation.parts)},
      {"agree", Number(explanation.agree)},
      {"compared", Number(explanation.compared)},
      {"needed", Number(explanation.needed)},
      {"changes_left", Number(explanation.changes_left)},
      {"warnings", Warnings(explanation.warnings)}};
  if (explanation.against) object["against"] = Differences(*explanation.against);
  if (explanation.simulated) object["changes"] = Changes(*explanation.simulated);
  return object.dump(2);
}

std::string UtcText(std::int64_t seconds) {
  if (seconds < kFirstSecond || seconds > kLastSecond) return {};
  const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  return Padded(static_cast<int>(date.year()), 4) + "-" +
         Padded(static_cast<int>(static_cast<unsigned>(date.month())), 2) + "-" +
         Padded(static_cast<int>(static_cast<unsigned>(date.day())), 2) + "T" +
         Padded(clock.hours().count(), 2) + ":" + Padded(clock.minutes().count(), 2) + ":" +
         Padded(clock.seconds().count(), 2) + "Z";
}

bool ParseUtcText(const std::string& text, std::int64_t& seconds) {
  constexpr std::size_t kLength = 20;
  constexpr std::array<std::size_t, 6> kPlaces = {0, 5, 8, 11, 14, 17};
  std::array<int, kPlaces.size()> numbers = {};
  if (text.size() != kLength) return false;
  for (std::size_t i = 0; i < kPlaces.size(); ++i) {
    const char* begin = text.data() + kPlaces[i];
    if (std::from_chars(begin, text.data() + kLength, numbers[i]).ptr == begin) return false;
  }
  const auto date = std::chrono::year(numbers[0]) / numbers[1] / numbers[2];
  if (!date.ok()) return false;
  const std::chrono::sys_seconds time =
      std::chrono::sys_days{date} + std::chrono::hours(numbers[3]) +
      std::chrono::minutes(numbers[4]) + std::chrono::seconds(numbers[5]);
  seconds = time.time_since_epoch().count();
  return UtcText(seconds) == text;
}

}  // namespace system_info
