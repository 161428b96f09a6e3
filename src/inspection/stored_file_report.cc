#include "inspection/stored_file_report.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "inspection/explanation_json.h"
#include "inspection/shown_text.h"
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

std::string Line(const std::string& name, const std::string& text) {
  std::string line = "  " + name;
  line.resize(12, ' ');
  return line + text + '\n';
}

std::string DescribeRecord(const RecordContent& record, const InspectionStyle& style) {
  std::string text;
  if (record.version) text += Line("format", Harmless(*record.version));
  if (record.device_id) text += Line("id", Harmless(*record.device_id));
  if (record.type) {
    const bool random = *record.type == 1;
    text += Line("type", std::to_string(*record.type) +
                             (random ? ", from a random number" : ", from hardware"));
  }
  if (record.date) text += Line("date", style.date(*record.date));
  for (const Part& part : CompareParts(record.parts, std::nullopt)) {
    text += Line("part", Harmless(*part.stored) + "  (" + NameOf(part) + ")");
  }
  return text;
}

std::string DescribeContent(const StoredFileReport& report, const InspectionStyle& style) {
  if (!IsThere(report)) return "";
  if (report.role == FileRole::kRecord) return DescribeRecord(report.record, style);
  if (report.role != FileRole::kId) return "";
  if (report.id.state == ContentState::kGood) return Line("id", AsGiven(report));
  return report.id.legible ? Line("legible", *report.id.legible) : "";
}

std::string Coloured(const std::string& text, const char* code, bool colour) {
  return colour ? std::string("\x1b[") + code + "m" + text + "\x1b[0m" : text;
}

std::string Describe(const StoredFileReport& report, const InspectionStyle& style) {
  std::string text = Harmless(report.path);
  if (report.folder) text += std::string("  (") + TextOf(*report.folder) + " folder)";
  const char* colour = IsBad(report) ? "31" : "32";
  std::string state = Coloured(StateText(report), colour, style.colour && IsThere(report));
  if (!report.why.empty()) state += ": " + report.why;
  if (IsThere(report) && !DamageOf(report).empty()) state += ": " + DamageOf(report);
  text += "\n" + Line("state", state) + DescribeContent(report, style);
  if (report.facts.kind != FileKind::kMissing && report.facts.kind != FileKind::kUnknown) {
    text += Line("file", std::to_string(report.facts.size) + " bytes, written " +
                             style.date(report.facts.modified) + ", owner " +
                             Harmless(report.facts.owner));
  }
  for (const Warning& warning : report.warnings) text += Line("warning", Harmless(warning.text));
  return text + '\n';
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
  for (const StoredFileReport& report : reports) text += Describe(report, style);
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
