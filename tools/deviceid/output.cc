#include "tools/deviceid/output.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iostream>
#include <numeric>

#include "platform/console.h"

namespace deviceid {
namespace {

std::string Folded(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// How many characters have to be inserted, removed, replaced or exchanged with their neighbour to
// make one text of the other.
std::size_t EditDistance(const std::string& left, const std::string& right) {
  std::vector<std::vector<std::size_t>> rows(left.size() + 1,
                                             std::vector<std::size_t>(right.size() + 1));
  std::iota(rows[0].begin(), rows[0].end(), 0);
  for (std::size_t i = 1; i <= left.size(); ++i) {
    rows[i][0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const std::size_t replaced = rows[i - 1][j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
      rows[i][j] = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, replaced});
      const bool exchanged =
          i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1];
      if (exchanged) rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
    }
  }
  return rows[left.size()][right.size()];
}

}  // namespace

void Complain(const std::string& text) {
  std::string line = text;
  // What a user typed or a log says may hold line breaks.
  std::replace_if(
      line.begin(), line.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; }, ' ');
  std::cerr << "deviceid: " << line << '\n';
}

int FinishOutput(int status) {
  if (!std::cout.flush()) {
    Complain("cannot write to standard output");
    return kWriteFailed;
  }
  return std::cerr.flush() ? status : kWriteFailed;
}

bool WantsColour() {
  const char* off = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  const bool dumb = terminal != nullptr && std::string(terminal) == "dumb";
  return system_info::OutputIsTerminal() && (off == nullptr || *off == '\0') && !dumb;
}

std::string Suggestion(const std::string& word, const std::vector<std::string>& names) {
  const std::string* nearest = nullptr;
  bool unsure = false;
  std::size_t least = std::max<std::size_t>(word.size() / 3, 2) + 2;
  for (const std::string& name : names) {
    // What a name begins with is nearer to it than any misspelling.
    const bool begins = !word.empty() && Folded(name).rfind(Folded(word), 0) == 0;
    const std::size_t distance = begins ? 1 : EditDistance(Folded(word), Folded(name)) + 1;
    if (distance > least || distance >= name.size()) continue;
    unsure = distance == least && nearest != nullptr && *nearest != name;
    if (distance == least && nearest == nullptr) continue;
    least = distance;
    nearest = &name;
  }
  return nearest == nullptr || unsure ? "" : ", did you mean \"" + *nearest + "\"?";
}

std::string SuggestionOrAll(const std::string& word, const std::vector<std::string>& names) {
  std::string text = Suggestion(word, names);
  if (!text.empty()) return text;
  for (const std::string& name : names) text += (text.empty() ? "; there are " : ", ") + name;
  return text;
}

}  // namespace deviceid
