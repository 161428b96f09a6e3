#include "inspection/change_matrix.h"

#include <array>
#include <nlohmann/json.hpp>

#include "inspection/explanation_json.h"
#include "inspection/explanation_text.h"
#include "inspection/shown_text.h"
#include "inspection/wrapped_text.h"

namespace system_info {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<const char*, 3> kFateTexts = {"kept", "lost", "no id"};

constexpr std::size_t kReplaceWidth = 8;
constexpr std::size_t kGoneWidth = 6;
constexpr std::size_t kRowNameWidth = kMargin + 18;

std::size_t WidthOf(std::size_t change) { return change % 2 == 0 ? kReplaceWidth : kGoneWidth; }

const char* KindOf(std::size_t change) { return change % 2 == 0 ? "replace" : "gone"; }

void AddRow(std::string& text, const ChangeMatrix& matrix, std::size_t row) {
  const std::string part = row % 2 == 0 ? TextOf(matrix.parts[row / 2]) : "";
  const std::string margin(kMargin, ' ');
  std::string line = Padded(margin + Padded(part, kNameWidth + kGap) + KindOf(row), kRowNameWidth);
  for (std::size_t column = 0; column < matrix.cells.size(); ++column) {
    const auto& cell = matrix.cells[row][column];
    line += Padded(cell ? TextOf(cell->fate) : "-", WidthOf(column));
  }
  AddLine(text, line);
}

Json Outcome(const ChangeMatrix& matrix, std::size_t row, std::size_t column) {
  Json changes = Json::array({WordOf(matrix, row)});
  if (column != row) changes.push_back(WordOf(matrix, column));
  const auto& [fate, call] = *matrix.cells[row][column];
  return {{"changes", changes},
          {"fate", fate == Fate::kNoId ? "none" : TextOf(fate)},
          {"result", call.result},
          {"id", call.id ? Json(*call.id) : Json(nullptr)},
          {"random", call.random}};
}

}  // namespace

const char* TextOf(Fate fate) { return kFateTexts.at(static_cast<std::size_t>(fate)); }

std::string WordOf(const ChangeMatrix& matrix, std::size_t change) {
  return std::string(KindOf(change)) + "=" + TextOf(matrix.parts[change / 2]);
}

std::string ToText(const ChangeMatrix& matrix) {
  std::string text;
  AddChanges(
      text, matrix.unchanged.simulated.value_or(std::vector<SimulatedChange>()),
      "Each change of one part and each pair of changes, as the next comparison finds them. ");
  std::string parts(kRowNameWidth, ' ');
  std::string kinds(kRowNameWidth, ' ');
  for (std::size_t change = 0; change < matrix.cells.size(); ++change) {
    const std::string name = change % 2 == 0 ? TextOf(matrix.parts[change / 2]) : "";
    parts += change % 2 == 0 ? Padded(name, kReplaceWidth + kGoneWidth) : "";
    kinds += Padded(KindOf(change), WidthOf(change));
  }
  AddLine(text, parts);
  AddLine(text, kinds);
  for (std::size_t row = 0; row < matrix.cells.size(); ++row) AddRow(text, matrix, row);
  text += "\n";
  if (matrix.id) AddField(text, "id", Harmless(*matrix.id));
  AddField(text, "now", Harmless(matrix.unchanged.sentence));
  if (matrix.after_first_call) {
    AddField(text, "note", "The changes are those after the first call, which stores the id.");
  }
  return text;
}

std::string ToJson(const ChangeMatrix& matrix) {
  Json outcomes = Json::array();
  for (std::size_t row = 0; row < matrix.cells.size(); ++row) {
    for (std::size_t column = row; column < matrix.cells.size(); ++column) {
      if (matrix.cells[row][column]) outcomes.push_back(Outcome(matrix, row, column));
    }
  }
  Json unchanged = Json::parse(ToJson(matrix.unchanged));
  const Json object = {{"schema", 1},
                       {"command", "simulate"},
                       {"format", matrix.format},
                       {"id", matrix.id ? Json(ToUtf8(*matrix.id)) : Json(nullptr)},
                       {"after_first_call", matrix.after_first_call},
                       {"outcomes", outcomes},
                       {"unchanged", unchanged}};
  return object.dump(2);
}

}  // namespace system_info
