// What a repair changes in the state folders, or why there is no such repair. Decided from plain
// data: nothing is read or written here.

#ifndef DEVICEID_TOOLS_DEVICEID_REPAIR_PLAN_H_
#define DEVICEID_TOOLS_DEVICEID_REPAIR_PLAN_H_

#include <string>
#include <vector>

#include "inspection/explanation.h"
#include "tools/deviceid/output.h"

namespace deviceid {

// What a plan rests on.
struct RepairSight {
  std::vector<system_info::StateFolder> folders;  // As in a MachineState.
  std::vector<std::string> paths;                 // Of these folders, as the library builds them.
  system_info::Explanation present;
  system_info::PlayedCall next;
  // A call that finds all files empty, and makes a random id: where the library stores an id and a
  // record now, and the record of the present hardware.
  system_info::PlayedCall fresh;
  bool readable_hardware = false;
};

struct RepairPlan {
  // In this order. Each state on the way is one in which a call of a host changes nothing that the
  // next change does not put right.
  std::vector<system_info::FileChange> changes;
  std::string id;  // What the next call has to return; empty if it makes a new id.
  // If there is no such repair.
  std::string refusal;
  Status status = kGood;
};

// The id in the record goes back into its file.
RepairPlan PlanRestore(const RepairSight& sight);

// `id`, as hosts of format 2.0 get it, becomes that of the present hardware.
RepairPlan PlanKeep(const RepairSight& sight, const std::string& id);

// All ids and records go.
RepairPlan PlanAnew(const RepairSight& sight);

}  // namespace deviceid

#endif  // DEVICEID_TOOLS_DEVICEID_REPAIR_PLAN_H_
