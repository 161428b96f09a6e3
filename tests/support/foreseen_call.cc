#include "support/foreseen_call.h"

#include <filesystem>
#include <fstream>
#include <iterator>
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

// The path that the system takes `path` for, but for a link in the last place.
std::string Place(const fs::path& path) {
  return (fs::weakly_canonical(path.parent_path()) / path.filename()).string();
}

std::string Shown(const fs::path& path) {
  const fs::file_type type = fs::symlink_status(path).type();
  if (type == fs::file_type::directory) return "folder";
  if (type == fs::file_type::symlink) return "link to " + fs::read_symlink(path).string();
  if (type != fs::file_type::regular) return "other";
  std::ifstream file(path, std::ios::binary);
  return "file: " + std::string(std::istreambuf_iterator<char>(file), {});
}

Tree Walk(const std::vector<std::string>& folders) {
  Tree tree;
  const auto add = [&tree](const fs::path& path) {
    tree[Place(path)] = {Shown(path), StatusText(path.string())};
  };
  for (const std::string& folder : folders) {
    if (!fs::is_directory(folder)) continue;
    add(folder);
    for (const auto& entry : fs::recursive_directory_iterator(folder)) add(entry.path());
  }
  return tree;
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

// Without times, and without what a drawn number goes into: `drawn` is the id that rests on it, if
// any.
std::string Comparable(std::string text, const std::string& drawn) {
  static const std::regex kTime("(^|\\n)\\[\\d\\d:[\\d:]+\\]|(Diff seconds: -?\\d+)");
  static const std::regex kDrawn("(random runtime hid: )\\d+(\\n.*Runtime device id: )\\S+");
  text = std::regex_replace(text, kTime, "$1");
  text = std::regex_replace(text, kDrawn, "$1?$2?");
  // The last hours of the date of a record.
  if (text.starts_with("file: \x03") && text.size() > 69) text.replace(61, 2, "??");
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

void CompareReplies(const PlayedCall& played, const MadeCall& made, Comparison& comparison) {
  comparison.Equal("result", std::to_string(static_cast<int>(played.result)),
                   std::to_string(made.result));
  if (played.random) {
    comparison.Equal("two draws", std::to_string(played.id != made.id), "1");
  } else {
    comparison.Equal("id", played.id.value_or(""), made.result == 0 ? made.id : "");
  }
  // A zero ends what a host sees of a log.
  if (!made.log) return;
  comparison.Equal("log", Comparable(played.log.c_str(), played.random ? *played.id : ""),
                   Comparable(*made.log, played.random ? made.id : ""));
}

void CompareTrees(const Tree& expected, const std::string& drawn, const Tree& after,
                  const std::string& drawn_after, Comparison& comparison) {
  Tree all = expected;
  all.insert(after.begin(), after.end());
  const auto shown = [](const Tree& tree, const std::string& path, const std::string& id) {
    const auto item = tree.find(path);
    return item == tree.end() ? "nothing" : Comparable(item->second.shown, id);
  };
  for (const auto& [path, item] : all) {
    comparison.Equal(path, shown(expected, path, drawn), shown(after, path, drawn_after));
  }
}

}  // namespace

std::string TracesOf(const std::vector<std::string>& folders, const std::function<void()>& action) {
  const Tree before = Walk(folders);
  action();
  const Tree after = Walk(folders);
  Tree all = before;
  all.insert(after.begin(), after.end());
  const auto shown = [](const Tree& tree, const std::string& path) {
    const auto item = tree.find(path);
    return item == tree.end() ? "nothing" : item->second.status + item->second.shown;
  };
  Comparison comparison;
  for (const auto& [path, item] : all) {
    comparison.Equal("untouched " + path, shown(before, path), shown(after, path));
  }
  return comparison.text();
}

std::string DifferencesOf(const ForeseenCall& call, HardwareSource& hardware,
                          const std::vector<std::string>& folders,
                          const std::function<MadeCall()>& make,
                          const std::function<void(const std::function<void()>&)>& account) {
  PlayedCall played;
  const std::string traces = TracesOf(folders, [&] {
    account([&] { played = PlayCall(call.which, call.format, call.flags, hardware); });
  });
  Comparison comparison;
  Tree tree = Walk(folders);
  MadeCall made;
  account([&] { made = make(); });
  CompareReplies(played, made, comparison);
  for (const FileChange& change : played.changes) Apply(change, tree);
  CompareTrees(tree, played.random ? *played.id : "", Walk(folders), played.random ? made.id : "",
               comparison);
  return traces + comparison.text();
}

}  // namespace system_info
