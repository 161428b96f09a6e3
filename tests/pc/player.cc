// Reads steps from standard input, one a line with tabs between its words, plays them, and answers
// each with one line. Texts of any kind go in and out as hexadecimal bytes.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "pc/pc.h"
#include "support/foreseen_call.h"
#include "tools/deviceid/machine_state.h"
#include "tools/deviceid/state_folders.h"
#include "values/format_version.h"

namespace {

namespace fs = std::filesystem;

std::string Hex(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += "0123456789abcdef"[(byte >> 4) & 15];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

std::string Bytes(const std::string& hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

// "common", "user", "old-common" and "old-user" are the library's folders, and "/NAME" is in them.
fs::path Path(const std::string& text) {
  const std::string folder = text.substr(0, text.find('/'));
  const std::string root = pc::Root(folder.ends_with("common"));
  return root + (folder.starts_with("old-") ? "/Fennel" : "/BrindleQuayWorks") +
         text.substr(folder.size());
}

// NAME=BYTES of all files in those folders.
std::string Files() {
  std::string text;
  for (const std::string folder : {"common", "user", "old-common", "old-user"}) {
    if (!fs::is_directory(Path(folder))) continue;
    for (const auto& entry : fs::directory_iterator(Path(folder))) {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string bytes(std::istreambuf_iterator<char>(file), {});
      text += '\t' + folder + '/' + entry.path().filename().string() + '=' + Hex(bytes);
    }
  }
  return text;
}

using system_info::ForeseenCall;
using system_info::PlayedExport;

// The call behind a name of an export; "ex" takes formats as numbers.
ForeseenCall ForeseenOf(const std::vector<std::string>& step) {
  if (step[1] == "recheck") return {PlayedExport::kRecheck, step[2], 0};
  if (step[1] == "ex") {
    const char* format = system_info::VersionText(std::stoi(step[2]));
    return {PlayedExport::kGet, format != nullptr ? format : "", 0};
  }
  const auto flags = static_cast<uint32_t>(std::stoul(step[3]));
  return {step[1] == "mod" ? PlayedExport::kMod : PlayedExport::kGet, step[2], flags};
}

int Make(const std::vector<std::string>& step, std::string& id, std::string& log) {
  const auto id_size = static_cast<uint32_t>(id.size()), size = static_cast<uint32_t>(log.size());
  const pc::Library library = pc::TheLibrary();
  const char* version = step[2].c_str();
  pc::StartCounting();
  if (step[1] == "get") return library.get(id.data(), id_size, version, log.data(), size);
  if (step[1] == "recheck") return library.recheck(id.data(), id_size, version, log.data(), size);
  if (step[1] == "ex") {
    return library.ex(id.data(), id_size, std::stoi(step[2]), log.data(), size);
  }
  return library.mod(id.data(), id_size, version, log.data(), size,
                     static_cast<uint32_t>(std::stoul(step[3])));
}

// Every call is played before it is made. The result of one that came out otherwise is -1.
int MakeForeseen(const std::vector<std::string>& step, std::string& id, std::string& log) {
  if (!pc::IsForeseeable()) return Make(step, id, log);
  const auto hardware = system_info::ReadThisMachine();
  int result = -1;
  const auto make = [&] {
    result = Make(step, id, log);
    system_info::MadeCall made = {result, id.c_str(), std::nullopt};
    if (log[0] != '#') made.log = log.c_str();
    return made;
  };
  std::vector<std::string> folders;
  for (const std::string folder : {"common", "user", "old-common", "old-user"}) {
    folders.push_back(Path(folder).string());
  }
  pc::StartCounting();
  const std::string differences = DifferencesOf(ForeseenOf(step), *hardware, folders, make);
  std::cerr << differences;
  return differences.empty() ? result : -1;
}

std::string last_log;

// call NAME VERSION FLAGS gives: result, times that the hardware was collected, id, log, files.
std::string Call(const std::vector<std::string>& step) {
  std::string id(64, 0), log(1 << 16, 0);
  id[0] = log[0] = '#';
  std::ostringstream answer;
  answer << MakeForeseen(step, id, log) << '\t' << pc::CountCollections() << '\t'
         << Hex(id.substr(0, id.find('\0'))) << '\t' << Hex(log.substr(0, log.find('\0')))
         << Files();
  last_log = log.c_str();
  return answer.str();
}

system_info::Explanation ExplainSource(const std::string& source) {
  if (source == "log") return system_info::ExplainLog(last_log);
  if (source == "copy")
    return ExplainFolder(deviceid::ReadKeptFolder(Path("common").make_preferred()));
  const auto hardware = system_info::ReadThisMachine();
  return ExplainMachine(deviceid::LookAtMachine("2.0", *hardware));
}

// explain SOURCE gives: VERDICT STATUS, PART STATE, ...: SENTENCE Do: ADVICE
std::string Explain(const std::string& source) {
  const system_info::Explanation told = ExplainSource(source);
  const char* verdict = TextOf(told.verdict);
  std::string text = (verdict ? verdict : "null") + (" " + std::to_string(told.status));
  for (const auto& part : told.parts) {
    const std::string state = TextOf(part.state);
    if (state != "same" && state != "unknown") text += ", " + NameOf(part) + " " + state;
  }
  text += ": " + told.sentence + (told.advice.empty() ? "" : " Do: " + told.advice);
  for (const std::string folder : {"common", "user"}) {
    const std::string path = Path(folder).make_preferred().string();
    while (text.find(path) != text.npos) text.replace(text.find(path), path.size(), folder);
  }
  return text;
}

std::string Play(const std::vector<std::string>& step) {
  if (step[0] == "call") return Call(step);
  if (step[0] == "explain") return Explain(step[1]);
  if (step[0] == "renew") return pc::Renew(), "";
  if (step[0] == "version") return pc::TheLibrary().version();
  if (step[0] == "set") return pc::SetPart(step[1], Bytes(step.size() > 2 ? step[2] : "")), "";
  if (step[0] == "apartment") return pc::SetApartment(step[1]);
  if (step[0] == "remove") return fs::remove_all(Path(step[1])), "";
  if (step[0] == "processes") {
    return pc::RunProcesses(std::stoi(step[1]), std::stoi(step[2]), {step.begin() + 3, step.end()});
  }
  if (step[0] != "write") return pc::PlayOther(step);
  fs::create_directories(Path(step[1]).parent_path());
  std::ofstream(Path(step[1]), std::ios::binary) << Bytes(step.size() > 2 ? step[2] : "");
  return "";
}

}  // namespace

int pc::CountFailures(const std::vector<std::string>& task) {
  int failures = 0;
  for (int i = 0; i < std::stoi(task[0]); ++i) {
    char id[64] = "";
    const int result = TheLibrary().get(id, sizeof(id), "2.0", nullptr, 99);
    const bool no_id_yet = result == 4 && task[1] == "new";
    if (!no_id_yet && (result != 0 || id != task[2])) ++failures;
  }
  return failures;
}

int main(int argc, char** argv) {
  if (argc > 1) return std::stoi(pc::PlayOther({argv + 1, argv + argc}));
  for (std::string line; std::getline(std::cin, line);) {
    std::vector<std::string> step;
    std::istringstream words(line);
    for (std::string word; std::getline(words, word, '\t');) step.push_back(word);
    std::cout << Play(step) << std::endl;
  }
}
