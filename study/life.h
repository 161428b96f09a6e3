// The life of one machine: what happens to it, and what that does to the ids of all rules.

#ifndef DEVICEID_STUDY_LIFE_H_
#define DEVICEID_STUDY_LIFE_H_

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "study/population.h"
#include "study/rules.h"

namespace system_info {

inline constexpr int kDaysPerYear = 365;
inline constexpr int kLastDay = 3 * kDaysPerYear;

// Why format 2.0 gave another id than on the first day.
struct Loss {
  std::string causes;     // Of the parts that differ.
  bool by_order = false;  // With a fixed place for each part the id would have stayed.
};

class Life {
 public:
  // Machine `number`, from the first day on.
  Life(const Population& population, int number, PlayedLibrary& library, const Habit& habit);

  // Plays all days. What is copied from this machine is added to `copies`, not played yet.
  void Play(std::vector<Life>& copies);

  const Watch& watch() const { return watch_; }
  const Computer& computer() const { return computer_; }
  const std::optional<Loss>& loss() const { return loss_; }

  // What stood for product and board on the first day.
  std::string SerialKind() const { return serial_kind_; }

 private:
  using Event = void (Life::*)(int day);
  struct EventKind {
    const char* rate;
    Event happen;
  };
  static const std::vector<EventKind>& EventKinds();

  // Another machine, with hardware of its own and what `original` has on its drive.
  Life(const Life& original, Computer computer, int day);

  double Number(const char* name) const { return population_.parameters[name]; }
  bool Happens(const char* share, int day) const;
  std::uint64_t Bits(const char* what, int day) const;
  std::vector<std::pair<int, Event>> DrawEvents() const;
  Adapter* BuiltInAdapter(int day);
  Adapter& AddAdapter(AdapterKind kind, const char* name, int day);

  void Look(int day);
  void Settle(int day);
  void SettleAdapter(Adapter& adapter, int day);

  void ReplaceAdapter(int day);
  void DisableAdapter(int day);
  void AddUsbAdapter(int day);
  void AddVirtualSwitch(int day);
  void FailDrive(int day);
  void UpgradeDrive(int day);
  void ReplaceDrive(int day, const char* share_copied);
  void InstallAnew(int day);
  void MakeInstallation(int day, const char* cause);
  void RestoreImage(int day);
  void RestoreFiles(int day);
  void ChangeAccount(int day);
  void ReplaceBoard(int day);
  void ChangeFirmware(int day);
  void UpgradeMemory(int day);
  void CopyDrive(int day);
  void CopyVirtualMachine(int day);
  void MoveVirtualMachine(int day);
  void StartContainer(int day);

  Value NetworkPart() const;
  std::vector<Value> Parts() const;
  Loss FindLoss() const;

  const Population& population_;
  PlayedLibrary& library_;
  Habit habit_;
  Draws draws_;
  Computer computer_;
  Watch watch_;
  int born_;
  SystemDrive backup_;
  int disabled_until_ = -1;
  bool may_read_serials_;
  bool mixed_callers_;
  std::string serial_kind_;
  std::vector<Value> first_parts_;
  std::optional<Loss> loss_;
  std::vector<Life>* copies_ = nullptr;
};

}  // namespace system_info

#endif  // DEVICEID_STUDY_LIFE_H_
