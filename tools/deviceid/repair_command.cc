#include "tools/deviceid/repair_command.h"

#include <array>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "deviceid.h"
#include "inspection/played_call.h"
#include "platform/console.h"
#include "platform/file_backup.h"
#include "platform/native_paths.h"
#include "support/file_operations.h"
#include "tools/deviceid/backup.h"
#include "tools/deviceid/machine_state.h"
#include "tools/deviceid/output.h"
#include "tools/deviceid/repair_plan.h"
#include "tools/deviceid/repair_sight.h"
#include "tools/deviceid/repair_text.h"
#include "tools/deviceid/state_folders.h"
#include "values/device_id.h"
#include "values/format_version.h"

namespace deviceid {
namespace {

using system_info::CallOutcome;
using system_info::FileChange;
using system_info::ToUtf8;

constexpr const char* kFooter =
    R"(REPAIR is one of:
  restore      puts the id of the record back into its file, device.idv2
  keep ID      makes ID the id of the present hardware
  anew         removes ids and records, and makes a new id
  undo BACKUP  restores all stored files as they were before a repair

Examples:
  deviceid repair keep 2-0-01234567-89ab-cdef-0123-456789abcdef --dry-run
  deviceid repair restore
  deviceid repair undo /var/backups/deviceid/2026-11-23-1

Writes. It shows the changes and asks, backs up both state folders, makes the
changes, and calls the library as a host does (undo does not). If the call does
not return the announced id, all changes are rolled back. The last line of the
output is the folder of the backup.

Exit status:
  0   repaired, or shown by --dry-run
  2   wrong usage
  65  the backup is damaged
  66  no such backup
  71  failed, and all changes are rolled back
  72  another repair is running
  73  stopped halfway; "repair undo" with the backup restores all files
  74  the output or the backup cannot be written
  75  not confirmed
  76  nothing to repair, or no way to
  77  permission denied)";

constexpr const char* kFormat = "2.0";
constexpr system_info::HidFormatVersion kVersion(2, 0);

struct Arguments {
  std::vector<std::string> words;
  std::string backup;
  bool yes = false;
  bool dry_run = false;
  bool json = false;
};

// A repair that can be made.
struct Repair {
  Announcement announcement;
  RepairPlan plan;
  system_info::PlayedCall foreseen;  // The call that follows.
  std::optional<Backup> source;      // Of undo.
};

std::string CheckedId(const std::string& id) {
  if (!system_info::IsValidDeviceId(id)) {
    throw Failure(kWrongUsage, "\"" + id + "\" is no id of format 2.0");
  }
  const std::string prefix = id.substr(0, 4);
  if (prefix == "2-0-" || prefix == "1-6-") return system_info::RewriteDeviceIdPrefix(id, kVersion);
  throw Failure(kWrongUsage,
                "an id of format 2.0 begins with 2-0-, or in its file with 1-6-, and "
                "not with " +
                    prefix);
}

struct RepairName {
  const char* name;
  std::size_t words;
  const char* missing;
};

constexpr std::array<RepairName, 4> kRepairs = {{
    {"restore", 1, ""},
    {"keep", 2, "repair keep needs one ID"},
    {"anew", 1, ""},
    {"undo", 2, "repair undo needs one BACKUP"},
}};

void CheckWords(const std::vector<std::string>& words) {
  std::vector<std::string> names;
  for (const RepairName& known : kRepairs) {
    names.emplace_back(known.name);
    if (words[0] != known.name) continue;
    if (words.size() == known.words) return;
    const std::string extra = "repair " + words[0] + " takes no further word";
    throw Failure(kWrongUsage, known.words == 1 ? extra : known.missing);
  }
  throw Failure(kWrongUsage,
                "there is no repair \"" + words[0] + "\"" + Suggestion(words[0], names));
}

// The changes that bring the folders back to `backup`, if it is one of these folders.
RepairPlan PlanUndo(const Backup& backup) {
  RepairPlan plan;
  const std::vector<std::string> texts = StateFolderTexts();
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const KeptFolder& folder = backup.folders[i];
    if (folder.path != system_info::FromSystemText(texts[i])) {
      return {{},
              {},
              "the backup is of " + ToUtf8(folder.path) + ", which this account does not use",
              kRefused};
    }
    for (FileChange& change : ChangesTo(folder, texts[i]))
      plan.changes.push_back(std::move(change));
  }
  return plan;
}

RepairPlan MakePlan(const std::vector<std::string>& words, system_info::HardwareSource& hardware,
                    const std::optional<Backup>& source) {
  if (source) return PlanUndo(*source);
  const std::string id = words[0] == "keep" ? CheckedId(words[1]) : "";
  const RepairSight sight = LookForRepair(hardware);
  if (words[0] == "restore") return PlanRestore(sight);
  return words[0] == "keep" ? PlanKeep(sight, id) : PlanAnew(sight);
}

