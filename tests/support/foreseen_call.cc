#include "support/foreseen_call.h"

#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <regex>
#include <sstream>

namespace system_info {
namespace {

namespace fs = std::filesystem;

// What stands at a path: its kind and content, and all that a call may not change in passing.
struct Item {
  std::string shown;
  std::string status;
};
using Tree = std::map<std::string, Item>;

std::string Shown(const fs::path& path, mode_t mode) {
  if (S_ISDIR(mode)) return "folder";
  if (S_ISLNK(mode)) return "link to " + fs::read_symlink(path).string();
  return S_ISREG(mode) ? "file: " + ReadFileText(path.string()) : "other";
}

std::string StatusText(const struct stat& s) {
  std::ostringstream text;
  text << std::oct << s.st_mode << std::dec;
  for (const auto number : {s.st_uid, s.st_gid}) text << ' ' << number;
  text << ' ' << s.st_ino << ' ' << s.st_nlink << ' ' << s.st_size;
  for (const auto& [seconds, part] : {s.st_mtim, s.st_ctim}) text << ' ' << seconds << '.' << part;
  return text.str();
}

Tree Walk(const std::string& folder) {
  Tree tree;
  const auto add = [&tree](const fs::path& path) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) return;
    tree[path.string()] = {Shown(path, status.st_mode), StatusText(status)};
  };
  add(folder);
  for (const auto& entry : fs::recursive_directory_iterator(folder)) add(entry.path());
  return tree;
}

// The path that the system takes `path` for, but for a link in the last place.
std::string Place(const fs::path& path) {
  return (fs::weakly_canonical(path.parent_path()) / path.filename()).string();
}

void Apply(const FileChange& change, Tree& tree) {
  const std::string place = Place(change.path);
  if (change.kind == FileChange::Kind::kFileRemoved) {
    if (tree.erase(place) == 0) tree[place].shown = "removed, and was never there";
    return;
  }
  const bool file = change.kind == FileChange::Kind::kFileWritten;
  tree[place].shown = file ? "file: " + change.content : "folder";
}

// Without what a drawn number goes into: `drawn` is the id that rests on it, if any.
std::string Comparable(std::string text, const std::string& drawn) {
  static const std::regex kDrawn("(random runtime hid: )\\d+(\\n.*Runtime device id: )\\S+");
  text = std::regex_replace(text, kDrawn, "$1?$2?");
  if (drawn.empty()) return text;
  return std::regex_replace(text, std::regex(drawn.substr(drawn.size() - 36)), "?");
}

class Comparison {
 public:
  void Equal(const std::string& what, const std::string& played, const std::string& real) {
    if (played == real) return;
    differences_ << what << "\n  played: " << played << "\n  really: " << real << '\n';
  }
  std::string text() const { return differences_.str(); }

 private:
  std::ostringstream differences_;
};

std::string Id(const Reply& reply) { return reply.result == 0 ? reply.id : ""; }

void CompareReplies(const PlayedCall& played, const Reply& real, Comparison& comparison) {
  comparison.Equal("result", std::to_string(static_cast<int>(played.result)),
                   std::to_string(real.result));
  if (played.random) {
    comparison.Equal("two draws", std::to_string(played.id != Id(real)), "1");
  } else {
    comparison.Equal("id", played.id.value_or(""), Id(real));
  }
  if (real.log == "<untouched>") return;
  const std::string drawn = played.random ? *played.id : "";
  // A zero ends what a host sees of a log.
  comparison.Equal("log", Comparable(played.log.c_str(), drawn),
                   Comparable(real.log, played.random ? Id(real) : ""));
}

void CompareTrees(const Tree& expected, const Tree& after, const std::string& played_id,
                  const std::string& real_id, Comparison& comparison) {
  Tree all = expected;
  all.insert(after.begin(), after.end());
  const auto shown = [](const Tree& tree, const std::string& path, const std::string& drawn) {
    const auto item = tree.find(path);
    return item == tree.end() ? "nothing" : Comparable(item->second.shown, drawn);
  };
  for (const auto& [path, item] : all) {
    comparison.Equal(path, shown(expected, path, played_id), shown(after, path, real_id));
  }
}

}  // namespace

std::string DifferencesOf(const ForeseenCall& call, HardwareSource& hardware,
                          const std::string& folder, const std::function<Reply()>& make,
                          const std::function<void(const std::function<void()>&)>& account) {
  Comparison comparison;
  const Tree before = Walk(folder);
  PlayedCall played;
  account([&] { played = PlayCall(call.which, call.format, call.flags, hardware); });
  Tree tree = Walk(folder);
  for (const auto& [path, item] : tree) {
    const auto old = before.find(path);
    comparison.Equal("untouched " + path, item.status + item.shown,
                     old == before.end() ? "" : old->second.status + old->second.shown);
  }
  Reply real;
  account([&] { real = make(); });
  CompareReplies(played, real, comparison);
  const Tree after = Walk(folder);
  for (const FileChange& change : played.changes) Apply(change, tree);
  CompareTrees(tree, after, played.random ? *played.id : "", played.random ? Id(real) : "",
               comparison);
  return comparison.text();
}

}  // namespace system_info
