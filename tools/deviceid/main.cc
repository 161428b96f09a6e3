// deviceid: prints the id of this PC and, on request, how the library came to it.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "deviceid.h"
#include "inspection/log_entries.h"

namespace {

constexpr char kDefaultFormat[] = "2.0";

// Exit statuses beside the results of the library, which has no result 2.
constexpr int kWrongUsage = 2;
constexpr int kFailed = 70;
constexpr int kWriteFailed = 74;

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

struct FlagName {
  const char* name;
  std::uint32_t bit;
};

constexpr FlagName kFlags[] = {
    {"SkipDateCheck", DEVICEID_SKIP_DATE_CHECK},
    {"ForceRandomHid", DEVICEID_FORCE_RANDOM_HID},
    {"UseEmulatedHardwareIds", DEVICEID_USE_EMULATED_HARDWARE_IDS},
};

struct Arguments {
  std::string format = kDefaultFormat;
  bool log = false;
  bool json = false;
  bool recheck = false;
  std::optional<std::uint32_t> flags;
};

struct Answer {
  int result = DEVICEID_SUCCESS;
  std::optional<std::string> id;
  std::string log;
  std::vector<system_info::LogEntry> entries;
};

std::uint32_t FlagBit(const std::string& name) {
  for (const FlagName& flag : kFlags) {
    if (name == flag.name) return flag.bit;
  }
  throw CLI::ValidationError("--flags", "there is no flag \"" + name + "\"");
}

void DeclareArguments(CLI::App& app, Arguments& arguments) {
  const auto set_flags = [&arguments](const std::vector<std::string>& names) {
    std::uint32_t bits = 0;
    for (const std::string& name : names) bits |= FlagBit(name);
    arguments.flags = bits;
  };
  app.add_option("--format", arguments.format, "1.0, 1.1, 1.2, 1.4, 1.5, 1.6 or 2.0")
      ->capture_default_str();
  app.add_flag("--log", arguments.log, "Print the log of the call to standard error");
  app.add_flag("--json", arguments.json, "Print one JSON object with result, id and log");
  CLI::Option* recheck = app.add_flag("--recheck", arguments.recheck,
                                      "Compare the hardware whatever the age of the stored record");
  app.add_option_function<std::vector<std::string>>(
         "--flags", set_flags, "SkipDateCheck, ForceRandomHid, UseEmulatedHardwareIds")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->excludes(recheck);
  app.set_version_flag("--version", GetHIDVersion(), "Print the version of the library");
}

Answer AskLibrary(const Arguments& arguments) {
  // Some results leave the buffers as they are: they start out as empty texts.
  char id[DEVICEID_ID_SIZE] = "";
  std::vector<char> log(DEVICEID_LOG_SIZE, '\0');
  const char* format = arguments.format.c_str();

  Answer answer;
  if (arguments.recheck) {
    answer.result = RecheckHardwareId(id, DEVICEID_ID_SIZE, format, log.data(), DEVICEID_LOG_SIZE);
  } else if (arguments.flags) {
    answer.result = GetHardwareIdMod(id, DEVICEID_ID_SIZE, format, log.data(), DEVICEID_LOG_SIZE,
                                     *arguments.flags);
  } else {
    answer.result = GetHardwareId(id, DEVICEID_ID_SIZE, format, log.data(), DEVICEID_LOG_SIZE);
  }
  if (answer.result == DEVICEID_SUCCESS) answer.id = id;
  answer.log = log.data();
  answer.entries = system_info::ParseLog(answer.log);
  return answer;
}

const ResultText& TextOf(int result) {
  for (const ResultText& text : kResults) {
    if (text.code == result) return text;
  }
  return kUnknownResult;
}

// What a user typed or a log says may hold line breaks; a complaint is one line all the same.
void Complain(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < ' '; }, ' ');
  std::cerr << "deviceid: " << text << '\n';
}

void ComplainOfResult(const std::string& format, const Answer& answer) {
  const ResultText& text = TextOf(answer.result);
  std::string line = std::string(text.name) + " (" + std::to_string(answer.result) +
                     "): " + text.meaning + " \"" + format + "\"";
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

// Returns `status` if all of the output has arrived.
int FinishOutput(int status) {
  if (std::cout.flush()) return status;
  Complain("cannot write to standard output");
  return kWriteFailed;
}

int Run(const Arguments& arguments) {
  const Answer answer = AskLibrary(arguments);
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

// NOLINTNEXTLINE(bugprone-exception-escape): only a complaint about a failure can fail here
int main(int argc, char** argv) {
  Arguments arguments;
  CLI::App app("Prints the id of this PC.", "deviceid");
  try {
    DeclareArguments(app, arguments);
    app.parse(argc, argv);
  } catch (const CLI::Success& request) {
    app.exit(request);  // prints the help or the version
    return FinishOutput(0);
  } catch (const CLI::ParseError& error) {
    Complain(std::string(error.what()) + " (see deviceid --help)");
    return kWrongUsage;
  }
  try {
    return Run(arguments);
  } catch (const std::exception& failure) {
    Complain(failure.what());
    return kFailed;
  }
}
