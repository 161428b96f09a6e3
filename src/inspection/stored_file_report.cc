#include "inspection/stored_file_report.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "inspection/explanation_json.h"
#include "inspection/shown_text.h"
#include "inspection/wrapped_text.h"
#include "values/device_id.h"
#include "values/format_version.h"

namespace system_info {
namespace {

constexpr HidFormatVersion kFormatOfRecord(2, 0);

struct RoleText {
  FileRole role;
  const char* file_name;
  const char* text;
};

constexpr std::array<RoleText, 4> kRoles = {{
    {FileRole::kId, "device.idv2", "id"},
    {FileRole::kId, "device.id", "id"},
    {FileRole::kRecord, "hid_settings", "record"},
    {FileRole::kEmulatedIds, "hardware_ids.emulated", "emulated"},
}};

const char* TextOf(FileRole role) {
  const auto* const row = std::find_if(kRoles.begin(), kRoles.end(),
                                       [role](const RoleText& text) { return text.role == role; });
  return row->text;
}

const char* TextOf(StateFolder::Kind kind) {
  switch (kind) {
    case StateFolder::Kind::kCommon:
      return "common";
    case StateFolder::Kind::kUser:
      return "user";
    case StateFolder::Kind::kCopy:
      break;
  }
  return "copy";
}

bool IsThere(const StoredFileReport& report) { return report.state == StoredFile::State::kRead; }

ContentState ContentOf(const StoredFileReport& report) {
  if (report.role == FileRole::kId) return report.id.state;
  return report.role == FileRole::kRecord ? report.record.state : ContentState::kGood;
}

bool IsGood(const StoredFileReport& report, FileRole role) {
  return report.role == role && IsThere(report) && ContentOf(report) == ContentState::kGood;
}

std::string DamageOf(const StoredFileReport& report) {
  return report.role == FileRole::kId ? report.id.damage : report.record.damage;
}

// By their order, without the hardware of the machine.
void WarnOfParts(StoredFileReport& report) {
  for (const Part& part : CompareParts(report.record.parts, std::nullopt)) {
    for (const PartName name : part.names) {
      const std::string doubt = DoubtAbout(name, *part.stored);
      if (doubt.empty()) continue;
      report.warnings.push_back({"doubtful-part", NameOf(part) + ": " + doubt});
      break;
    }
  }
}

void WarnOfFile(StoredFileReport& report) {
  if (!report.facts.other_writers.empty() && report.facts.kind == FileKind::kRegular) {
    report.warnings.push_back(
        {"others-may-write", "may be written by " + report.facts.other_writers});
  }
  if (report.facts.kind == FileKind::kLink) {
    report.warnings.push_back({"link", "is a symbolic link of " + report.facts.owner});
  }
  if (report.record.trailing_bytes > 0) {
    report.warnings.push_back({"trailing-bytes", std::to_string(report.record.trailing_bytes) +
                                                     " bytes behind the record are ignored"});
  }
}

// The id as hosts get it: the one of "device.idv2" is kept with another prefix.
std::string AsGiven(const StoredFileReport& report) {
  const bool rewritten = report.path.ends_with("device.idv2");
  return rewritten ? RewriteDeviceIdPrefix(report.id.id, kFormatOfRecord) : report.id.id;
}

void AddRecord(std::string& text, const RecordContent& record, const InspectionStyle& style) {
  if (record.version) AddField(text, "format", Harmless(*record.version));
  if (record.device_id) AddField(text, "id", Harmless(*record.device_id));
  if (record.type) {
    const bool random = *record.type == 1;
    AddField(
        text, "type",
        std::to_string(*record.type) + (random ? ", from a random number" : ", from hardware"));
  }
  if (record.date) AddField(text, "date", style.date(*record.date));
  for (const Part& part : CompareParts(record.parts, std::nullopt)) {
    AddField(text, "part", Harmless(*part.stored) + "  (" + NameOf(part) + ")");
  }
}

void AddContent(std::string& text, const StoredFileReport& report, const InspectionStyle& style) {
  if (!IsThere(report)) return;
  if (report.role == FileRole::kRecord) return AddRecord(text, report.record, style);
  if (report.role != FileRole::kId) return;
  if (report.id.state == ContentState::kGood) return AddField(text, "id", AsGiven(report));
  if (report.id.legible) AddField(text, "legible", *report.id.legible);
}

// A path is not broken: it is there to be copied.
void AddPath(std::string& text, const StoredFileReport& report) {
  std::string line = Harmless(report.path);
  if (report.folder) {
    const std::string folder = std::string("(") + TextOf(*report.folder) + " folder)";
    const bool fits = CountCharacters(line) + kGap + folder.size() <= kWidth;
    line += (fits ? "" : "\n") + std::string(kGap, ' ') + folder;
  }
  AddLine(text, line);
}

void AddState(std::string& text, const StoredFileReport& report, bool colour) {
  const std::string state = StateText(report);
  std::string problem = report.why;
  if (IsThere(report)) problem = DamageOf(report);
  const std::size_t start = text.size();
  AddField(text, "state", Harmless(state + (problem.empty() ? "" : ": " + problem)));
  if (!colour || !IsThere(report)) return;
  const std::string code = IsBad(report) ? "\x1b[31m" : "\x1b[32m";
  text.replace(text.find(state, start + kMargin + kNameWidth), state.size(),
               code + state + "\x1b[0m");
}

void Describe(std::string& text, const StoredFileReport& report, const InspectionStyle& style) {
  AddPath(text, report);
  AddState(text, report, style.colour);
  AddContent(text, report, style);
  if (report.facts.kind != FileKind::kMissing && report.facts.kind != FileKind::kUnknown) {
    AddField(text, "file",
             std::to_string(report.facts.size) + " bytes, written " +
                 style.date(report.facts.modified) + ", owner " + Harmless(report.facts.owner));
  }
  for (const Warning& warning : report.warnings) AddField(text, "warning", Harmless(warning.text));
  text += '\n';
}

nlohmann::ordered_json OrNull(const std::optional<std::string>& text) {
  if (!text) return nullptr;
  return ToUtf8(*text);
}

nlohmann::ordered_json RecordJson(const RecordContent& record) {
  using Json = nlohmann::ordered_json;
  Json parts = Json::array();
  for (const Part& part : CompareParts(record.parts, std::nullopt)) {
    const char* name = part.names.size() == 1 ? TextOf(part.names[0]) : "unnamed";
    parts.push_back({{"name", name}, {"stored", OrNull(part.stored)}});
  }
  return {{"format", OrNull(record.version)},
          {"id", OrNull(record.device_id)},
          {"type", record.type ? Json(*record.type) : Json(nullptr)},
          {"date", record.date ? Json(UtcText(*record.date)) : Json(nullptr)},
          {"count", record.count ? Json(*record.count) : Json(nullptr)},
          {"parts", parts},
          {"trailing_bytes", record.trailing_bytes}};
}

nlohmann::ordered_json FileJson(const StoredFileReport& report) {
  using Json = nlohmann::ordered_json;
  const bool there =
      report.facts.kind != FileKind::kMissing && report.facts.kind != FileKind::kUnknown;
  std::string problem = report.why;
  if (IsThere(report)) problem = DamageOf(report);
  const bool good_id = IsGood(report, FileRole::kId);
  const bool record = report.role == FileRole::kRecord && IsThere(report);
  Json warnings = Json::array();
  for (const auto& [code, text] : report.warnings) {
    warnings.push_back({{"code", code}, {"text", ToUtf8(text)}});
  }
  return {{"path", ToUtf8(report.path)},
          {"folder", report.folder ? Json(TextOf(*report.folder)) : Json(nullptr)},
          {"role", TextOf(report.role)},
          {"state", StateText(report)},
          {"problem", problem.empty() ? Json(nullptr) : Json(ToUtf8(problem))},
          {"size", there ? Json(report.facts.size) : Json(nullptr)},
          {"modified", there ? Json(UtcText(report.facts.modified)) : Json(nullptr)},
          {"owner", there ? Json(ToUtf8(report.facts.owner)) : Json(nullptr)},
          {"other_writers", there ? Json(ToUtf8(report.facts.other_writers)) : Json(nullptr)},
          {"id", good_id ? Json(AsGiven(report)) : Json(nullptr)},
          {"record", record ? RecordJson(report.record) : Json(nullptr)},
          {"warnings", warnings}};
}

}  // namespace

std::optional<FileRole> RoleOf(const std::string& file_name) {
  for (const RoleText& row : kRoles) {
    if (file_name == row.file_name) return row.role;
  }
  return std::nullopt;
}

StoredFileReport ReportOn(FileRole role, const std::string& path, const FileAttributes& facts,
                          const StoredFile& file) {
  StoredFileReport report;
  report.role = role;
  report.path = path;
  report.facts = facts;
  report.state = file.state;
  report.why = file.why;
  if (IsThere(report) && role == FileRole::kId) report.id = JudgeIdBytes(file.bytes);
  if (IsThere(report) && role == FileRole::kRecord) {
    report.record = DecodeRecord(file.bytes);
    if (report.record.trailing_bytes > 0) report.record.trailing_bytes += file.unread;
    WarnOfParts(report);
  }
  WarnOfFile(report);
  return report;
}

std::optional<bool> RecordAgrees(const std::vector<StoredFileReport>& reports) {
  const auto record = std::find_if(reports.begin(), reports.end(), [](const auto& report) {
    return IsGood(report, FileRole::kRecord);
  });
  // The old id file counts only while there is no good new one, wherever that is.
  for (const std::string name : {"device.idv2", "device.id"}) {
    const auto id = std::find_if(reports.begin(), reports.end(), [&](const auto& report) {
      return IsGood(report, FileRole::kId) && report.path.ends_with(name);
    });
    if (id == reports.end()) continue;
    if (record == reports.end()) return std::nullopt;
    return RewriteDeviceIdPrefix(id->id.id, kFormatOfRecord) == record->record.device_id;
  }
  return std::nullopt;
}

bool IsRecordWithoutId(const std::vector<StoredFileReport>& reports) {
  const auto has_good = [&](FileRole role) {
    return std::any_of(reports.begin(), reports.end(),
                       [role](const auto& report) { return IsGood(report, role); });
  };
  const bool has_id_file = std::any_of(reports.begin(), reports.end(), [](const auto& report) {
    return report.role == FileRole::kId;
  });
  return has_id_file && has_good(FileRole::kRecord) && !has_good(FileRole::kId);
}

std::string StateText(const StoredFileReport& report) {
  if (report.state == StoredFile::State::kMissing) return "missing";
  if (report.state == StoredFile::State::kUnreadable) return "unreadable";
  return TextOf(ContentOf(report));
}

bool IsBad(const StoredFileReport& report) {
  if (report.state == StoredFile::State::kUnreadable) return true;
  return IsThere(report) && ContentOf(report) == ContentState::kDamaged;
}

std::string ToText(const std::vector<StoredFileReport>& reports, const InspectionStyle& style) {
  std::string text;
  for (const StoredFileReport& report : reports) Describe(text, report, style);
  const std::optional<bool> agrees = RecordAgrees(reports);
  if (agrees) {
    text += *agrees ? "The record and the id file hold the same id.\n"
                    : "The record holds another id than the id file.\n";
  }
  if (IsRecordWithoutId(reports)) text += "There is a record, and no file holds its id.\n";
  return text;
}

std::string ToJson(const std::vector<StoredFileReport>& reports) {
  using Json = nlohmann::ordered_json;
  Json files = Json::array();
  for (const StoredFileReport& report : reports) files.push_back(FileJson(report));
  const std::optional<bool> agrees = RecordAgrees(reports);
  const Json object = {{"schema", 1},
                       {"command", "inspect"},
                       {"files", files},
                       {"record_agrees", agrees ? Json(*agrees) : Json(nullptr)}};
  return object.dump(2, ' ', false, Json::error_handler_t::replace);
}

}  // namespace system_info