// True if a comparison with the present hardware gives another id than the one to be kept.
bool EndsAtComparison(const Repair& repair, const system_info::MachineState& after) {
  return repair.announcement.repair == "keep" && after.recheck &&
         after.recheck->result == system_info::HidResult::Success &&
         after.recheck->id != repair.plan.id;
}

// Refuses a repair that would not do what was asked for.
void RefuseWrongEnd(const Repair& repair, const system_info::MachineState& after) {
  const auto& next = repair.foreseen;
  const std::string& wanted = repair.plan.id;
  const bool good = next.result == system_info::HidResult::Success;
  const bool right = good && (wanted.empty() || next.id == wanted);
  if (repair.source || (right && !EndsAtComparison(repair, after))) return;
  const auto& changes = repair.plan.changes;
  const auto common = StateFolderPaths()[0];
  const bool own = system_info::FromSystemText(changes.back().path).parent_path() != common;
  if (good && own) {
    throw Failure(kNoRights, "this account can store " + wanted +
                                 " for itself alone, but what is in " + ToUtf8(common) + " counts");
  }
  std::string line = wanted.empty() ? "no id" : wanted;
  line += " would not come of it: " + repair.announcement.explanation.sentence;
  const bool hint = repair.announcement.repair == "restore";
  if (hint) line += " deviceid repair keep " + wanted + " keeps it for the present hardware.";
  throw Failure(kRefused, line);
}

Repair Prepare(const std::vector<std::string>& words, system_info::HardwareSource& hardware) {
  Repair repair;
  if (words[0] == "undo") repair.source = ReadBackup(system_info::FromUtf8(words[1]));
  RefuseObstacles();
  repair.plan = MakePlan(words, hardware, repair.source);
  if (!repair.plan.refusal.empty()) throw Failure(repair.plan.status, repair.plan.refusal);
  const system_info::MachineState before_call =
      LookAtMachine(kFormat, hardware, {0, repair.plan.changes});
  auto& [name, effects, explanation, taken] = repair.announcement;
  name = words[0];
  explanation = system_info::ExplainMachine(before_call);
  repair.foreseen = before_call.next;
  RefuseWrongEnd(repair, before_call);
  const bool called = !repair.source;
  const auto& changes = called ? repair.foreseen.changes : repair.plan.changes;
  // An id that will be drawn is not known yet.
  if (called && !repair.foreseen.random) {
    explanation = system_info::ExplainMachine(LookAtMachine(kFormat, hardware, {0, changes}));
  }
  RefuseWithoutRights(repair.plan.changes, changes);
  for (const FileChange& change : changes) effects.push_back(EffectOf(change));
  taken = IdsTakenAway(changes);
  return repair;
}

// Without a terminal nobody can be asked.
void RefuseWithoutConsent(const Arguments& arguments, const Announcement& announcement) {
  const bool asked = !arguments.json && system_info::InputIsTerminal();
  if (arguments.yes || arguments.dry_run || asked) return;
  std::string line = "nothing was changed: add --yes to make the repair, or --dry-run to look only";
  for (const auto& [account, stored] : announcement.taken) {
    line +=
        "; the account " + account + " has the id " + stored.id + " of its own, and would lose it";
  }
  throw Failure(kNeedsConsent, line);
}

void Ask() {
  std::cout << "\nGo on? [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  const bool agreed = answer == "y" || answer == "Y" || answer == "yes";
  if (!agreed) throw Failure(kNeedsConsent, "nothing was changed");
}

bool SameFiles(const std::vector<system_info::StateFolder>& one,
               const std::vector<system_info::StateFolder>& other) {
  for (std::size_t i = 0; i < one.size(); ++i) {
    for (const auto& [name, file] : kStoredFiles) {
      const auto& left = one[i].*file;
      const auto& right = other[i].*file;
      if (left.state != right.state || left.bytes != right.bytes) return false;
    }
  }
  return true;
}

void Make(const FileChange& change) {
  const auto path = system_info::FromSystemText(change.path);
  switch (change.kind) {
    case FileChange::Kind::kFolderMade:
      system_info::EnsureDirectory(change.path);
      break;
    case FileChange::Kind::kFileWritten:
      system_info::WriteDurably(path, change.content);
      break;
    case FileChange::Kind::kFileRemoved:
      std::filesystem::remove(path);
      break;
  }
  system_info::SyncFolder(path.parent_path());
}

CallOutcome MakeCall() {
  std::array<char, DEVICEID_ID_SIZE> id = {};
  CallOutcome outcome;
  outcome.result = GetHardwareId(id.data(), DEVICEID_ID_SIZE, kFormat, nullptr, 0);
  if (outcome.result == DEVICEID_SUCCESS) outcome.id = id.data();
  return outcome;
}

