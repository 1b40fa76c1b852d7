#include "Kiv/nexthopgroup/NexthopGroupMappingHelper.h"

#include "Kiv/common/SafeLookup.h"
#include "Kiv/common/Trace.h"
#include "Kiv/common/Watchdog.h"
#include "Kiv/nexthopgroup/PrintOperation.h"
#include "Kiv/nexthopgroup/WalkYielding.h"
#include "cliprint/JsonScope.h"

namespace Kiv {

namespace {

void fillIdName(NexthopGroupMappingHelper& mapping) {
   if (!mapping.nhgConfig) {
      return;
   }
   U32 walked = 0;
   walkYielding(mapping.nhgConfig->nexthopGroup(), walked, [&](Zam::String const& name, auto const&) {
      auto const id =
          safeLookup(mapping.nhgEntryStatus.get(), [&](auto const& ids) { return ids.nexthopGroupNameToId(name); });
      mapping.nhgIdName.insertOrReplace(id, name);
      return true;
   });
}

void printMapping(NexthopGroupMappingHelper const& mapping, cliprint::RendererV2& renderer) {
   auto const groups = cliprint::JsonScope::object(renderer, "nexthopGroups");
   renderer.addFrills("\n%16s %s\n---------------- --------------------\n", "Nexthop Group ID", "Nexthop Group Name");
   U32 printed = 0;
   for (auto const& [groupId, name] : mapping.nhgIdName) {
      allowWatchdog(printed);
      cliprint::Attr32Info const id("groupId", renderer, groupId);
      renderer.addFrills("%16d ", id.getArg());
      renderer.startSimpleDictEntry(id);
      cliprint::StringAttrInfo const groupName("groupName", renderer, name);
      renderer.addAttributes("%s\n", groupName.getArg());
      renderer.endSimpleDictEntry();
      if (!streams(renderer)) {
         return;
      }
   }
   renderer.addFrills("\n");
}

}  // namespace

bool NexthopGroupMappingHelper::render(U32 fd, U32 fmt) {
   trace(8, "render", "void Kiv::NexthopGroupMappingHelper::render(U32, U32)");
   fillIdName(*this);
   return printOperation(fd, fmt, [this](auto& renderer) { printMapping(*this, renderer); });
}

}  // namespace Kiv
