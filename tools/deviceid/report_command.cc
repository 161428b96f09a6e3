#include "tools/deviceid/report_command.h"

#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "deviceid.h"
#include "inspection/case_file.h"
#include "inspection/log_facts.h"
#include "inspection/redacted_log.h"
#include "inspection/redactor.h"
#include "inspection/saved_log.h"
#include "platform/native_paths.h"
#include "tools/deviceid/machine_health.h"
#include "tools/deviceid/output.h"
#include "tools/deviceid/state_folders.h"
#include "tools/deviceid/whole_file.h"

namespace deviceid {
namespace {

constexpr const char* kFooter =
    R"(FILE is written whole or not at all, and for this account alone to read. Without
it the case file goes to standard output. "deviceid explain FILE" reads it.

--redact puts digests in the place of serial numbers, addresses, ids and the
names of accounts and of the machine. Equal values stay equal within a report.
The key of the digests is random and not stored; with --redact-key, the reports
of one key can be compared with each other. Lines of a log that the library did
not write are left out.

Examples:
  deviceid report case.json
  deviceid report --redact --log host.log case.json
  deviceid report --redact --log host.log --log-only shared.log

Writes FILE and nothing else.

Exit status:
  0   written
  2   wrong usage, or FILE lies in a folder of the library
  65  the log is not one of a call, or the key has less than 16 bytes
  66  no such file
  74  FILE or the output cannot be written
  77  permission denied)";

struct Arguments {
  std::optional<std::string> file;
  std::optional<std::string> log;
  std::optional<std::string> key;
  bool redact = false;
  bool log_only = false;
};

constexpr std::size_t kKeySize = 16;
constexpr std::size_t kLargestKey = std::size_t{1} << 20;

void CheckArguments(const Arguments& arguments) {
  if (arguments.key && !arguments.redact) {
    throw Failure(kWrongUsage, "--redact-key has no meaning without --redact");
  }
  if (arguments.log_only && !(arguments.redact && arguments.log)) {
    throw Failure(kWrongUsage, "--log-only goes with --redact and --log");
  }
  if (arguments.file) CheckPlaceOfFile(system_info::FromUtf8(*arguments.file));
}

std::string ReadKey(const Arguments& arguments) {
  if (!arguments.key) return RandomBytes(kKeySize);
  std::string key = ReadUserFile(system_info::FromUtf8(*arguments.key), kLargestKey);
  if (key.size() < kKeySize) {
    throw Failure(kBadData, *arguments.key + " has less than the 16 bytes of a key");
  }
  return key;
}

std::optional<std::string> ReadLog(const Arguments& arguments) {
  if (!arguments.log) return std::nullopt;
  std::string log = system_info::RestoreLog(
      ReadUserFile(system_info::FromUtf8(*arguments.log), kLargestUserFile));
  if (system_info::ReadLogFacts(log).calls == 0) {
    throw Failure(kBadData, *arguments.log + " holds no log of a call");
  }
  return log;
}

std::string MakeReport(const Arguments& arguments) {
  std::optional<std::string> log = ReadLog(arguments);
  std::optional<system_info::Redactor> redactor;
  if (arguments.redact) redactor.emplace(ReadKey(arguments));
  if (arguments.log_only) {
    system_info::LearnFromLog(*log, *redactor);
    system_info::BindMadeId(*log, *redactor);
    return system_info::RedactLog(*log, *redactor);
  }
  return system_info::MakeCaseFile({GetHIDVersion(), LookAtHealth(), std::move(log)},
                                   redactor ? &*redactor : nullptr) +
         "\n";
}

int Run(const Arguments& arguments) {
  CheckArguments(arguments);
  const std::string report = MakeReport(arguments);
  if (!arguments.file) {
    std::cout << report;
    return FinishOutput(kGood);
  }
  WriteWholeFile(system_info::FromUtf8(*arguments.file), report);
  return kGood;
}

}  // namespace

Command ReportCommand() {
  const auto arguments = std::make_shared<Arguments>();
  return {"report",
          "Write a case file for support",
          kFooter,
          {{"FILE", "Where to write it", &arguments->file, ValueKind::kFile},
           {"--log", "Put this log of a host into it", &arguments->log, ValueKind::kFile},
           {"--redact", "Replace values and names by digests", &arguments->redact},
           {"--redact-key", "The key of the digests", &arguments->key, ValueKind::kFile},
           {"--log-only", "Write the redacted log alone, as text", &arguments->log_only}},
          [arguments] { return Run(*arguments); }};
}

}  // namespace deviceid
