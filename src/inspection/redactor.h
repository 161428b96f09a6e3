// Puts digests in the place of what identifies a machine or a person.
//
// All values are learned first, then texts are redacted. A digest depends on the key and on the
// letters and digits of its value: equal values stay equal, values that differ in case and
// separators alone stay so, and nobody without the key can try out what a value was. Values of
// hexadecimal digits (addresses, volumes, ids) keep their form. Belongs to one thread.

#ifndef DEVICEID_INSPECTION_REDACTOR_H_
#define DEVICEID_INSPECTION_REDACTOR_H_

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace system_info {

class Redactor {
 public:
  explicit Redactor(std::string key) : key_(std::move(key)) {}

  // A hardware value or an id. Texts that makers leave in place of a number tell nothing and stay.
  void Learn(std::string_view value);
  // An account or a machine. Names that each system has, as "root", stay.
  void LearnName(std::string_view name);
  // The names in a path, but for those of folders that every machine has.
  void LearnPath(std::string_view path);
  // The ids, addresses and home folders that stand in a text.
  void LearnFrom(std::string_view text);

  // Sets the digest of an id: for one that is made of values, it is made of their digests.
  void Bind(std::string_view id, std::string_view digest);

  // What stands in place of a whole value, be it learned or not.
  std::string Value(std::string_view value);
  std::string Name(std::string_view name);
  std::string Path(std::string_view path);

  // A text with all that was learned replaced, in any spelling, forwards or backwards, and all
  // pieces of it that have eight letters and digits.
  std::string Text(std::string_view text);

 private:
  struct Span;
  struct Folded;
  struct Known {
    std::string folded;
    bool backwards = false;
    bool by_pairs = false;
  };

  void Remember(const std::string& folded);
  std::string Digest(std::string_view label, std::string_view text) const;
  std::string Digits(const std::string& text, int round, std::size_t count) const;
  bool Take(const std::string& token, const std::string& text);
  std::string HexInPlaceOf(std::string_view value);
  std::string TextInPlaceOf(std::string_view value);
  Span FindAt(const Folded& text, std::size_t place) const;
  const Known* FindWhole(const Folded& text, std::size_t place) const;
  std::string Replace(std::string_view text, const Span& span);

  std::string key_;
  std::set<std::string> values_;  // Folded.
  // By their first letters.
  std::unordered_map<std::string, std::vector<Known>> known_;
  std::unordered_set<std::string> pieces_;
  std::map<std::string, std::string> tokens_;  // By the text that they stand for.
  std::map<std::string, std::string> owners_;  // The other way round.
};

}  // namespace system_info

#endif  // DEVICEID_INSPECTION_REDACTOR_H_
