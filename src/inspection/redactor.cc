#include "inspection/redactor.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <utility>

#include "inspection/hardware_parts.h"
#include "support/md5_digest.h"
#include "values/device_id.h"

namespace system_info {
namespace {

constexpr std::size_t kPiece = 8;     // What must not be left of a value.
constexpr std::size_t kStart = 3;     // By which known values are found.
constexpr std::size_t kIdPrefix = 4;  // "2-0-"
constexpr std::size_t kTokenLength = 12;
constexpr std::size_t kAddressDigits = 12;
constexpr int kManySpellings = 100;

constexpr std::string_view kHexDigits = "0123456789abcdef";

// Names that tell nothing, in lower case: of accounts and groups that each system has, and of
// folders on the way to the state.
constexpr std::string_view kPublicNames[] = {"root",
                                             "nobody",
                                             "nogroup",
                                             "daemon",
                                             "system",
                                             "administrators",
                                             "administrator",
                                             "users",
                                             "authenticated users",
                                             "creator owner",
                                             "guest",
                                             "everyone",
                                             "everybody",
                                             "localhost",
                                             "home",
                                             "var",
                                             "lib",
                                             "mnt",
                                             "srv",
                                             "opt",
                                             "tmp",
                                             "usr",
                                             "local",
                                             ".local",
                                             "share",
                                             "data",
                                             "users",
                                             "public",
                                             "appdata",
                                             "roaming",
                                             "programdata",
                                             "documents and settings",
                                             "application data",
                                             "all users",
                                             "brindlequayworks",
                                             "hid_settings",
                                             "hardware_ids.emulated",
                                             "fennel",
                                             "c:"};

bool IsPublic(std::string_view name) {
  std::string lower(name);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const bool file = lower.starts_with("device.id");
  return file || std::find(std::begin(kPublicNames), std::end(kPublicNames), lower) !=
                     std::end(kPublicNames);
}

bool Counts(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80 || std::isalnum(byte) != 0;
}

bool IsHex(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

std::size_t HexNumber(char digit) { return kHexDigits.find(digit); }

bool IsHexText(std::string_view text) { return std::all_of(text.begin(), text.end(), IsHex); }

std::string Fold(std::string_view text) {
  std::string folded;
  bool accented = false;  // The first byte of U+00C0 to U+00FF in UTF-8.
  for (const char c : text) {
    auto byte = static_cast<unsigned char>(c);
    if (accented && byte >= 0x80 && byte <= 0x9e) byte = static_cast<unsigned char>(byte + 0x20);
    accented = byte == 0xc3;
    if (Counts(c)) folded += static_cast<char>(std::tolower(byte));
  }
  return folded;
}

std::string Reversed(std::string_view text) { return {text.rbegin(), text.rend()}; }

std::string ReversedByPairs(const std::string& text) {
  std::string reversed = text;
  if (text.size() % 2 == 0) ReverseHexPairs(reversed, 0, reversed.size());
  return reversed;
}

// The letters and digits behind the digits of the format, which tell nothing.
std::string_view WithoutPrefix(std::string_view value) {
  return IsValidDeviceId(std::string(value)) ? value.substr(kIdPrefix) : value;
}

bool TellsNothing(std::string_view value) {
  return Fold(value).empty() || !DoubtAbout(PartName::kProduct, value).empty();
}

bool KeepsHexForm(const std::string& folded) {
  return folded.size() >= kPiece && IsHexText(folded);
}

// Letters and digits of `token` in the case and between the separators of `value`.
std::string Spell(std::string_view value, std::string_view token) {
  const bool upper =
      std::any_of(value.begin(), value.end(), [](unsigned char c) { return std::isupper(c); }) &&
      std::none_of(value.begin(), value.end(), [](unsigned char c) { return std::islower(c); });
  std::string spelled;
  for (const char c : value) {
    if (!Counts(c)) {
      spelled += c;
      continue;
    }
    const auto next = static_cast<unsigned char>(token.front());
    token.remove_prefix(1);
    spelled += static_cast<char>(upper ? std::toupper(next) : next);
  }
  return spelled;
}

// 'h' stands for a hexadecimal digit, ':' for either separator of an address.
bool BeginsWithForm(std::string_view text, std::string_view form) {
  const auto fits = [](char c, char wanted) {
    if (wanted == 'h') return IsHex(c);
    return c == wanted || (wanted == ':' && c == '-');
  };
  return text.size() >= form.size() &&
         std::equal(form.begin(), form.end(), text.begin(),
                    [&](char wanted, char c) { return fits(c, wanted); });
}

// The folders behind which the name of an account stands.
constexpr std::string_view kHomes[] = {"/home/", "/Users/", "\\Users\\", "\\users\\",
                                       "\\Documents and Settings\\"};

// One or two letters are looked for as a text of their own or a name in a path alone.
bool StandsApart(char before, char behind) {
  constexpr std::string_view kSeparators = "/\\";
  if (before == '"') return behind == '"';
  const bool ends = behind == ' ' || kSeparators.find(behind) != std::string_view::npos;
  return kSeparators.find(before) != std::string_view::npos && ends;
}

std::string_view UpToSeparator(std::string_view text) {
  return text.substr(0, text.find_first_of("/\\\"\n"));
}

}  // namespace

// A stretch of a text that is replaced. Empty for none.
struct Redactor::Span {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t folded_length = 0;
  const Known* whole = nullptr;
};

// The letters and digits of a text, and where each stands in it.
struct Redactor::Folded {
  explicit Folded(std::string_view original) : source(original), text(Fold(original)) {
    for (std::size_t i = 0; i < original.size(); ++i) {
      if (Counts(original[i])) places.push_back(i);
    }
  }

