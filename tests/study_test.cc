// What single events do to the ids of the rules that the study compares.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "study/fleet.h"

namespace system_info {
namespace {

using testing::ElementsAreArray;

void Dock(Computer& pc, bool on_pci) {
  Adapter dock = MakeAdapter(AdapterKind::kDock, "dock", 7);
  dock.in_front = true;
  dock.on_pci = on_pci;
  pc.adapters.push_back(dock);
}

void InstallAnew(Computer& pc) {
  pc.drive = SystemDrive();
  pc.drive.volume.text = "new";
  pc.drive.machine_id.text = "new";
}

struct Fact {
  const char* event;
  void (*happens)(Computer&);
  std::vector<std::string> lost;
};

const std::vector<Fact> kFacts = {
    {"nothing", [](Computer&) {}, {}},
    {"one part of four",
     [](Computer& pc) { pc.board.text = "new"; },
     {"format 1.5", "format 1.4", "format 1.2", "format 1.1", "format 1.0", "board serial",
      "five parts"}},
    {"a PCI dock",
     [](Computer& pc) { Dock(pc, true); },
     {"format 1.5", "first address", "all addresses", "five parts"}},
    {"a USB dock",
     [](Computer& pc) { Dock(pc, false); },
     {"first address", "all addresses", "five parts"}},
    {"a new installation",
     [](Computer& pc) { InstallAnew(pc); },
     {"format 2.0", "format 1.6", "format 1.5", "format 1.4", "format 1.2", "format 1.1",
      "format 1.0", "machine id"}},
    {"another drive with the old content",
     [](Computer& pc) { pc.disk = "new"; },
     {"UUID and disk", "five parts"}},
    {"three of eight parts",
     [](Computer& pc) { pc.disk = pc.processor = pc.memory = "new"; },
     {"UUID and disk", "five parts", "vote of 70 %"}},
    {"a caller who cannot read serial numbers",
     [](Computer& pc) { pc.reads_serials = false; },
     {"format 2.0", "format 1.5", "format 1.4", "format 1.2", "format 1.1", "format 1.0",
      "system UUID", "board serial", "UUID and disk", "five parts", "vote of 70 %"}},
    {"files of another account", [](Computer& pc) { pc.drive.stored = {}; }, {}},
};

class StudyTest : public testing::Test {
 protected:
  PlayedLibrary library;
  Computer pc = OrdinaryComputer(Draws(1));
};

TEST_F(StudyTest, AnEventCostsTheRulesThatRestOnWhatItChanges) {
  for (const Fact& fact : kFacts) {
    Computer changed = pc;
    Watch watch(library);
    watch.Look(changed, 0);
    fact.happens(changed);
    watch.Look(changed, 10);
    std::vector<std::string> lost;
    for (std::size_t rule = 0; rule < kRuleCount; ++rule) {
      if (!watch.Keeps(static_cast<Rule>(rule))) lost.emplace_back(kRuleNames.at(rule));
    }
    EXPECT_THAT(lost, ElementsAreArray(fact.lost)) << fact.event;
  }
}

// The drive of `pc`, which has been asked, in another PC: the rules that tell the two apart.
class CloneTest : public StudyTest {
 protected:
  bool ToldApart(Rule rule, int day) {
    Watch original(library);
    original.Look(pc, 0);
    Computer clone = OrdinaryComputer(Draws(2));
    clone.drive = pc.drive;
    if (!pc.product.text.starts_with("product")) clone.product = clone.board = pc.product;
    Watch watch(library);
    watch.Look(clone, day);
    return watch.course(rule).last != original.course(rule).first;
  }
};

TEST_F(CloneTest, IsToldApartByFormat20AfterTenDaysAndNeverByWhatWasCopied) {
  EXPECT_FALSE(ToldApart(kFormat20, 9));
  EXPECT_TRUE(ToldApart(kFormat20, 10));
  EXPECT_TRUE(ToldApart(kSystemUuid, 0));
  EXPECT_FALSE(ToldApart(kMachineId, 1000) || ToldApart(kFormat16, 1000));
}

TEST_F(CloneTest, IsNeverToldApartWhereTextsThatCountStandForItsSerialNumbers) {
  pc.product.text = pc.board.text = "Default string";
  EXPECT_FALSE(ToldApart(kFormat20, 1000));
}

TEST_F(StudyTest, WithoutReadableHardwareOnlyStoredIdsStay) {
  pc.reads_serials = false;
  pc.adapters.clear();
  pc.drive = SystemDrive();
  Watch watch(library);
  for (const int day : {0, 10, 20}) watch.Look(pc, day);
  EXPECT_TRUE(watch.Keeps(kFormat20) && watch.Keeps(kFormat16));
  EXPECT_FALSE(watch.Keeps(kFormat15) || watch.Keeps(kMachineId));
}

TEST(FleetTest, ComesOutTheSameAgainAndAParameterChangesOnlyWhatDependsOnIt) {
  const std::string file = DEVICEID_SOURCE_DIR "/study/parameters.json";
  Population fleet = {"notebooks", Parameters(file, "notebooks"), Draws(1), 15};
  const auto first = PlayFleet(fleet, {});
  EXPECT_EQ(PlayFleet(fleet, {}), first);
  fleet.parameters.Set("newcomer_first", 1);
  const auto second = PlayFleet(fleet, {});
  EXPECT_NE(second["rules"]["first address"], first["rules"]["first address"]);
  EXPECT_EQ(second["rules"]["machine id"], first["rules"]["machine id"]);
}

}  // namespace
}  // namespace system_info