// Throws std::runtime_error if something else comes of it than was announced.
CallOutcome ActAndCheck(const Repair& repair, system_info::HardwareSource& hardware) {
  for (const FileChange& change : repair.plan.changes) Make(change);
  const CallOutcome call = MakeCall();
  const auto& [result, id, random, log, changes] = repair.foreseen;
  if (call.result != static_cast<int>(result) || (!random && call.id != id)) {
    throw std::runtime_error("the call gave " +
                             call.id.value_or("result " + std::to_string(call.result)));
  }
  const auto& announced = repair.announcement.explanation;
  const auto then = system_info::ExplainMachine(LookAtMachine(kFormat, hardware));
  const bool as_announced =
      then.verdict == announced.verdict && then.recheck->id == announced.recheck->id;
  if (!random && !as_announced) throw std::runtime_error(then.sentence);
  return {call.result, call.id, random};
}

CallOutcome ActOrPutBack(const Repair& repair, const Backup& backup,
                         system_info::HardwareSource& hardware) try {
  return ActAndCheck(repair, hardware);
} catch (const std::exception& failure) {
  const std::string place = ToUtf8(backup.place);
  try {
    BringBack(backup);
  } catch (const std::exception& worse) {
    throw Failure(kHalfDone, std::string(failure.what()) + ", and " + worse.what() +
                                 "; all is brought back by: deviceid repair undo " + place);
  }
  throw Failure(kPutBack, std::string("all is as it was before: ") + failure.what());
}

std::optional<CallOutcome> Act(const Repair& repair, const Backup& backup,
                               system_info::HardwareSource& hardware) {
  if (!repair.source) return ActOrPutBack(repair, backup, hardware);
  try {
    BringBack(*repair.source);
  } catch (const std::exception& failure) {
    throw Failure(kHalfDone,
                  std::string("undo stopped, and can be tried again: ") + failure.what());
  }
  return std::nullopt;
}

int Finish(const Arguments& arguments, const Repair& repair, const RepairOutcome& outcome) {
  if (arguments.json) {
    std::cout << ToJson(repair.announcement, outcome) << '\n';
  } else if (outcome.done) {
    std::cout << (outcome.call ? "Done: " + outcome.call->id.value_or("") : "Done.") << '\n'
              << outcome.backup << '\n';
  }
  return FinishOutput(kGood);
}

int Run(const Arguments& arguments) {
  CheckWords(arguments.words);
  const std::vector<std::filesystem::path> folders = StateFolderPaths();
  const system_info::MachineLock lock(folders[0].parent_path());
  if (!lock.held()) throw Failure(kBusy, "another repair is running");
  const auto hardware = system_info::ReadThisMachine();
  const auto before = ReadStateFolders();
  const Repair repair = Prepare(arguments.words, *hardware);
  RefuseWithoutConsent(arguments, repair.announcement);
  const std::filesystem::path place = ChoosePlace(arguments.backup, folders);
  if (!arguments.json) std::cout << ToText(repair.announcement);
  if (arguments.dry_run) return Finish(arguments, repair, {});
  if (!arguments.yes) Ask();
  if (!SameFiles(before, ReadStateFolders())) {
    throw Failure(kBusy,
                  "the stored files have changed meanwhile, so nothing was changed; try again");
  }
  const Backup backup = MakeBackup(place, folders, "deviceid repair " + arguments.words[0]);
  if (!arguments.json) std::cout << "\nBackup: " << ToUtf8(backup.place) << '\n';
  // Who is killed from here on has to know the backup.
  if (!std::cout.flush()) {
    throw Failure(kWriteFailed, "cannot write to standard output, so nothing was changed");
  }
  RepairOutcome outcome;
  outcome.call = Act(repair, backup, *hardware);
  outcome.done = true;
  outcome.backup = ToUtf8(backup.place);
  return Finish(arguments, repair, outcome);
}

}  // namespace

Command RepairCommand() {
  const auto arguments = std::make_shared<Arguments>();
  return {"repair",
          "Give an id back, keep one for new hardware, or begin anew; with a backup",
          kFooter,
          {{"REPAIR",
            "What to do, see below",
            &arguments->words,
            ValueKind::kText,
            {"restore", "keep", "anew", "undo"},
            {},
            true},
           {"--yes", "Do not ask", &arguments->yes},
           {"--dry-run", "Show what would be different, and stop", &arguments->dry_run},
           {"--backup", "A new folder for the backup", &arguments->backup, ValueKind::kFolder},
           JsonOption(&arguments->json)},
          [arguments] { return Run(*arguments); }};
}

}  // namespace deviceid