  // What stands on either side of a stretch.
  char Before(std::size_t place) const {
    return places[place] == 0 ? ' ' : source[places[place] - 1];
  }
  char Behind(std::size_t place, std::size_t length) const {
    const std::size_t end = places[place + length - 1] + 1;
    return end < source.size() ? source[end] : ' ';
  }

  std::string_view source;
  std::string text;
  std::vector<std::size_t> places;
};

void Redactor::Remember(const std::string& folded) {
  if (folded.empty() || !values_.insert(folded).second) return;
  const std::array<Known, 3> ways = {{{folded, false, false},
                                      {Reversed(folded), true, false},
                                      {ReversedByPairs(folded), false, true}}};
  for (const Known& known : ways) {
    if (&known != ways.data() && folded.size() < kPiece) break;
    for (std::size_t i = 0; i + kPiece <= known.folded.size(); ++i) {
      pieces_.insert(known.folded.substr(i, kPiece));
    }
    known_[known.folded.substr(0, kStart)].push_back(known);
  }
}

void Redactor::Learn(std::string_view value) {
  if (TellsNothing(value)) return;
  Remember(Fold(WithoutPrefix(value)));
}

void Redactor::LearnName(std::string_view name) {
  if (name.empty() || IsPublic(name)) return;
  const std::string folded = Fold(name);
  Remember(folded);
}

void Redactor::LearnPath(std::string_view path) {
  while (!path.empty()) {
    const std::string_view name = path.substr(0, path.find_first_of("/\\"));
    LearnName(name);
    path.remove_prefix(std::min(path.size(), name.size() + 1));
  }
}

void Redactor::LearnFrom(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view rest = text.substr(i);
    for (const std::string_view form :
         {"hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh", "hh:hh:hh:hh:hh:hh"}) {
      const bool starts = i == 0 || !IsHex(text[i - 1]);
      if (starts && BeginsWithForm(rest, form)) Learn(rest.substr(0, form.size()));
    }
    for (const std::string_view home : kHomes) {
      if (rest.starts_with(home)) LearnName(UpToSeparator(rest.substr(home.size())));
    }
  }
}

void Redactor::Bind(std::string_view id, std::string_view digest) {
  tokens_[Fold(WithoutPrefix(id))] = Fold(WithoutPrefix(digest));
}

// HMAC of RFC 2104.
std::string Redactor::Digest(std::string_view label, std::string_view text) const {
  constexpr std::size_t kBlock = 64;
  std::string key = key_.size() > kBlock ? Md5Digest(key_).HexDigest() : key_;
  key.resize(kBlock, '\0');
  std::string inner;
  std::string outer;
  for (const char c : key) {
    inner += static_cast<char>(c ^ 0x36);
    outer += static_cast<char>(c ^ 0x5c);
  }
  inner.append(label).append(1, '\0').append(text);
  return Md5Digest(outer + Md5Digest(inner).HexDigest()).HexDigest();
}

std::string Redactor::Digits(const std::string& text, int round, std::size_t count) const {
  std::string digits;
  for (int part = 0; digits.size() < count; ++part) {
    digits += Digest(std::to_string(round) + "." + std::to_string(part), text);
  }
  return digits.substr(0, count);
}

// Another one is drawn where it stands for another text already, or would show a piece of a value.
bool Redactor::Take(const std::string& token, const std::string& text) {
  const std::string plain = Fold(token);
  bool shows = values_.contains(plain);
  for (std::size_t i = 0; i + kPiece <= plain.size(); ++i) {
    shows = shows || pieces_.contains(plain.substr(i, kPiece));
  }
  if (shows || !owners_.try_emplace(token, text).second) return false;
  tokens_[text] = token;
  return true;
}

std::string Redactor::HexInPlaceOf(std::string_view value) {
  const std::string folded = Fold(value);
  for (int round = 0; !tokens_.contains(folded); ++round) {
    std::string token = Digits(folded, round, folded.size());
    // Whether software set the address, and whether it is one of a group.
    if (token.size() == kAddressDigits) {
      token[1] = kHexDigits[(HexNumber(token[1]) & 12U) | (HexNumber(folded[1]) & 3U)];
    }
    Take(token, folded);
  }
  return Spell(value, tokens_[folded]);
}

// One spelled in another way has a separator more.
std::string Redactor::TextInPlaceOf(std::string_view value) {
  constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz234567";
  const std::string folded = Fold(value);
  for (int round = 0; !tokens_.contains(folded); ++round) {
    std::string token = "x";
    const std::string digits = Digits(folded, round, 2 * kTokenLength);
    for (std::size_t i = 0; i < digits.size(); i += 2) {
      token += kLetters[HexNumber(digits[i]) % 2 * 16 + HexNumber(digits[i + 1])];
    }
    Take(token, folded);
  }
  const std::string exact(value);
  for (int round = 0; !tokens_.contains(exact); ++round) {
    std::string token = tokens_[folded];
    const std::string digits = Digits("spelling " + exact, round, 2);
    token.insert(1 + HexNumber(digits[0]) % kTokenLength, 1, "-._+"[HexNumber(digits[1]) % 4]);
    if (round > kManySpellings) token += "-" + std::to_string(round);
    Take(token, exact);
  }
  return tokens_[exact];
}

std::string Redactor::Value(std::string_view value) {
  if (TellsNothing(value)) return std::string(value);
  const std::string_view core = WithoutPrefix(value);
  const std::string prefix(value.substr(0, value.size() - core.size()));
  return prefix + (KeepsHexForm(Fold(core)) ? HexInPlaceOf(core) : TextInPlaceOf(core));
}

std::string Redactor::Name(std::string_view name) {
  if (name.empty() || IsPublic(name)) return std::string(name);
  return KeepsHexForm(Fold(name)) ? HexInPlaceOf(name) : TextInPlaceOf(name);
}

std::string Redactor::Path(std::string_view path) {
  std::string redacted;
  while (!path.empty()) {
    const std::string_view name = path.substr(0, path.find_first_of("/\\"));
    redacted += Name(name);
    path.remove_prefix(name.size());
    if (path.empty()) break;
    redacted += path.front();
    path.remove_prefix(1);
  }
  return redacted;
}

// The longest one that fits. A short one has to stand by itself, lest it be a part of a word.
const Redactor::Known* Redactor::FindWhole(const Folded& text, std::size_t place) const {
  const Known* longest = nullptr;
  for (std::size_t length = 1; length <= kStart && place + length <= text.text.size(); ++length) {
    const auto found = known_.find(text.text.substr(place, length));
    if (found == known_.end()) continue;
    for (const Known& known : found->second) {
      const std::size_t size = known.folded.size();
      if (text.text.compare(place, size, known.folded) != 0) continue;
      const char before = text.Before(place);
      const char behind = text.Behind(place, size);
      if (size < kPiece && (Counts(before) || Counts(behind))) continue;
      if (size < kStart && !StandsApart(before, behind)) continue;
      if (longest == nullptr || size > longest->folded.size()) longest = &known;
    }
  }
  return longest;
}

Redactor::Span Redactor::FindAt(const Folded& text, std::size_t place) const {
  Span span;
  span.begin = text.places[place];
  if (const Known* whole = FindWhole(text, place)) {
    span.whole = whole;
    span.folded_length = whole->folded.size();
  } else {
    std::size_t length = 0;
    while (place + length + kPiece <= text.text.size() &&
           pieces_.contains(text.text.substr(place + length, kPiece))) {
      ++length;
    }
    span.folded_length = length == 0 ? 0 : length + kPiece - 1;
  }
  if (span.folded_length > 0) span.end = text.places[place + span.folded_length - 1] + 1;
  return span;
}

std::string Redactor::Replace(std::string_view text, const Span& span) {
  const std::string_view stretch = text.substr(span.begin, span.end - span.begin);
  const bool turned = span.whole != nullptr && (span.whole->backwards || span.whole->by_pairs);
  if (KeepsHexForm(Fold(stretch))) return HexInPlaceOf(stretch);
  return turned ? TextInPlaceOf(Fold(stretch)) : TextInPlaceOf(stretch);
}

std::string Redactor::Text(std::string_view text) {
  const Folded folded(text);
  std::string redacted;
  std::size_t done = 0;
  for (std::size_t place = 0; place < folded.text.size();) {
    const Span span = FindAt(folded, place);
    if (span.folded_length == 0) {
      ++place;
      continue;
    }
    redacted.append(text.substr(done, span.begin - done)).append(Replace(text, span));
    done = span.end;
    place += span.folded_length;
  }
  return redacted.append(text.substr(done));
}

}  // namespace system_info
