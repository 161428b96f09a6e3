#include "inspection/explanation_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "inspection/shown_text.h"
#include "inspection/wrapped_text.h"

namespace system_info {
namespace {

constexpr std::size_t kValueWidth = 19;  // Of most values.
constexpr std::size_t kStateWidth = 7;
constexpr std::size_t kMaxLines = 3;  // Of one value.

constexpr const char* kGreen = "\x1b[1;32m";
constexpr const char* kYellow = "\x1b[1;33m";
constexpr const char* kRed = "\x1b[1;31m";
constexpr const char* kPlain = "\x1b[0m";

std::string Coloured(const std::string& text, const char* colour, bool wanted) {
  return wanted ? colour + text + kPlain : text;
}

const char* ColourOf(const Explanation& explanation) {
  if (explanation.status == 0 && !explanation.older_id) return kGreen;
  return explanation.status < 20 ? kYellow : kRed;
}

// One value in its column, which does not break at blanks.
std::vector<std::string> WrapValue(const std::optional<std::string>& value, std::size_t width) {
  const std::string text = value ? Harmless(*value) : "-";
  std::vector<std::string> lines;
  for (std::string_view rest = text; !rest.empty() && lines.size() < kMaxLines;) {
    const std::size_t fitting = BytesOf(rest, width);
    lines.emplace_back(rest.substr(0, fitting));
    rest.remove_prefix(fitting);
    if (lines.size() == kMaxLines && !rest.empty()) {
      lines.back().erase(BytesOf(lines.back(), width - 3));
      lines.back() += "...";
    }
  }
  return lines;
}

std::string Cell(const std::vector<std::string>& lines, std::size_t line, std::size_t width) {
  return Padded(line < lines.size() ? lines[line] : "", width + kGap);
}

// Which columns have anything to show, and how wide they are.
struct PartColumns {
  bool stored = false;
  bool present = false;
  bool state = false;
  std::size_t name_width = kNameWidth;
  std::size_t value_width = kValueWidth;
};

PartColumns ChooseColumns(const std::vector<Part>& parts) {
  PartColumns columns;
  for (const Part& part : parts) {
    columns.stored |= part.stored.has_value();
    columns.present |= part.present.has_value();
    columns.state |= part.state != PartState::kUnknown;
    columns.name_width = std::max(columns.name_width, NameOf(part).size());
    for (const auto& value : {part.stored, part.present}) {
      columns.value_width =
          std::max(columns.value_width, CountCharacters(Harmless(value.value_or(""))));
    }
  }
  const std::size_t taken = kMargin + columns.name_width + 3 * kGap + kStateWidth;
  const std::size_t shared_by = columns.stored && columns.present ? 2 : 1;
  columns.value_width = std::min(columns.value_width, (kWidth - taken) / shared_by);
  return columns;
}

void AddPart(std::string& text, const Part& part, const PartColumns& columns, bool colour) {
  const std::size_t width = columns.value_width;
  const auto stored = WrapValue(part.stored, width);
  const auto present = WrapValue(part.present, width);
  const bool plain = part.state == PartState::kSame || part.state == PartState::kUnknown;
  const std::string state = Coloured(TextOf(part.state), kYellow, colour && !plain);
  std::string name = NameOf(part);
  for (std::size_t i = 0; i == 0 || i < std::max(stored.size(), present.size()); ++i) {
    AddLine(text, std::string(kMargin, ' ') + Padded(name, columns.name_width + kGap) +
                      (columns.stored ? Cell(stored, i, width) : "") +
                      (columns.present ? Cell(present, i, width) : "") +
                      (columns.state && i == 0 ? state : ""));
    name.clear();
  }
}

void AddParts(std::string& text, const Explanation& explanation, bool colour) {
  const PartColumns columns = ChooseColumns(explanation.parts);
  const std::string present = explanation.simulated ? "simulated" : "now";
  AddLine(text, std::string(kMargin, ' ') + Padded("part", columns.name_width + kGap) +
                    (columns.stored ? Cell({"when stored"}, 0, columns.value_width) : "") +
                    (columns.present ? present : ""));
  for (const Part& part : explanation.parts) AddPart(text, part, columns, colour);
  text += "\n";
}

std::string DescribeStored(const Explanation& explanation, const TextStyle& style) {
  constexpr std::array<const char*, 3> kFor = {", for all accounts", ", for this account", ""};
  const std::string date = explanation.record ? style.date(explanation.record->date) + " " : "";
  return date + "in " + explanation.id_folder +
         kFor[static_cast<std::size_t>(explanation.id_folder_kind)];
}

std::string DescribeOutcome(const CallOutcome& outcome) {
  if (outcome.random) return "a random id";
  return outcome.id ? *outcome.id : "no id, but result " + std::to_string(outcome.result);
}

// What the next call does, and from when on the record is compared.
std::string DescribeNext(const Explanation& explanation, const TextStyle& style) {
  std::string text;
  const auto& record = explanation.record;
  const bool comparable = !explanation.due || explanation.compared.value_or(0) > 0;
  const bool known = explanation.situation == Situation::kKnownMachine;
  if (record && known && explanation.verdict != Verdict::kNotCompared && comparable) {
    text = explanation.due ? "compared by the next call"
                           : "compared again from " + style.date(record->compared_from) + " on";
    if (explanation.compared.value_or(0) > 0) {
      text += "; " + std::to_string(*explanation.needed) + " of " +
              std::to_string(*explanation.compared) + " have to agree, " +
              std::to_string(*explanation.agree) + (*explanation.agree == 1 ? " does" : " do");
    }
  }
  const auto& outcome = explanation.due ? explanation.next : explanation.recheck;
  const bool told = outcome && (outcome->id != explanation.id || !outcome->id);
  if (told) text += (text.empty() ? "" : "; then ") + DescribeOutcome(*outcome);
  return text.empty() ? "the same id" : text;
}

std::string DescribeDifference(const Difference& difference) {
  return difference.what + ": in the copy " + difference.kept.value_or("nothing") + ", here " +
         difference.present.value_or("nothing");
}

}  // namespace

void AddChanges(std::string& text, const std::vector<SimulatedChange>& changes,
                const std::string& then) {
  std::string label = "SIMULATED";
  for (const auto& [change, effect] : changes) {
    std::string sentence = change;
    AddHeadline(text, label, nullptr, Harmless(sentence.append(": ").append(effect).append(".")));
    label.assign(label.size(), ' ');
  }
  AddHeadline(text, label, nullptr, then + "Nothing is stored, and this machine stays as it is.");
  text += "\n";
}

std::string ToText(const Explanation& explanation, const TextStyle& style) {
  std::string text;
  if (explanation.simulated) AddChanges(text, *explanation.simulated, "");
  const bool older_id = explanation.older_id && explanation.status == 0;
  const std::string label =
      older_id ? "OLDER ID" : LabelOf(explanation.verdict, explanation.status);
  AddHeadline(text, label, style.colour ? ColourOf(explanation) : nullptr,
              Harmless(explanation.sentence));
  text += "\n";

  if (!explanation.parts.empty()) AddParts(text, explanation, style.colour);
  if (explanation.id) AddField(text, "id", Harmless(*explanation.id));
  if (!explanation.id_folder.empty())
    AddField(text, "stored", Harmless(DescribeStored(explanation, style)));
  if (explanation.next) AddField(text, "next", Harmless(DescribeNext(explanation, style)));
  AddField(text, "do", Harmless(explanation.advice.empty() ? "nothing" : explanation.advice));
  for (const Difference& difference : explanation.against.value_or(std::vector<Difference>())) {
    AddField(text, "differs", Harmless(DescribeDifference(difference)));
  }
  for (const Warning& warning : explanation.warnings)
    AddField(text, "note", Harmless(warning.text));
  return text;
}

}  // namespace system_info
