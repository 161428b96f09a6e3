#include "tools/deviceid/call_command.h"

#include <array>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

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
  } else if (arguments.flags) {
    answer.result = library.mod(id.data(), DEVICEID_ID_SIZE, format, log.data(), DEVICEID_LOG_SIZE,
                                *arguments.flags);
  } else {
    answer.result = library.get(id.data(), DEVICEID_ID_SIZE, format, log.data(), DEVICEID_LOG_SIZE);
  }
  if (answer.result == DEVICEID_SUCCESS) answer.id = id.data();
  answer.log = log.data();
  return answer;
}

system_info::PlayedCall PlayArguments(const Arguments& arguments) {
  using system_info::PlayedExport;
  const PlayedExport which = arguments.recheck ? PlayedExport::kRecheck
                             : arguments.flags ? PlayedExport::kMod
                                               : PlayedExport::kGet;
  const auto hardware = system_info::ReadThisMachine();
  return system_info::PlayCall(which, arguments.format, arguments.flags.value_or(0), *hardware);
}

Answer Play(const Arguments& arguments) {
  system_info::PlayedCall played = PlayArguments(arguments);
  return {static_cast<int>(played.result), std::move(played.id), std::move(played.log), {}};
}

// An id in the common folder takes the place of what other accounts have in their own folders.
void AskBeforeTakingIdsAway(const Arguments& arguments) {
  if (!system_info::PresentAccount().privileged) return;
  const std::vector<OtherId> others = LookAtOtherAccounts();
  if (others.empty()) return;
  const std::vector<StoredId> ids = LookAtStoredIds();
  for (const system_info::FileChange& change : PlayArguments(arguments).changes) {
    if (change.kind != system_info::FileChange::Kind::kFileWritten) continue;
    const auto path = system_info::FromSystemText(change.path);
    for (const OtherId& other : others) {
      const bool same_file = path.filename() == other.stored.path.filename();
      const bool common = path == ids[0].path || path == ids[2].path;
      if (!same_file || !common || !system_info::IsValidDeviceId(change.content)) continue;
      if (change.content.substr(4) == other.stored.id.substr(4)) continue;
      throw Failure(kNeedsConsent, "the account " + other.account + " has the id " +
                                       other.stored.id +
                                       " of its own, and would lose it to the one that this call "
                                       "stores for all accounts; add --yes to store it all the "
                                       "same, or --no-store to look only");
    }
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
    line += Suggestion(
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
  if (!arguments.yes && !arguments.library) AskBeforeTakingIdsAway(arguments);
  const std::vector<StoredId> before = LookAtStoredIds();
  Answer answer = AskLibrary(arguments);
  const std::string change = DescribeChange(before, LookAtStoredIds());
  if (!change.empty()) Complain(change);
  return answer;
}

}  // namespace

int RunCall(const Arguments& arguments) {
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

}  // namespace deviceid
