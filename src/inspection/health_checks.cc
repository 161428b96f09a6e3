#include "inspection/health_checks.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <iterator>
#include <set>
#include <string_view>

#include "inspection/log_facts.h"
#include "inspection/state_folders.h"
#include "inspection/warnings.h"
#include "values/device_id.h"
#include "values/format_version.h"

namespace system_info {
namespace {

struct Ill {
  std::string text;
  std::string remedy;
};
using Ills = std::vector<Ill>;

constexpr std::int64_t kSlow = 10'000;         // Milliseconds.
constexpr std::uint64_t kLeastFree = 0x10000;  // Bytes, many times what is stored.
constexpr HidFormatVersion kNewestFormat(2, 0);

std::string Joined(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts) joined += (joined.empty() ? "" : ", ") + text;
  return joined;
}

std::string Concatenated(std::initializer_list<std::string_view> texts) {
  std::string whole;
  for (const std::string_view text : texts) whole += text;
  return whole;
}

// A path as a word of a command.
std::string Quoted(const HealthFacts& facts, const std::string& path) {
  if (path.find_first_of(" '\"$`\\&()") == std::string::npos) return path;
  if (facts.machine.windows) return "\"" + path + "\"";
  std::string quoted = "'";
  for (const char c : path) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return quoted + "'";
}

std::string Choose(const HealthFacts& facts, const std::string& windows, const std::string& other) {
  return facts.machine.windows ? windows : other;
}

bool HasRecord(const HealthFacts& facts) { return facts.explanation.record.has_value(); }

// A power loss leaves the length of a file and none of its bytes.
bool IsZeros(const StoredFile& file) {
  return !file.bytes.empty() && file.bytes.find_first_not_of('\0') == std::string::npos;
}

// The record that counts is zeros; the library takes it for one without an id.
bool CountingRecordIsZeros(const HealthFacts& facts) {
  return std::any_of(facts.machine.folders.begin(), facts.machine.folders.end(),
                     [&](const StateFolder& folder) {
                       return IsZeros(folder.record) && HasRecord(facts) &&
                              folder.path == facts.explanation.record->path;
                     });
}

std::string KeepCommand(const std::string& id) {
  return "deviceid repair keep " + RewriteDeviceIdPrefix(id, kNewestFormat);
}

// The command that gives back an id: of the record, of a damaged file, or a new one.
std::string RestoreCommand(const HealthFacts& facts, const std::optional<DeviceId>& legible) {
  const bool good_record = HasRecord(facts) && IsValidDeviceId(facts.explanation.record->id);
  if (good_record) return "deviceid repair restore";
  return legible ? KeepCommand(*legible) : "deviceid repair anew";
}

std::string KeepOrAnew(const HealthFacts& facts) {
  return facts.explanation.id ? KeepCommand(*facts.explanation.id) : "deviceid repair anew";
}

std::vector<NamedValue> ValuesOf(const HealthFacts& facts) {
  const LogFacts log = ReadLogFacts(facts.machine.hardware_log);
  return log.readings.empty() ? std::vector<NamedValue>() : log.readings.back().Listed();
}

// A folder that a call of this account looks at for its id.
bool Matters(const HealthFacts& facts, const FolderFacts& folder) {
  if (folder.attributes.kind == FileKind::kFolder) return true;
  const bool common = folder.kind == StateFolder::Kind::kCommon;
  return common ? facts.account.privileged : !facts.folders.front().can_store;
}

template <typename IsIll, typename Describe>
Ills OfFolders(const HealthFacts& facts, IsIll is_ill, Describe describe) {
  Ills ills;
  for (const FolderFacts& folder : facts.folders) {
    if (Matters(facts, folder) && is_ill(folder)) ills.push_back(describe(folder));
  }
  return ills;
}

template <typename IsIll, typename Describe>
Ills OfFiles(const HealthFacts& facts, IsIll is_ill, Describe describe) {
  Ills ills;
  for (const StoredFileReport& file : facts.files) {
    if (is_ill(file)) ills.push_back(describe(file));
  }
  return ills;
}

Ills When(bool ill, const std::string& text, const std::string& remedy) {
  return ill ? Ills{{text, remedy}} : Ills();
}

// Reading the hardware.

Ills OfReading(const HealthFacts& facts, std::string_view code, const std::string& remedy) {
  std::vector<Warning> warnings;
  WarnOfCall(ReadLogFacts(facts.machine.hardware_log), warnings);
  Ills ills;
  for (const Warning& warning : warnings) {
    if (warning.code == code) ills.push_back({warning.text, remedy});
  }
  return ills;
}

Ills UnreadableHardware(const HealthFacts& facts) {
  return OfReading(facts, "hardware-unreadable",
                   Choose(facts, "Restart-Service winmgmt, then winmgmt /verifyrepository",
                          "deviceid --no-store --log shows the whole reading"));
}

Ills UnreadableValues(const HealthFacts& facts) {
  return OfReading(facts, "value-unreadable",
                   Choose(facts, "winmgmt /verifyrepository", "deviceid --no-store --log"));
}

Ills DoubtfulAdapter(const HealthFacts& facts) {
  return OfReading(facts, "adapter-choice",
                   "switch on the adapter that is to count, and leave it on");
}

Ills SlowSources(const HealthFacts& facts) {
  Ills ills;
  for (const auto& [source, milliseconds] : TimesOfSources(facts.machine.hardware_log)) {
    if (milliseconds < kSlow) continue;
    ills.push_back({source + " took " + std::to_string(milliseconds) +
                        " ms to read. Each call that reads the hardware waits for it.",
                    Choose(facts, "Restart-Service winmgmt",
                           "time deviceid --no-store shows whether it lasts")});
  }
  return ills;
}

std::vector<std::string> DescribeSources(const HealthFacts& facts) {
  std::vector<std::string> lines;
  if (facts.machine.windows && facts.machine.hardware) {
    lines.emplace_back("COM was entered in a multithreaded apartment, and WMI answers.");
  }
  for (const auto& [source, milliseconds] : TimesOfSources(facts.machine.hardware_log)) {
    lines.push_back(source + ": " + std::to_string(milliseconds) + " ms.");
  }
  return lines;
}

// The values.

Ills NoPart(const HealthFacts& facts) {
  const bool none = facts.machine.hardware && facts.machine.hardware->empty();
  return When(none, "No part can be read, so a new id rests on a random number.",
              facts.account.privileged || facts.machine.windows
                  ? "give the machine a serial number or a network adapter with a lasting address"
                  : "run the host as root, which reads the serial numbers");
}

Ills OnePart(const HealthFacts& facts) {
  const auto values = ValuesOf(facts);
  if (values.size() != 1) return {};
  return {{std::string("The id rests on one part, the ") + TextOf(values[0].name) +
               ". When it changes, so does the id.",
           facts.account.privileged || facts.machine.windows
               ? "deviceid explain names the parts that are missing"
               : "run the host as root, which reads the serial numbers"}};
}

Ills SharedParts(const HealthFacts& facts) {
  Ills ills;
  for (const auto& [name, text] : ValuesOf(facts)) {
    const std::string doubt = DoubtAbout(name, text);
    if (doubt.empty()) continue;
    ills.push_back({Concatenated({"The ", TextOf(name), " \"", text, "\" is ", doubt,
                                  ": other machines can have the same, or this one another soon."}),
                    name == PartName::kNetwork
                        ? "give the adapter its permanent address, or use one that has it"
                        : "ask the maker for a tool that writes the number"});
  }
  return ills;
}

std::vector<std::string> DescribeParts(const HealthFacts& facts) {
  std::vector<std::string> names;
  for (const NamedValue& value : ValuesOf(facts)) names.emplace_back(TextOf(value.name));
  return {"The id rests on " + std::to_string(names.size()) + " parts: " + Joined(names) + "."};
}

// The folders and their file systems.

Ills NowhereToStore(const HealthFacts& facts) {
  const bool none = std::none_of(facts.folders.begin(), facts.folders.end(),
                                 [](const FolderFacts& folder) { return folder.can_store; });
  std::vector<std::string> paths;
  for (const FolderFacts& folder : facts.folders) {
    if (!folder.path.empty()) paths.push_back(folder.path);
  }
  // Who shares an id that root has stored stores nothing.
  const bool shared = facts.explanation.status == 0 && HasRecord(facts);
  return When(none && !shared && !facts.folders.empty(),
              "This account can store an id nowhere (" + Joined(paths) +
                  "), so it is not kept between calls.",
              "let an administrator run deviceid, which stores one for all accounts");
}

Ills FilesInPlaceOfFolders(const HealthFacts& facts) {
  Ills ills;
  for (const FolderFacts& folder : facts.folders) {
    const FileKind kind = folder.attributes.kind;
    if (kind != FileKind::kRegular && kind != FileKind::kOther) continue;
    ills.push_back({folder.path + " is no folder.", Choose(facts, "move ", "mv ") +
                                                        Quoted(facts, folder.path) + " " +
                                                        Quoted(facts, folder.path + ".old")});
  }
  return ills;
}

Ills LinkedFolders(const HealthFacts& facts) {
  Ills ills;
  for (const FolderFacts& folder : facts.folders) {
    if (folder.attributes.kind != FileKind::kLink) continue;
    ills.push_back({folder.path + " is a link of " + folder.attributes.owner +
                        ". Whoever changes what it leads to changes the id.",
                    "put a folder in its place, with the files that the link leads to"});
  }
  return ills;
}

// On Windows every account may make files in a folder of ProgramData, and each belongs to its
// maker.
Ills WritableFolders(const HealthFacts& facts) {
  return OfFolders(
      facts,
      [&](const FolderFacts& folder) {
        return !facts.machine.windows && folder.attributes.kind == FileKind::kFolder &&
               !folder.attributes.other_writers.empty();
      },
      [&](const FolderFacts& folder) {
        return Ill{folder.path + " may be written by " + folder.attributes.other_writers +
                       ", who can replace the id.",
                   "chmod go-w " + Quoted(facts, folder.path)};
      });
}

Ills HalfCarriedOver(const HealthFacts& facts) {
  return OfFolders(
      facts,
      [&](const FolderFacts& folder) {
        const auto good = [&](const StoredFileReport& file) {
          return file.role == FileRole::kId && file.folder == folder.kind &&
                 StateText(file) == "good";
        };
        return !folder.old_id.empty() && folder.attributes.kind == FileKind::kFolder &&
               std::none_of(facts.files.begin(), facts.files.end(), good);
      },
      [&](const FolderFacts& folder) {
        return Ill{"The id in " + folder.old_path +
                       ", which is of an older version, was not carried "
                       "over to " +
                       folder.path + ", and no call will try it again.",
                   KeepCommand(folder.old_id)};
      });
}

Ills ReadOnlyDisks(const HealthFacts& facts) {
  return OfFolders(
      facts, [](const FolderFacts& folder) { return folder.file_system.read_only; },
      [&](const FolderFacts& folder) {
        return Ill{
            "The file system of " + folder.path + " is read-only.",
            Choose(facts, "make the volume writable", "mount -o remount,rw the file system")};
      });
}

Ills FullDisks(const HealthFacts& facts) {
  return OfFolders(
      facts,
      [](const FolderFacts& folder) {
        return folder.file_system.free_bytes && *folder.file_system.free_bytes < kLeastFree;
      },
      [&](const FolderFacts& folder) {
        return Ill{"The file system of " + folder.path +
                       " is full: an id can be cut when it is "
                       "stored.",
                   Choose(facts, "free some space on the volume",
                          "df " + Quoted(facts, folder.path) + ", and free some space")};
      });
}

Ills DisksWithoutLocks(const HealthFacts& facts) {
  return OfFolders(
      facts, [](const FolderFacts& folder) { return folder.file_system.without_locks; },
      [&](const FolderFacts& folder) {
        return Ill{"The file system of " + folder.path + " (" + folder.file_system.type +
                       ") has no locks that others see: two calls at a time can mix their files.",
                   "mount it with locks, or keep the folder on a local disk"};
      });
}

// What a container writes outside of its volumes goes with it.
Ills PassingDisks(const HealthFacts& facts) {
  return OfFolders(
      facts,
      [&](const FolderFacts& folder) {
        const FileSystemFacts& disk = folder.file_system;
        const bool in_container = !facts.system.container.empty();
        return disk.kept_in_memory || (in_container && (disk.overlay || disk.holds_root));
      },
      [&](const FolderFacts& folder) {
        const bool memory = folder.file_system.kept_in_memory;
        return Ill{folder.path + (memory ? " is kept in memory (" + folder.file_system.type +
                                               ") and is empty after the next start."
                                         : " is a part of the container (" +
                                               facts.system.container + ") and goes with it."),
                   memory ? "keep the folder on a disk" : "mount a volume at " + folder.path};
      });
}

std::vector<std::string> DescribeFolders(const HealthFacts& facts) {
  std::vector<std::string> lines;
  for (const FolderFacts& folder : facts.folders) {
    const bool there = folder.attributes.kind == FileKind::kFolder;
    const std::string type = folder.file_system.type;
    lines.push_back(folder.path + (there ? "" : ", not made yet") +
                    (type.empty() ? "" : ", on " + type) +
                    (folder.can_store ? "; this account can store here."
                                      : "; this account cannot store here."));
  }
  return lines;
}

// The files.

bool IsDamagedId(const StoredFileReport& file) {
  return file.role == FileRole::kId && StateText(file) == "damaged";
}

bool HasLineEnd(const StoredFileReport& file) {
  return file.id.legible && file.id.damage.find("line end") != std::string::npos;
}

Ill DescribeDamagedId(const HealthFacts& facts, const StoredFileReport& file) {
  return {file.path + " is damaged: " + file.id.damage + ".",
          RestoreCommand(facts, file.id.legible)};
}

Ills LineEnds(const HealthFacts& facts) {
  return OfFiles(
      facts, [](const auto& file) { return IsDamagedId(file) && HasLineEnd(file); },
      [&](const auto& file) {
        Ill ill = DescribeDamagedId(facts, file);
        ill.text += " Editors add one when they save.";
        return ill;
      });
}

Ills DamagedIds(const HealthFacts& facts) {
  return OfFiles(
      facts, [](const auto& file) { return IsDamagedId(file) && !HasLineEnd(file); },
      [&](const auto& file) { return DescribeDamagedId(facts, file); });
}

Ills ZeroRecords(const HealthFacts& facts) {
  Ills ills;
  for (const StateFolder& folder : facts.machine.folders) {
    if (!IsZeros(folder.record)) continue;
    ills.push_back({"The record hid_settings in " + folder.path +
                        " is all zeros, as a power loss leaves it: the hardware of the id is lost.",
                    KeepOrAnew(facts)});
  }
  return ills;
}

Ills BadRecords(const HealthFacts& facts, RecordUse use, const char* effect) {
  return OfFiles(
      facts,
      [use](const auto& file) {
        return file.role == FileRole::kRecord && file.state == StoredFile::State::kRead &&
               file.record.state != ContentState::kGood && file.record.use == use;
      },
      [&](const auto& file) {
        const bool empty = file.record.state == ContentState::kEmpty;
        return Ill{
            file.path + (empty ? " is empty" : " is damaged (" + file.record.damage + ")") + effect,
            KeepOrAnew(facts)};
      });
}

Ills FatalRecords(const HealthFacts& facts) {
  return BadRecords(facts, RecordUse::kFatal, ": each call fails with result 3.");
}

Ills DamagedRecords(const HealthFacts& facts) {
  return BadRecords(facts, RecordUse::kRemoved,
                    ": the next call removes it and makes the id anew from the hardware.");
}

bool IsUnreadable(const StoredFileReport& file) {
  return file.state == StoredFile::State::kUnreadable;
}

// One for a folder, whose files cannot even be seen.
Ills ClosedFolders(const HealthFacts& facts) {
  std::set<std::string> folders;
  for (const StoredFileReport& file : facts.files) {
    const bool seen = !IsUnreadable(file) || file.facts.kind != FileKind::kUnknown;
    if (!seen) folders.insert(file.path.substr(0, file.path.find_last_of("/\\")));
  }
  Ills ills;
  for (const std::string& folder : folders) {
    const std::string path = Quoted(facts, folder);
    ills.push_back({"This account may not look into " + folder + ".",
                    Choose(facts, "icacls " + path + " /grant Users:RX", "chmod a+rx " + path)});
  }
  return ills;
}

Ills UnreadableFiles(const HealthFacts& facts) {
  return OfFiles(
      facts,
      [](const auto& file) { return IsUnreadable(file) && file.facts.kind != FileKind::kUnknown; },
      [&](const auto& file) {
        const bool right = file.why == "permission denied";
        const std::string path = Quoted(facts, file.path);
        return Ill{
            file.path + " cannot be read: " + file.why + ".",
            right ? Choose(facts, "icacls " + path + " /grant Users:R", "chmod a+r " + path)
                  : Choose(facts, "move ", "mv ") + path + " " + Quoted(facts, file.path + ".old")};
      });
}

Ills LinkedFiles(const HealthFacts& facts) {
  return OfFiles(
      facts,
      [](const auto& file) {
        return file.facts.kind == FileKind::kLink && file.state != StoredFile::State::kUnreadable;
      },
      [](const auto& file) {
        return Ill{file.path + " is a link of " + file.facts.owner +
                       ". Whoever changes what it leads to changes the id.",
                   "put a copy of the file in its place"};
      });
}

// An account that owns a file of the common folder, and is neither this one nor root.
bool BelongsToAnother(const HealthFacts& facts, const StoredFileReport& file) {
  return !facts.machine.windows && file.folder == StateFolder::Kind::kCommon &&
         file.facts.kind == FileKind::kRegular && file.facts.owner != "root" &&
         file.facts.owner != facts.account.name;
}

Ills FilesOfOthers(const HealthFacts& facts) {
  return OfFiles(
      facts,
      [&](const auto& file) {
        const bool others =
            file.facts.kind == FileKind::kRegular && !file.facts.other_writers.empty();
        return others || BelongsToAnother(facts, file);
      },
      [&](const auto& file) {
        const bool owned = file.facts.other_writers.empty();
        const std::string path = Quoted(facts, file.path);
        return Ill{file.path + " may be written by " +
                       (owned ? "its owner " + file.facts.owner : file.facts.other_writers) +
                       ", who can change the id.",
                   owned ? "chown root " + path
                         : Choose(facts, "icacls " + path + " /reset", "chmod go-w " + path)};
      });
}

std::vector<std::string> DescribeFiles(const HealthFacts& facts) {
  const auto there = std::count_if(facts.files.begin(), facts.files.end(), [](const auto& file) {
    return file.state != StoredFile::State::kMissing;
  });
  return {there == 0 ? "Nothing is stored yet."
                     : "The stored files are good, and no other account can change them."};
}

// The id and its record.

Ills RecordWithoutId(const HealthFacts& facts) {
  const bool none = facts.explanation.verdict == Verdict::kNoId;
  return When(none, "There is a record and no good id: each call ends with result 4.",
              RestoreCommand(facts, std::nullopt));
}

Ills IdWithoutRecord(const HealthFacts& facts) {
  const bool alone = facts.explanation.situation == Situation::kIdWithoutRecord;
  return When(alone && facts.explanation.id,
              "There is an id without a record: the next call makes it anew from the hardware.",
              KeepOrAnew(facts));
}

Ills DifferentIds(const HealthFacts& facts) {
  const auto& folders = facts.machine.folders;
  auto other = FindOtherId(folders, &StateFolder::idv2);
  if (!other) other = FindOtherId(folders, &StateFolder::id);
  if (!other) return {};
  return {
      {"The common folder and that of this account hold different ids; the common one counts, and "
       "the next call removes " +
           other->id + " from " + other->path + ".",
       "if the other id is the right one: " + KeepCommand(other->id)}};
}

Ills RandomRecord(const HealthFacts& facts) {
  const bool random = HasRecord(facts) && facts.explanation.record->type == 1;
  const bool readable = facts.machine.hardware && !facts.machine.hardware->empty();
  return When(
      random,
      "The id is random: it was made when no part could be read, and is never compared with "
      "the hardware.",
      readable ? "deviceid repair anew" : "find out why no part can be read");
}

Ills OtherRecord(const HealthFacts& facts) {
  const bool other = HasRecord(facts) && facts.explanation.id &&
                     facts.explanation.record->id != *facts.explanation.id &&
                     !CountingRecordIsZeros(facts);
  // The record of a damaged id file is the last one that names its id.
  const std::string remedy =
      facts.explanation.older_id ? RestoreCommand(facts, std::nullopt) : KeepOrAnew(facts);
  return When(other, "The record belongs to another id, so the hardware is not compared.", remedy);
}

bool IsToldElsewhere(const Explanation& explanation) {
  return explanation.verdict == Verdict::kMadeAnew || explanation.verdict == Verdict::kNoId;
}

Ills ChangingId(const HealthFacts& facts) {
  const Explanation& explanation = facts.explanation;
  // What is kept for this account would be lost by the other one.
  const bool between_accounts =
      std::any_of(explanation.warnings.begin(), explanation.warnings.end(),
                  [](const Warning& warning) { return warning.code == "other-account"; });
  const bool unreadable = explanation.verdict == Verdict::kCannotCompare;
  return When(explanation.status == 10 && !IsToldElsewhere(explanation), explanation.sentence,
              between_accounts || unreadable ? explanation.advice : KeepOrAnew(facts));
}

Ills FailingCall(const HealthFacts& facts) {
  const Explanation& explanation = facts.explanation;
  const bool ill =
      explanation.status == 20 && !IsToldElsewhere(explanation) && FatalRecords(facts).empty();
  return When(ill, explanation.sentence, explanation.advice);
}

std::vector<std::string> DescribeId(const HealthFacts& facts) {
  return {facts.explanation.sentence};
}

// The accounts, the clock and the machine.

Ills OtherIds(const HealthFacts& facts) {
  Ills ills;
  for (const auto& [account, path, id] : facts.other_ids) {
    if (facts.explanation.id && RewriteDeviceIdPrefix(id, kNewestFormat) == *facts.explanation.id) {
      continue;
    }
    ills.push_back({Concatenated({"The account ", account, " has the id ", id, " of its own in ",
                                  path, ", and ", facts.account.name, " has ",
                                  facts.explanation.id.value_or("none yet"), "."}),
                    "deviceid repair keep " + RewriteDeviceIdPrefix(id, kNewestFormat) +
                        " gives that id to all accounts"});
  }
  return ills;
}

std::vector<std::string> DescribeAccounts(const HealthFacts& facts) {
  std::vector<std::string> sharing;
  for (const OtherAccountId& other : facts.other_ids) sharing.push_back(other.account);
  const Explanation& explanation = facts.explanation;
  const bool common = explanation.id && explanation.id_folder_kind == StateFolder::Kind::kCommon;
  std::string line = facts.account.name + (facts.account.privileged ? ", an administrator" : "");
  if (common) line += "; all accounts share the id in " + explanation.id_folder;
  if (explanation.id && !common) line += "; its id is its own";
  if (!sharing.empty()) line += "; the same id is in the folders of " + Joined(sharing);
  return {line + "."};
}

Ills FutureRecords(const HealthFacts& facts) {
  const bool ill = HasRecord(facts) && facts.explanation.record->date > facts.now;
  return When(ill,
              "The clock is set before the date of the record, which is not compared until then.",
              Choose(facts, "w32tm /resync", "timedatectl set-ntp true"));
}

std::vector<std::string> DescribeClock(const HealthFacts& facts) {
  return {HasRecord(facts) ? "The clock is set after the date of the record."
                           : "There is no record whose date the clock could contradict."};
}

struct Hypervisor {
  std::string_view maker;  // In a text of the firmware.
  const char* name;
};

constexpr Hypervisor kHypervisors[] = {
    {"QEMU", "QEMU"},
    {"KVM", "KVM"},
    {"VMware", "VMware"},
    {"VirtualBox", "VirtualBox"},
    {"innotek", "VirtualBox"},
    {"Virtual Machine", "Hyper-V"},
    {"Xen", "Xen"},
    {"Parallels", "Parallels"},
    {"Bochs", "Bochs"},
    {"Amazon EC2", "Amazon EC2"},
    {"Google Compute Engine", "Google Compute Engine"},
    {"OpenStack", "OpenStack"},
    {"BHYVE", "bhyve"},
};

std::string VirtualMachineOf(const SystemFacts& system) {
  for (const std::string& text : system.makers) {
    for (const auto& [maker, name] : kHypervisors) {
      if (text.find(maker) != std::string::npos) return name;
    }
  }
  return system.hypervisor ? "a hypervisor" : "";
}

// Nothing is wrong with either by itself: what is shared or passes has a line of its own.
std::vector<std::string> DescribeMachine(const HealthFacts& facts) {
  std::vector<std::string> lines;
  const std::string machine = VirtualMachineOf(facts.system);
  if (!facts.system.container.empty()) {
    lines.push_back("This is a container (" + facts.system.container +
                    "): its parts are those that it is given.");
  }
  if (!machine.empty()) {
    lines.push_back("This is a virtual machine (" + machine +
                    "): a copy of it has the same parts and the same id.");
  }
  if (lines.empty()) lines.emplace_back("This is neither a container nor a virtual machine.");
  return lines;
}

struct Check {
  const char* code = nullptr;
  HealthLevel level = HealthLevel::kOk;
  Ills (*find)(const HealthFacts&) = nullptr;
};

constexpr std::size_t kMostChecks = 10;  // Of an area; those behind the last one have no code.

// What is looked at together. The lines say what is there where no check of the area finds an ill,
// or in any case.
struct Area {
  const char* code;
  bool always;
  std::vector<std::string> (*describe)(const HealthFacts&);
  std::array<Check, kMostChecks> checks;
};

using Level = HealthLevel;

constexpr std::array<Area, 8> kAreas = {{
    {"sources",
     true,
     DescribeSources,
     {{{"hardware-unreadable", Level::kFail, UnreadableHardware},
       {"value-unreadable", Level::kWarn, UnreadableValues},
       {"slow-source", Level::kWarn, SlowSources}}}},
    {"parts",
     false,
     DescribeParts,
     {{{"no-part", Level::kWarn, NoPart},
       {"one-part", Level::kWarn, OnePart},
       {"shared-part", Level::kWarn, SharedParts},
       {"adapter-choice", Level::kWarn, DoubtfulAdapter}}}},
    {"folders",
     true,
     DescribeFolders,
     {{{"nowhere-to-store", Level::kFail, NowhereToStore},
       {"file-for-folder", Level::kFail, FilesInPlaceOfFolders},
       {"closed-folder", Level::kFail, ClosedFolders},
       {"linked-folder", Level::kWarn, LinkedFolders},
       {"folder-open-to-others", Level::kWarn, WritableFolders},
       {"not-carried-over", Level::kWarn, HalfCarriedOver},
       {"read-only", Level::kWarn, ReadOnlyDisks},
       {"full-disk", Level::kFail, FullDisks},
       {"no-locks", Level::kWarn, DisksWithoutLocks},
       {"passing-folder", Level::kWarn, PassingDisks}}}},
    {"files",
     false,
     DescribeFiles,
     {{{"line-end", Level::kFail, LineEnds},
       {"damaged-id", Level::kFail, DamagedIds},
       {"zero-record", Level::kWarn, ZeroRecords},
       {"fatal-record", Level::kFail, FatalRecords},
       {"damaged-record", Level::kWarn, DamagedRecords},
       {"unreadable-file", Level::kFail, UnreadableFiles},
       {"linked-file", Level::kWarn, LinkedFiles},
       {"file-open-to-others", Level::kWarn, FilesOfOthers}}}},
    {"id",
     false,
     DescribeId,
     {{{"record-without-id", Level::kFail, RecordWithoutId},
       {"id-without-record", Level::kWarn, IdWithoutRecord},
       {"different-ids", Level::kWarn, DifferentIds},
       {"random-id", Level::kWarn, RandomRecord},
       {"other-record", Level::kWarn, OtherRecord},
       {"changing-id", Level::kWarn, ChangingId},
       {"failing-call", Level::kFail, FailingCall}}}},
    {"accounts", false, DescribeAccounts, {{{"other-id", Level::kWarn, OtherIds}}}},
    {"clock", false, DescribeClock, {{{"future-record", Level::kWarn, FutureRecords}}}},
    {"machine", true, DescribeMachine, {}},
}};

}  // namespace

std::vector<HealthFinding> CheckHealth(const HealthFacts& facts) {
  std::vector<HealthFinding> findings;
  for (const Area& area : kAreas) {
    std::vector<HealthFinding> ills;
    for (const auto& [code, level, find] : area.checks) {
      if (code == nullptr) break;
      for (const auto& [text, remedy] : find(facts)) ills.push_back({level, code, text, remedy});
    }
    if (ills.empty() || area.always) {
      for (const std::string& line : area.describe(facts)) {
        findings.push_back({HealthLevel::kOk, area.code, line, {}});
      }
    }
    std::move(ills.begin(), ills.end(), std::back_inserter(findings));
  }
  return findings;
}

}  // namespace system_info
