#include "study/scripts.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "study/population.h"
#include "study/rules.h"

namespace system_info {
namespace {

constexpr std::array kParts = {"volume", "product", "board", "network"};

// Gives part `index` another value, or takes it away.
void Change(Computer& computer, std::size_t index, bool gone = false) {
  if (index == 3 && gone) return computer.adapters.clear();
  if (index == 3) {
    computer.adapters.at(0).address ^= 1;
    return;
  }
  const std::array values = {&computer.drive.volume, &computer.product, &computer.board};
  std::string& text = values.at(index)->text;
  text = gone ? "" : text + "x";
}

using Script = std::function<void(Computer&, Watch&)>;

// Whether the id of an ordinary PC, whose product says `product`, survives `script`.
bool Survives(PlayedLibrary& library, const Script& script, const char* product = "PF0XYZ") {
  Computer computer = OrdinaryComputer(Draws(1));
  computer.product.text = product;
  Watch watch(library);
  watch.Look(computer, 0);
  script(computer, watch);
  watch.Look(computer, 100);
  return watch.Keeps(kFormat20);
}

int CountPairs(PlayedLibrary& library, bool in_turn) {
  int kept = 0;
  for (std::size_t one = 0; one < kParts.size(); ++one) {
    for (std::size_t other = one + 1; other < kParts.size(); ++other) {
      kept += Survives(library, [&](Computer& computer, Watch& watch) {
        Change(computer, one);
        for (int day = 10; in_turn && day <= 30; day += 10) watch.Look(computer, day);
        Change(computer, other);
      });
    }
  }
  return kept;
}

}  // namespace

nlohmann::json PlayScripts() {
  PlayedLibrary library;
  nlohmann::json kept;
  for (std::size_t part = 0; part < kParts.size(); ++part) {
    for (const bool gone : {false, true}) {
      kept[gone ? "gone" : "changed"][kParts.at(part)] =
          Survives(library, [&](Computer& computer, Watch&) { Change(computer, part, gone); });
    }
  }
  kept["together"] = CountPairs(library, false);
  kept["in_turn"] = CountPairs(library, true);
  for (const char* text : {"PF0XYZ", "Default string", kFilteredPlaceholder}) {
    int others = 0;
    for (const std::size_t part : {0U, 2U, 3U}) {
      others += Survives(
          library, [&](Computer& computer, Watch&) { Change(computer, part); }, text);
    }
    kept["placeholders"][text] = others;
  }
  return kept;
}

}  // namespace system_info
