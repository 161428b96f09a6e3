#include "study/rules.h"

#include <algorithm>

namespace system_info {
namespace {

// The formats in the order of their rules.
constexpr std::array kFormats = {"2.0", "1.6", "1.5", "1.4", "1.2", "1.1", "1.0"};

std::string AddressText(const Adapter& adapter) { return std::to_string(adapter.address) + '/'; }

std::string FirstAddress(const Computer& computer) {
  const auto listed = ListedAdapters(computer);
  return listed.empty() ? "" : AddressText(*listed.front());
}

// In an order of their own, so that the system's does not matter.
std::string AllAddresses(const Computer& computer) {
  std::vector<std::string> addresses;
  for (const Adapter* adapter : ListedAdapters(computer))
    addresses.push_back(AddressText(*adapter));
  std::sort(addresses.begin(), addresses.end());
  std::string all;
  for (const std::string& address : addresses) all += address;
  return all;
}

std::string BuiltInAddress(const Computer& computer) {
  const auto devices = PciAdapters(computer);
  return devices.empty() ? "" : AddressText(*devices.front());
}

std::string Serial(const Computer& computer, const std::string& text) {
  return computer.reads_serials ? text : "";
}

// All that the library may find on `computer`, files of format 2.0 and the date left out.
std::string FindingsOf(const Computer& computer) {
  std::string all = Serial(
      computer, computer.system_uuid + '/' + computer.product.text + '/' + computer.board.text);
  all += '/' + computer.drive.volume.text + '/' + computer.drive.system_serial + '/';
  for (const auto& adapters : {ListedAdapters(computer), PciAdapters(computer)}) {
    for (const Adapter* adapter : adapters) all += adapter->name + AddressText(*adapter);
  }
  all += std::to_string(computer.account);
  for (const auto& [path, content] : computer.drive.stored[0]) all += path + content;
  return all;
}

}  // namespace

const std::array<const char*, kRuleCount> kRuleNames = {
    "format 2.0",   "format 1.6",    "format 1.5",    "format 1.4",    "format 1.2",
    "format 1.1",   "format 1.0",    "machine id",    "first address", "system UUID",
    "board serial", "UUID and disk", "all addresses", "five parts",    "vote of 70 %"};

std::string IdByRule(Rule rule, const Computer& computer) {
  std::string uuid = Serial(computer, computer.system_uuid);
  std::string board = Serial(computer, computer.board.text);
  switch (rule) {
    case kMachineId:
      return computer.drive.machine_id.text;
    case kFirstAddress:
      return FirstAddress(computer);
    case kSystemUuid:
      return uuid;
    case kBoardSerial:
      return board;
    case kUuidAndDisk:
      return uuid + Serial(computer, computer.disk);
    case kAllAddresses:
      return AllAddresses(computer);
    case kFiveParts:
      return uuid + board + Serial(computer, computer.disk) + computer.processor +
             FirstAddress(computer);
    default:
      return "";
  }
}

Ballot TakeBallot(const Computer& computer) {
  return {Serial(computer, computer.system_uuid),
          Serial(computer, computer.product.text),
          Serial(computer, computer.board.text),
          Serial(computer, computer.disk),
          computer.drive.volume.text,
          BuiltInAddress(computer),
          computer.processor,
          computer.memory};
}

void Watch::Look(Computer& computer, int day) {
  LookByFormats(computer, day);
  for (int rule = kMachineId; rule < kVote; ++rule) {
    Note(static_cast<Rule>(rule), IdByRule(static_cast<Rule>(rule), computer), day);
  }
  Vote(computer, day);
  begun_ = true;
}

void Watch::LookByFormats(Computer& computer, int day) {
  Note(kFormat20, library_.GetId(computer, "2.0", day, habit_.recheck), day);
  if (!habit_.all_formats) return;
  Answers& answers = answers_[FindingsOf(computer)];
  const bool known = ++answers.times > 2;
  for (std::size_t rule = kFormat16; rule < kFormats.size(); ++rule) {
    if (!known) answers.ids.at(rule) = library_.GetId(computer, kFormats.at(rule), day);
    Note(static_cast<Rule>(rule), answers.ids.at(rule), day);
  }
}

void Watch::Note(Rule rule, const std::string& id, int day) {
  Course& course = courses_.at(rule);
  if (!begun_) course.first = id;
  course.last = id;
  const bool lost = id.empty() || id != course.first;
  if (lost && course.lost_on < 0) course.lost_on = day;
}

// A machine that no longer matches is stored anew, under another id: the day.
void Watch::Vote(const Computer& computer, int day) {
  const Ballot present = TakeBallot(computer);
  const bool same = begun_ && SameByVote(stored_ballot_, present);
  if (!same) stored_ballot_ = present;
  Note(kVote, same ? courses_[kVote].last : "since " + std::to_string(day), day);
}

}  // namespace system_info
