#include "tools/deviceid/call_command.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "deviceid.h"
#include "inspection/log_entries.h"
#include "inspection/played_call.h"
#include "platform/accounts.h"
#include "platform/native_paths.h"
#include "platform/shared_library.h"
#include "tools/deviceid/output.h"
#include "tools/deviceid/stored_ids.h"
#include "values/format_version.h"

namespace deviceid {
namespace {

constexpr const char* kFooter =
    R"(Examples:
  deviceid                         the id of this PC, as a host gets it
  deviceid --no-store              the same, but nothing is stored
  deviceid --format 1.5 --log      the values that an id is made of
  deviceid explain                 why the id is what it is, and what comes next

Without a command the program makes the call that a host makes: it may store an
id, and says so in one line on standard error. Only --no-store never writes.

Exit status:
  0   an id was printed
  3-8 the result of the library, with its name on standard error
  2   wrong usage
  69  no such library
  74  the output cannot be written
  75  another account would lose its id (see --yes))";

struct Arguments {
  std::string format = "2.0";
  bool log = false;
  bool json = false;
  bool recheck = false;
  bool no_store = false;
  bool yes = false;
  std::vector<std::string> flags;
  std::optional<std::string> library;
};

struct FlagName {
  const char* name;
  std::uint32_t bit;
};

constexpr std::array<FlagName, 3> kFlags = {{
    {"SkipDateCheck", DEVICEID_SKIP_DATE_CHECK},
    {"ForceRandomHid", DEVICEID_FORCE_RANDOM_HID},
    {"UseEmulatedHardwareIds", DEVICEID_USE_EMULATED_HARDWARE_IDS},
}};

struct ResultText {
  int code;
  const char* name;
  const char* meaning;  // the format text follows it
};

constexpr ResultText kResults[] = {
    {DEVICEID_SUCCESS, "Success", "this is the id in format"},
    {DEVICEID_BUFFER_TOO_SMALL, "BufferTooSmall", "there is too little room for an id in format"},
    {DEVICEID_STANDARD_FAILURE, "StandardFailure", "the library failed to give an id in format"},
    {DEVICEID_UNEXPECTED_FAILURE, "UnexpectedFailure", "the library has no id to give in format"},
    {DEVICEID_NO_DEVICE_ID_BUFFER, "NoDeviceIdBuffer", "there is no room for an id in format"},
    {DEVICEID_UNSUPPORTED_VERSION, "UnsupportedVersion", "the library knows no format"},
    {DEVICEID_NO_VERSION, "NoVersion", "the library needs a format, not"},
    {DEVICEID_NOT_SUPPORTED_WITH_VERSION, "NotSupportedWithVersion",
     "neither --recheck nor --flags goes with format"},
};
constexpr ResultText kUnknownResult = {-1, "Unknown",
                                       "the library gave an unknown result for format"};

bool SameWord(const std::string& left, const std::string& right) {
  return std::equal(
      left.begin(), left.end(), right.begin(), right.end(),
      [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
}

std::uint32_t FlagBit(const std::string& name) {
  std::vector<std::string> names;
  for (const FlagName& flag : kFlags) {
    if (SameWord(name, flag.name)) return flag.bit;
    names.emplace_back(flag.name);
  }
  throw Failure(kWrongUsage, "there is no flag \"" + name + "\"" + SuggestionOrAll(name, names));
}

std::uint32_t FlagBits(const Arguments& arguments) {
  std::uint32_t bits = 0;
  for (const std::string& name : arguments.flags) bits |= FlagBit(name);
  return bits;
}

struct Answer {
  int result = DEVICEID_SUCCESS;
  std::optional<std::string> id;
  std::string log;
  std::vector<system_info::LogEntry> entries;
};

// The calls of the library inside the program, or of the one that the user names.
struct Library {
  decltype(&::GetHardwareId) get = ::GetHardwareId;
  decltype(&::GetHardwareIdMod) mod = ::GetHardwareIdMod;
  decltype(&::RecheckHardwareId) recheck = ::RecheckHardwareId;
};

Library LoadLibraryAt(const std::string& path) try {
  const system_info::SharedLibrary loaded(system_info::FromUtf8(path));
  Library library;
  library.get = loaded.Find<decltype(::GetHardwareId)>("GetHardwareId");
  library.mod = loaded.Find<decltype(::GetHardwareIdMod)>("GetHardwareIdMod");
  library.recheck = loaded.Find<decltype(::RecheckHardwareId)>("RecheckHardwareId");
  return library;
} catch (const std::runtime_error& failure) {
  throw Failure(kNoLibrary, failure.what());
}

Answer AskLibrary(const Arguments& arguments) {
  const Library library = arguments.library ? LoadLibraryAt(*arguments.library) : Library();
  // Some results leave the buffers as they are: they start out as empty texts.
  std::array<char, DEVICEID_ID_SIZE> id = {};
  std::vector<char> log(DEVICEID_LOG_SIZE, '\0');
  const char* format = arguments.format.c_str();

  Answer answer;
  if (arguments.recheck) {
    answer.result =
        library.recheck(id.data(), DEVICEID_ID_SIZE, format, log.data(), DEVICEID_LOG_SIZE);
  } else if (!arguments.flags.empty()) {
    answer.result = library.mod(id.data(), DEVICEID_ID_SIZE, format, log.data(), DEVICEID_LOG_SIZE,
                                FlagBits(arguments));
  } else {
    answer.result = library.get(id.data(), DEVICEID_ID_SIZE, format, log.data(), DEVICEID_LOG_SIZE);
  }
  if (answer.result == DEVICEID_SUCCESS) answer.id = id.data();
  answer.log = log.data();
  return answer;
}

system_info::PlayedCall PlayArguments(const Arguments& arguments) {
  using system_info::PlayedExport;
  const PlayedExport which = arguments.recheck          ? PlayedExport::kRecheck
                             : !arguments.flags.empty() ? PlayedExport::kMod
                                                        : PlayedExport::kGet;
  const auto hardware = system_info::ReadThisMachine();
  return system_info::PlayCall(which, arguments.format, FlagBits(arguments), *hardware);
}

Answer Play(const Arguments& arguments) {
  system_info::PlayedCall played = PlayArguments(arguments);
  return {static_cast<int>(played.result), std::move(played.id), std::move(played.log), {}};
}

void AskBeforeTakingIdsAway(const Arguments& arguments) {
  if (!system_info::PresentAccount().privileged || LookAtOtherAccounts().empty()) return;
  for (const OtherId& other : IdsTakenAway(PlayArguments(arguments).changes)) {
    throw Failure(kNeedsConsent, "the account " + other.account + " has the id " + other.stored.id +
                                     " of its own, and would lose it to the one that this call "
                                     "stores for all accounts; add --yes to store it all the "
                                     "same, or --no-store to look only");
  }
}

const ResultText& TextOf(int result) {
  for (const ResultText& text : kResults) {
    if (text.code == result) return text;
  }
  return kUnknownResult;
}

void ComplainOfResult(const std::string& format, const Answer& answer) {
  const ResultText& text = TextOf(answer.result);
  std::string line = std::string(text.name) + " (" + std::to_string(answer.result) +
                     "): " + text.meaning + " \"" + format + "\"";
  if (answer.result == DEVICEID_UNSUPPORTED_VERSION) {
    line += SuggestionOrAll(
        format, {system_info::SupportedVersions.begin(), system_info::SupportedVersions.end()});
  }
  const bool has_reason = !answer.entries.empty() && answer.entries.back().level == "Error";
  if (has_reason) line += ": " + answer.entries.back().message;
  Complain(line);
}

std::string ToJson(const std::string& format, const Answer& answer) {
  using Json = nlohmann::ordered_json;
  Json log = Json::array();
  for (const auto& [time, level, message] : answer.entries) {
    log.push_back({{"time", time}, {"level", level}, {"message", message}});
  }
  const Json object = {{"format", format},
                       {"result", answer.result},
                       {"result_name", TextOf(answer.result).name},
                       {"id", answer.id ? Json(*answer.id) : Json(nullptr)},
                       {"log", log}};
  return object.dump(2, ' ', false, Json::error_handler_t::replace);
}

Answer AskAndTellWhatWasStored(const Arguments& arguments) {
  if (!arguments.yes) AskBeforeTakingIdsAway(arguments);
  const std::vector<StoredId> before = LookAtStoredIds();
  Answer answer = AskLibrary(arguments);
  const std::string change = DescribeChange(before, LookAtStoredIds());
  if (!change.empty()) Complain(change);
  return answer;
}

int Run(const Arguments& arguments) {
  Answer answer = arguments.no_store ? Play(arguments) : AskAndTellWhatWasStored(arguments);
  answer.entries = system_info::ParseLog(answer.log);
  if (arguments.log && !answer.log.empty()) {
    const bool cut = answer.log.back() != '\n';
    std::cerr << answer.log << (cut ? "\n" : "");
  }
  if (arguments.json) {
    std::cout << ToJson(arguments.format, answer) << '\n';
  } else if (answer.id) {
    std::cout << *answer.id << '\n';
  }
  if (!answer.id) ComplainOfResult(arguments.format, answer);
  return FinishOutput(answer.result);
}

}  // namespace

Command CallCommand() {
  const auto arguments = std::make_shared<Arguments>();
  return {"",
          "Prints the id of this PC.",
          kFooter,
          {FormatOption(&arguments->format),
           {"--log", "Print the log of the call to standard error", &arguments->log},
           {"--json", "Print one JSON object with result, id and log", &arguments->json},
           {"--recheck", "Compare the hardware whatever the age of the stored record",
            &arguments->recheck},
           {"--flags",
            "What the call does otherwise",
            &arguments->flags,
            ValueKind::kText,
            {kFlags[0].name, kFlags[1].name, kFlags[2].name},
            "--recheck"},
           {"--no-store", "Dry run: store nothing", &arguments->no_store},
           {"--yes", "Store the id even if another account loses its own", &arguments->yes},
           {"--library",
            "Call this library instead of the one inside",
            &arguments->library,
            ValueKind::kFile,
            {},
            "--no-store"}},
          [arguments] { return Run(*arguments); }};
}

}  // namespace deviceid
