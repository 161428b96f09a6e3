// Reads steps from standard input, one a line with tabs between its words, plays them, and answers
// each with one line. Texts of any kind go in and out as hexadecimal bytes. Ends with 2 at a step
// that it does not know.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>

#include "inspection/explanation_json.h"
#include "pc/pc.h"
#include "support/clock.h"
#include "support/foreseen_call.h"
#include "tools/deviceid/machine_state.h"
#include "tools/deviceid/state_folders.h"
#include "values/format_version.h"

namespace {

namespace fs = std::filesystem;
using pc::Arguments;
using system_info::ForeseenCall;
using system_info::MadeCall;
using system_info::PlayedExport;

constexpr const char* kFolders[] = {"common", "user", "old-common", "old-user"};
constexpr char kUntouched = '#';

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
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

// Of one of the folders above, or of "/NAME" in it.
fs::path Path(const std::string& text) {
  const std::string folder = text.substr(0, text.find('/'));
  if (std::find(std::begin(kFolders), std::end(kFolders), folder) == std::end(kFolders)) {
    throw std::invalid_argument("no such folder: " + folder);
  }
  const std::string root = pc::Root(folder.ends_with("common"));
  return root + (folder.starts_with("old-") ? "/Fennel" : "/BrindleQuayWorks") +
         text.substr(folder.size());
}

// NAME=BYTES of all files in those folders.
std::string Files() {
  std::string text;
  for (const std::string folder : kFolders) {
    if (!fs::is_directory(Path(folder))) continue;
    for (const auto& entry : fs::directory_iterator(Path(folder))) {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string bytes(std::istreambuf_iterator<char>(file), {});
      text += '\t' + folder + '/' + entry.path().filename().string() + '=' + Hex(bytes);
    }
  }
  return text;
}

// A call that a step asks for: NAME FORMAT FLAGS.
struct Call {
  std::string name;
  std::string format;  // Of GetHardwareIdEx, a number.
  std::uint32_t flags;
};

ForeseenCall ForeseenOf(const Call& call) {
  if (call.name == "RecheckHardwareId") return {PlayedExport::kRecheck, call.format, 0};
  if (call.name == "GetHardwareIdMod") return {PlayedExport::kMod, call.format, call.flags};
  if (call.name == "GetHardwareId") return {PlayedExport::kGet, call.format, 0};
  const char* format = system_info::VersionText(std::stoi(call.format));
  return {PlayedExport::kGet, format != nullptr ? format : "", 0};
}

int MakeWithBuffers(const Call& call, char* id, std::uint32_t id_size, char* log,
                    std::uint32_t log_size) {
  const pc::Library library = pc::TheLibrary();
  const char* format = call.format.c_str();
  if (call.name == "GetHardwareId") return library.get(id, id_size, format, log, log_size);
  if (call.name == "RecheckHardwareId") return library.recheck(id, id_size, format, log, log_size);
  if (call.name == "GetHardwareIdMod") {
    return library.mod(id, id_size, format, log, log_size, call.flags);
  }
  if (call.name != "GetHardwareIdEx") throw std::invalid_argument("no such call: " + call.name);
  return library.ex(id, id_size, std::stoi(call.format), log, log_size);
}

MadeCall Make(const Call& call) {
  char id[64] = {kUntouched};
  std::string log(1 << 16, 0);
  log[0] = kUntouched;
  pc::StartCounting();
  MadeCall made;
  made.result =
      MakeWithBuffers(call, id, sizeof(id), log.data(), static_cast<std::uint32_t>(log.size()));
  made.id = id;
  if (log[0] != kUntouched) made.log = log.c_str();
  return made;
}

// Makes a call, which is played before where it can be, and tells in `differences` what came out
// otherwise than it was played.
MadeCall MakeForeseen(const Call& call, std::string& differences) {
  if (!pc::IsForeseeable()) return Make(call);
  const auto hardware = system_info::ReadThisMachine();
  std::vector<std::string> folders;
  for (const std::string folder : kFolders) folders.push_back(Path(folder).string());
  MadeCall made;
  differences = DifferencesOf(ForeseenOf(call), *hardware, folders, [&] {
    made = Make(call);
    return made;
  });
  return made;
}

std::string last_log;

// Gives: result, times that the hardware was collected, the time before and after, whether files
// changed, what was not foreseen, id, log, files.
void PlayCall(const Arguments& arguments, std::string& answer) {
  const Call call = {arguments.at(0), arguments.at(1),
                     static_cast<std::uint32_t>(std::stoul(arguments.at(2)))};
  const std::string files_before = Files();
  const std::int64_t before = system_info::PresentSeconds();
  std::string differences;
  const MadeCall made = MakeForeseen(call, differences);
  last_log = made.log.value_or("");
  const int collections = pc::CountCollections();
  const std::string files = Files();
  std::ostringstream text;
  text << made.result << '\t' << collections << '\t' << before << '\t'
       << system_info::PresentSeconds() << '\t' << (files != files_before) << '\t'
       << Hex(differences) << '\t' << Hex(made.id) << '\t' << Hex(last_log) << files;
  answer = text.str();
}

// Of the "machine", the log of its "next" call, that of the "last" one, or the common folder as a
// "copy".
system_info::Explanation ExplainSource(const std::string& source, const std::string& format) {
  if (source == "last") return system_info::ExplainLog(last_log);
  if (source == "copy") {
    return ExplainFolder(deviceid::ReadKeptFolder(Path("common").make_preferred()));
  }
  const auto hardware = system_info::ReadThisMachine();
  if (source == "machine") return ExplainMachine(deviceid::LookAtMachine(format, *hardware));
  if (source != "next") throw std::invalid_argument("cannot explain " + source);
  return system_info::ExplainLog(PlayCall(PlayedExport::kGet, format, 0, *hardware).log);
}

// SOURCE FORMAT gives: verdict and status, each part that is not as it was, the sentence, what to
// do, the id, warnings. Keeps the JSON for explain_schema_test.py.
void Explain(const Arguments& arguments, std::string& text) {
  const auto told = ExplainSource(arguments.at(0), arguments.at(1));
  if (const char* path = std::getenv("DEVICEID_EXPLANATIONS")) {
    std::ofstream(path, std::ios::app) << ToJson(told) << ",\n";
  }
  const char* verdict = TextOf(told.verdict);
  text = verdict != nullptr ? verdict : "undecided";
  text += ", status " + std::to_string(told.status) + '\t';
  for (const system_info::Part& part : told.parts) {
    const bool plain = part.state == system_info::PartState::kSame ||
                       part.state == system_info::PartState::kUnknown;
    if (!plain) text += ", " + NameOf(part) + ' ' + TextOf(part.state);
  }
  text += '\t' + told.sentence + "\tDo: " + told.advice + "\tId: " + told.id.value_or("none");
  for (const system_info::Warning& warning : told.warnings) {
    text += "\tWarning: " + warning.code + "\tNote: " + warning.text;
  }
  for (const std::string folder : {"common", "user"}) {
    const std::string path = Path(folder).make_preferred().string();
    for (std::size_t at = text.find(path); at != std::string::npos; at = text.find(path)) {
      text.replace(at, path.size(), folder);
    }
  }
}

void Write(const Arguments& arguments, std::string& /*none*/) {
  const fs::path path = Path(arguments.at(0));
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << Bytes(arguments.size() > 1 ? arguments[1] : "");
}

void RunProcesses(const Arguments& arguments, std::string& answer) {
  answer = std::to_string(pc::RunProcesses(std::stoi(arguments.at(0)), std::stoi(arguments.at(1)),
                                           {arguments.begin() + 2, arguments.end()}));
}

const std::map<std::string, pc::Verb> kVerbs = {
    {"call", PlayCall},
    {"explain", Explain},
    {"write", Write},
    {"processes", RunProcesses},
    {"remove", [](const Arguments& arguments, auto&) { fs::remove_all(Path(arguments.at(0))); }},
    {"folder", [](auto& arguments, auto&) { fs::create_directories(Path(arguments.at(0))); }},
    {"version", [](auto&, std::string& answer) { answer = pc::TheLibrary().version(); }},
    {"renew",
     [](auto&, std::string& answer) {
       pc::Renew();
       answer = std::to_string(system_info::PresentSeconds());
     }},
    {"set",
     [](auto& arguments, auto&) {
       pc::SetPart(arguments.at(0), Bytes(arguments.size() > 1 ? arguments[1] : ""));
     }},
};

std::string Play(const std::string& verb, const Arguments& arguments) {
  std::string answer;
  const auto found = kVerbs.find(verb);
  if (found != kVerbs.end()) {
    found->second(arguments, answer);
  } else if (!pc::PlayOther(verb, arguments, answer)) {
    throw std::invalid_argument("no such step: " + verb);
  }
  return answer;
}

std::string PlayLine(const std::string& line) {
  std::istringstream words(line);
  Arguments arguments;
  for (std::string word; std::getline(words, word, '\t');) arguments.push_back(word);
  return Play(arguments.at(0), {arguments.begin() + 1, arguments.end()});
}

}  // namespace

int pc::CountFailures(const Arguments& task) {
  int failures = 0;
  for (int i = 0; i < std::stoi(task.at(0)); ++i) {
    char id[64] = "";
    const int result = TheLibrary().get(id, sizeof(id), "2.0", nullptr, 99);
    const bool no_id_yet = result == 4 && task.at(1) == "new";
    if (!no_id_yet && (result != 0 || id != task.at(2))) ++failures;
  }
  return failures;
}

int main(int argc, char** argv) {
  try {
    if (argc > 1) return std::stoi(Play(argv[1], {argv + 2, argv + argc}));
    for (std::string line; std::getline(std::cin, line);) {
      std::cout << PlayLine(line) << std::endl;
    }
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 2;
  }
}
