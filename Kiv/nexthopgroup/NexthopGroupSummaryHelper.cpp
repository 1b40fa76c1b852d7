#include "Kiv/nexthopgroup/NexthopGroupSummaryHelper.h"

#include "Kiv/common/SafeLookup.h"
#include "Kiv/common/Trace.h"
#include "Kiv/common/Watchdog.h"
#include "Kiv/nexthopgroup/NexthopGroupSize.h"
#include "Kiv/nexthopgroup/NexthopGroupTypeStrings.h"
#include "Kiv/nexthopgroup/PrintOperation.h"
#include "Kiv/nexthopgroup/WalkYielding.h"
#include "cliprint/JsonScope.h"

namespace Kiv {

namespace {

using cliprint::Attr32Info;
using cliprint::JsonScope;
using cliprint::RendererV2;

template <class Key>
void countInc(Zam::OrderedMap<Key, U32>& counts, Key key) {
   if (auto* const count = counts.find(key); count != nullptr) {
      ++*count;
   } else {
      counts.insertOrReplace(key, 1);
   }
}

void addTableHeader(RendererV2& renderer, std::string_view what) {
   renderer.addFrills("%20s %12s\n-------------------- ------------\n", what, "Configured");
}

template <class KeyAttribute>
void addCount(RendererV2& renderer, KeyAttribute const& key, U32 groups) {
   renderer.startSimpleDictEntry(key);
   Attr32Info const count("count", renderer, groups);
   renderer.addAttributes("%12d\n", count.getArg());
   renderer.endSimpleDictEntry();
}

// Type and count stand without a blank between them, which is how everyone who reads this table by columns knows it.
void printPerType(NexthopGroupSummaryHelper const& summary, RendererV2& renderer) {
   for (auto const& [type, count] : summary.nhgPerType) {
      NexthopGroupTypeAttrInfo key("type", renderer);
      key.setValue(type);
      renderer.addFrills("%20s", key.getArg());
      addCount(renderer, key, count);
   }
}

void printPerSize(NexthopGroupSummaryHelper const& summary, RendererV2& renderer) {
   for (auto const& [size, count] : summary.nhgPerSize) {
      Attr32Info const key("size", renderer, size);
      renderer.addFrills("%20d ", key.getArg());
      addCount(renderer, key, count);
   }
}

void printNexthopGroupSummary(NexthopGroupSummaryHelper const& summary, RendererV2& renderer) {
   trace(8, "printNexthopGroupSummary",
         "void printNexthopGroupSummary(Kiv::NexthopGroupSummaryHelper*, cliprint::RendererV2&)");
   Attr32Info const count("numNexthopGroups", renderer, summary.nhgCount);
   renderer.addAttributes("Number of Nexthop Groups configured: %d\n", count.getArg());
   Attr32Info const unprogrammed("numUnprogrammedNexthopGroups", renderer, summary.nhgUnprogrammedCount);
   renderer.addAttributes("Number of unprogrammed Nexthop Groups: %d\n", unprogrammed.getArg());
   auto perType = JsonScope::object(renderer, "numNexthopGroupsPerType");
   if (summary.nhgCount == 0) {
      return;
   }
   renderer.addFrills("\n");
   addTableHeader(renderer, "Nexthop Group Type");
   printPerType(summary, renderer);
   renderer.addFrills("\n");
   perType.close();
   auto const perSize = JsonScope::object(renderer, "numNexthopGroupsPerSize");
   addTableHeader(renderer, "Nexthop Group Size");
   printPerSize(summary, renderer);
}

}  // namespace

void NexthopGroupSummaryHelper::processNexthopGroups() {
   trace(8, "processNexthopGroups", "void Kiv::NexthopGroupSummaryHelper::processNexthopGroups()");
   if (!nhgConfig) {
      nhgCount = 0;
      return;
   }
   nhgCount = static_cast<U32>(nhgConfig->nexthopGroup().size());
   auto const vrfStatus = nhgHwStatus ? nhgHwStatus->vrfStatus(vrfName) : nullptr;
   U32 const maxSize = routingHwStatus ? routingHwStatus->maxNexthopGroupSize() : 0;
   U32 walked = 0;
   walkYielding(nhgConfig->nexthopGroup(), walked, [&](Zam::String const& name, auto const& group) {
      countInc(nhgPerType, group->type());
      countInc(nhgPerSize, getNhgSize(group, maxSize));
      auto const id = safeLookup(nhgEntryStatus.get(), [&](auto const& ids) { return ids.nexthopGroupNameToId(name); });
      if (!vrfStatus || !vrfStatus->programmed(id)) {
         nhgUnprogrammedCountInc(1);
      }
      return true;
   });
}

bool NexthopGroupSummaryHelper::render(U32 fd, U32 fmt) const {
   trace(8, "render", "void Kiv::NexthopGroupSummaryHelper::render(U32, U32)");
   return printOperation(fd, fmt, [this](RendererV2& renderer) { printNexthopGroupSummary(*this, renderer); });
}

}  // namespace Kiv
