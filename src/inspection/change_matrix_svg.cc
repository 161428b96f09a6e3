// ToSvg of change_matrix.h.

#include <algorithm>
#include <array>

#include "inspection/change_matrix.h"
#include "inspection/shown_text.h"
#include "inspection/wrapped_text.h"

namespace system_info {
namespace {

constexpr int kCellWidth = 68;
constexpr int kCellHeight = 34;
constexpr int kMarginX = 28;
constexpr int kLabelWidth = 150;
constexpr int kLineHeight = 20;
constexpr int kLeastWidth = 620;
constexpr std::size_t kLineLength = 88;  // In characters; what fits into the least width.

struct Look {
  const char* fill;
  const char* ink;
  const char* meaning;
};

// By fate. Each cell also has its word in it, for those who do not see the colours.
constexpr std::array<Look, 3> kLooks = {{{"#d3efd8", "#14532d", "the id stays"},
                                         {"#fbd9d3", "#8a1c0c", "another id takes its place"},
                                         {"#e4e4e7", "#3f3f46", "the call gives no id"}}};

const Look& LookOf(Fate fate) { return kLooks.at(static_cast<std::size_t>(fate)); }

// As text or an attribute of XML.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : Harmless(text)) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string Attribute(const char* name, int value) {
  return std::string(" ") + name + "=\"" + std::to_string(value) + "\"";
}

std::string Rectangle(int x, int y, int width, int height, const std::string& style) {
  return "<rect" + Attribute("x", x) + Attribute("y", y) + Attribute("width", width) +
         Attribute("height", height) + " " + style + "/>\n";
}

std::string Text(int x, int y, const std::string& style, const std::string& text) {
  return "<text" + Attribute("x", x) + Attribute("y", y) + (style.empty() ? "" : " " + style) +
         ">" + Escaped(text) + "</text>\n";
}

class Drawing {
 public:
  explicit Drawing(const ChangeMatrix& matrix)
      : matrix_(matrix),
        left_(kMarginX + kLabelWidth),
        width_(std::max(kLeastWidth, left_ + kMarginX + Extent() * kCellWidth)) {}

  std::string Draw(const std::string& date) {
    DrawHead();
    DrawColumnNames();
    for (std::size_t row = 0; row < matrix_.cells.size(); ++row) DrawRow(row);
    DrawLegend(date);
    const std::string size = Attribute("width", width_) + Attribute("height", y_);
    return "<svg xmlns=\"http://www.w3.org/2000/svg\"" + size + " viewBox=\"0 0 " +
           std::to_string(width_) + " " + std::to_string(y_) +
           "\" role=\"img\" font-family=\"Segoe UI, Helvetica, Arial, sans-serif\" "
           "font-size=\"14\" fill=\"#18181b\">\n<title>" +
           Escaped(kTitle) + "</title>\n" + Rectangle(0, 0, width_, y_, "fill=\"#ffffff\"") +
           body_ + "</svg>\n";
  }

 private:
  static constexpr const char* kTitle = "What the device id survives";
  static constexpr const char* kSmall = R"(font-size="12" fill="#52525b")";
  static constexpr const char* kBold = "font-weight=\"600\"";
  static constexpr const char* kCentred = "text-anchor=\"middle\"";

  int Extent() const { return static_cast<int>(matrix_.cells.size()); }
  int X(std::size_t change) const { return left_ + static_cast<int>(change) * kCellWidth; }

  void AddLines(const std::string& text) {
    for (const std::string& line : Wrap(Harmless(text), kLineLength)) {
      body_ += Text(kMarginX, y_, kSmall, line);
      y_ += kLineHeight;
    }
  }

  void DrawHead() {
    body_ += Text(kMarginX, 42, R"(font-size="20" font-weight="600")", kTitle);
    y_ = 68;
    if (matrix_.id) {
      body_ += Text(kMarginX, y_, "font-family=\"Consolas, Menlo, monospace\"", *matrix_.id);
      y_ += kLineHeight + 4;
    }
    AddLines(
        "Each change of one part (framed) and each pair of changes, as the next comparison "
        "finds them.");
    if (matrix_.after_first_call) AddLines("The changes are those after the first call.");
    for (const auto& [change, effect] :
         matrix_.unchanged.simulated.value_or(std::vector<SimulatedChange>())) {
      std::string line = "With ";
      AddLines(line.append(change).append(": ").append(effect).append("."));
    }
    y_ += kLineHeight;
  }

  void DrawColumnNames() {
    for (std::size_t change = 0; change < matrix_.cells.size(); ++change) {
      const int centre = X(change) + kCellWidth / 2;
      const char* part = TextOf(matrix_.parts[change / 2]);
      if (change % 2 == 0) {
        body_ += Text(X(change) + kCellWidth, y_, std::string(kCentred) + " " + kBold, part);
      }
      body_ += Text(centre, y_ + kLineHeight, std::string(kCentred) + " " + kSmall, Kind(change));
    }
    y_ += kLineHeight + 10;
  }

  void DrawRow(std::size_t row) {
    const int baseline = y_ + kCellHeight / 2 + 5;
    if (row % 2 == 0) {
      body_ += Rectangle(kMarginX, y_, X(matrix_.cells.size()) - kMarginX, 1, "fill=\"#d4d4d8\"");
      body_ += Text(kMarginX, baseline, kBold, TextOf(matrix_.parts[row / 2]));
    }
    body_ += Text(kMarginX + 84, baseline, kSmall, Kind(row));
    for (std::size_t column = 0; column < matrix_.cells.size(); ++column) {
      const auto& cell = matrix_.cells[row][column];
      if (cell) DrawCell(X(column), cell->fate, row == column);
    }
    y_ += kCellHeight;
  }

  void DrawCell(int x, Fate fate, bool single) {
    const Look& look = LookOf(fate);
    const std::string frame =
        single ? std::string(" stroke=\"") + look.ink + R"(" stroke-width="1.5")" : "";
    body_ += Rectangle(x + 3, y_ + 3, kCellWidth - 6, kCellHeight - 6,
                       std::string(R"(rx="4" fill=")") + look.fill + "\"" + frame);
    body_ += Text(x + kCellWidth / 2, y_ + kCellHeight / 2 + 5,
                  std::string(kCentred) + " fill=\"" + look.ink + "\"", TextOf(fate));
  }

  void DrawLegend(const std::string& date) {
    y_ += kLineHeight;
    int x = kMarginX;
    for (const Fate fate : {Fate::kKept, Fate::kLost, Fate::kNoId}) {
      const Look& look = LookOf(fate);
      body_ += Rectangle(x, y_ - 11, 14, 14, std::string(R"(rx="3" fill=")") + look.fill + "\"");
      body_ += Text(x + 20, y_, kSmall, std::string(TextOf(fate)) + ": " + look.meaning);
      x += fate == Fate::kKept ? 150 : 220;
    }
    y_ += kLineHeight + 4;
    AddLines("deviceid simulate --all, format " + matrix_.format + ", " + date +
             ". Nothing on the machine was changed.");
    y_ += 4;
  }

  static const char* Kind(std::size_t change) { return change % 2 == 0 ? "replace" : "gone"; }

  const ChangeMatrix& matrix_;
  int left_;
  int width_;
  int y_ = 0;
  std::string body_;
};

}  // namespace

std::string ToSvg(const ChangeMatrix& matrix, const std::string& date) {
  return Drawing(matrix).Draw(date);
}

}  // namespace system_info
