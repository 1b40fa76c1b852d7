#pragma once

#include "Hive/EntityManager.h"
#include "Kiv/CliSupport.h"
#include "tests/Vault/VaultTesting.h"
#include "tests/cliprint/Capture.h"
#include "tests/support/StrictJson.h"

// A box of nexthop groups, whose tables a test fills, and the displays that show them.
namespace Kiv::Testing {

using Routing::NexthopGroup::NexthopGroupEntry;
using Routing::NexthopGroup::NexthopGroupType;

class GroupBox {
 public:
   explicit GroupBox(U32 capacity = 64) {
      Hive::EntityManager::stateDirIs(dir_ / "state");
      manager = Zam::makePtr<Hive::EntityManager>(dir_ / "state");
      ids = manager->create<NexthopGroup::EntryStatusWriter>(NexthopGroup::entryStatusPath, capacity);
      entryStatus = manager->mount<NexthopGroup::EntryStatus>(NexthopGroup::entryStatusPath);
      vrfStatus = hardware->vrfStatusIs("default");
   }

   // The id 0 is none.
   Zam::Ptr<Routing::NexthopGroup::NexthopGroupConfigEntry> groupIs(std::string const& name, U32 id, U32 entries = 0,
                                                                    NexthopGroupType type = NexthopGroupType::ip) {
      auto group = Zam::makePtr<Routing::NexthopGroup::NexthopGroupConfigEntry>(name, type);
      for (U32 index = 0; index < entries; ++index) {
         group->entryIs(index, {{}, Lumen::IpAddr(0xc0000201U + index)});
      }
      config->nexthopGroupIs(group);
      if (id != 0) {
         ids->nexthopGroupIdIs(name, id);
      }
      return group;
   }
   NexthopGroupSummaryHelper summary() const {
      NexthopGroupSummaryHelper summary{{}, config, entryStatus, hardware, capabilities};
      summary.processNexthopGroups();
      return summary;
   }
   NexthopGroupMappingHelper mapping() const { return {{}, config, entryStatus}; }
   NexthopGroupDetailHelper detail() const { return {{}, config, entryStatus, hardware, capabilities}; }

   // What a display prints; a model is a valid document.
   template <class Display>
   static std::string printed(Display&& display, U32 format) {
      testing_cliprint::CapturedFile file;
      EXPECT_TRUE(display.render(static_cast<U32>(file.fd()), format));
      EXPECT_TRUE(format == 1 || testsupport::StrictJson::parse(file.text())) << file.text();
      return file.text();
   }
   std::string fileOf(std::string_view path) const { return manager->stateDir() + "/" + std::string(path); }

   Vault::Testing::TempDir dir_;  // first: the tables go before it
   Zam::Ptr<Hive::EntityManager const> manager;
   Zam::Ptr<NexthopGroup::EntryStatusWriter> ids;
   Zam::Ptr<NexthopGroup::EntryStatus const> entryStatus;
   Zam::Ptr<Routing::NexthopGroup::Config> const config = Zam::makePtr<Routing::NexthopGroup::Config>();
   Zam::Ptr<Routing::Hardware::NexthopGroupStatus> const hardware =
       Zam::makePtr<Routing::Hardware::NexthopGroupStatus>();
   Zam::Ptr<Routing::Hardware::NexthopGroupVrfStatus> vrfStatus;
   Zam::Ptr<Routing::Hardware::Status> const capabilities = Zam::makePtr<Routing::Hardware::Status>();
};

}  // namespace Kiv::Testing
