#include "tools/deviceid/backup_manifest.h"

#include <cctype>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "platform/native_paths.h"
#include "support/md5_digest.h"

namespace deviceid {
namespace {

using Json = nlohmann::ordered_json;
using system_info::FromUtf8;
using system_info::ToUtf8;

constexpr int kSchema = 1;
constexpr const char* kKinds[] = {"file", "link", "other"};
constexpr const char* kFolders[] = {"common", "user"};

// A path may hold bytes that are no text.
std::string Encoded(const std::filesystem::path& path) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  for (const char character : ToUtf8(path)) {
    const auto byte = static_cast<unsigned char>(character);
    const bool plain = byte > ' ' && byte < 0x7f && byte != '%';
    if (plain) text += character;
    if (!plain) text += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return text;
}

std::string Decoded(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escaped = text[i] == '%';
    bytes += escaped ? static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16)) : text[i];
    if (escaped) i += 2;
  }
  return bytes;
}

std::string DigestOf(const std::string& bytes) {
  return system_info::Md5Digest(bytes).Finalize().HexDigest();
}

Json ToJson(const KeptFile& file) {
  Json object = {{"name", Encoded(FromUtf8(file.name))},
                 {"kind", kKinds[static_cast<int>(file.kind)]},
                 {"properties", file.properties}};
  if (file.kind == KeptFile::Kind::kFile) object["md5"] = DigestOf(file.bytes);
  if (file.kind == KeptFile::Kind::kLink) object["target"] = Encoded(FromUtf8(file.bytes));
  return object;
}

KeptFile::Kind KindOf(const std::string& text) {
  for (std::size_t i = 0; i < std::size(kKinds); ++i) {
    if (text == kKinds[i]) return static_cast<KeptFile::Kind>(i);
  }
  throw std::runtime_error("\"" + text + "\" is no kind of file");
}

// A name that leads out of its folder is none that a folder has.
std::string CheckedName(const std::string& name) {
  const std::filesystem::path path = FromUtf8(name);
  if (path != path.filename() || name.empty() || name == "." || name == "..") {
    throw std::runtime_error("\"" + name + "\" is no name of a file");
  }
  return name;
}

KeptFile FileOf(const Json& entry) {
  KeptFile file;
  file.name = CheckedName(Decoded(entry.at("name")));
  file.kind = KindOf(entry.at("kind"));
  file.properties = entry.at("properties").get<system_info::FileProperties>();
  if (file.kind == KeptFile::Kind::kLink) file.bytes = Decoded(entry.at("target"));
  return file;
}

KeptFolder FolderOf(const Json& object) {
  KeptFolder folder;
  folder.path = FromUtf8(Decoded(object.at("path")));
  folder.standing = FromUtf8(Decoded(object.at("standing")));
  folder.properties = object.at("properties").get<system_info::FileProperties>();
  return folder;
}

}  // namespace

std::string WriteManifest(const Backup& backup, const std::string& reason) {
  Json folders = Json::array();
  for (const KeptFolder& folder : backup.folders) {
    Json files = Json::array();
    for (const KeptFile& file : folder.files) files.push_back(ToJson(file));
    folders.push_back({{"path", Encoded(folder.path)},
                       {"standing", Encoded(folder.standing)},
                       {"properties", folder.properties},
                       {"files", files}});
  }
  const Json manifest = {{"schema", kSchema}, {"before", reason}, {"folders", folders}};
  return manifest.dump(2) + "\n";
}

std::filesystem::path FolderOfCopies(std::size_t folder) { return kFolders[folder]; }

Backup ReadManifest(const std::string& text,
                    const std::function<std::string(const std::filesystem::path&)>& read) {
  const Json manifest = Json::parse(text);
  if (manifest.at("schema") != kSchema) throw std::runtime_error("it is of another version");
  const Json& folders = manifest.at("folders");
  if (folders.size() != std::size(kFolders)) throw std::runtime_error("it is not of two folders");
  Backup backup;
  for (const Json& object : folders) {
    KeptFolder folder = FolderOf(object);
    const std::filesystem::path copies = FolderOfCopies(backup.folders.size());
    for (const Json& entry : object.at("files")) {
      KeptFile file = FileOf(entry);
      if (file.kind == KeptFile::Kind::kFile) {
        file.bytes = read(copies / FromUtf8(file.name));
        const bool whole = DigestOf(file.bytes) == entry.at("md5");
        if (!whole) throw std::runtime_error("the copy of " + file.name + " has changed");
      }
      folder.files.push_back(std::move(file));
    }
    backup.folders.push_back(std::move(folder));
  }
  return backup;
}

}  // namespace deviceid
