#include "state/text/Context.h"

#include <algorithm>
#include <charconv>

namespace state {
namespace {

template <class Map>
typename std::decay_t<decltype(*std::declval<Map const&>().find({}))> known(Node const& node, Map const& map,
                                                                            std::string_view kind) {
   auto const* const found = map.find(node.text());
   if (found == nullptr) {
      node.fail(std::string("no such ").append(kind));
   }
   return *found;
}

constexpr U8 srTeAdjType = 20;

constexpr auto adjTypeNames = std::to_array<std::pair<std::string_view, U8>>(
    {{"ipv4", 0}, {"ipv6", 1}, {"attached", 4}, {"indexed", 15}, {"srTe", srTeAdjType}, {"evpn", 24}});

template <class T>
bool wholeNumber(std::string_view text, T& value) {
   auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
   return error == std::errc() && end == text.data() + text.size();
}

bool adjTypeOf(std::string_view text, U8& adjType) {
   for (auto const& [name, value] : adjTypeNames) {
      if (name == text) {
         adjType = value;
         return true;
      }
   }
   return wholeNumber(text, adjType);
}

}  // namespace

VrfId Reading::vrf(Node const& node) const {
   return known(node, vrfIds, "VRF");
}

Lumen::IntfId Reading::interface(Node const& node) const {
   return known(node, interfaces, "interface");
}

U32 Reading::nexthopGroup(Node const& node, std::string_view name) const {
   U32 const* const id = nexthopGroups.find(name);
   if (id == nullptr) {
      node.fail("no such nexthop group");
   }
   return *id != 0 ? *id : (node.fail("this nexthop group has no id"), 0);
}

FecId Reading::fec(Node const& node) const {
   FecId const fecId = fecIdOf(node, node.text());
   if (!fecsElsewhere && !fecs.contains(fecId)) {
      node.fail("no such FEC");
   }
   return fecId;
}

FecId Reading::policyFec(Node const& node) const {
   FecId const fecId = fecIdOf(node, node.text());
   if (!fecsElsewhere && !policyFecs.contains(fecId)) {
      node.fail("no such policy FEC");
   }
   return fecId;
}

FecId Reading::routeFec(Node const& node) const {
   FecId const fecId = fecIdOf(node, node.text());
   bool const isOfPolicy = fecId.value() >> FecId::idBits == srTeAdjType && policyFecs.contains(fecId);
   return isOfPolicy ? fecId : fec(node);
}

Writing::Writing(State const& written, U8 document) : state(written), part(document) {
   for (VrfState const& each : state.vrfs) {
      vrfNames.insertOrReplace(each.id, each.name);
   }
   for (NexthopGroup const& group : state.nexthopGroups) {
      nexthopGroupNames.insertOrReplace(group.id, group.name);
   }
}

std::string_view Writing::vrf(VrfId id) const {
   auto const* const name = vrfNames.find(id);
   return name != nullptr ? *name : (cannotSay("VRF " + std::to_string(id)), std::string_view());
}

std::string_view Writing::nexthopGroup(U32 id) const {
   auto const* const name = nexthopGroupNames.find(id);
   return name != nullptr ? *name : (cannotSay("nexthop group " + std::to_string(id)), std::string_view());
}

U8 partOf(Reading const& reading) {
   return reading.part;
}

U8 partOf(Writing const& writing) {
   return writing.part;
}

void cannotSay(std::string const& what) {
   throw Hive::StateError("a snapshot has no name for " + what);
}

// Types beyond the largest are let through: what reads the tables has to cope with them.
FecId fecIdOf(Node const& node, std::string_view text) {
   std::size_t const colon = text.find(':');
   U8 adjType = 0;
   U64 id = 0;
   if (colon == std::string_view::npos || !adjTypeOf(text.substr(0, colon), adjType) ||
       !wholeNumber(text.substr(colon + 1), id)) {
      node.fail("not a FEC id such as ipv4:17");
   }
   if (id == 0 || id > FecId::idMask) {
      node.fail("FEC number not from 1 to " + std::to_string(FecId::idMask));
   }
   return FecId(U64{adjType} << FecId::idBits | id);
}

std::string fecText(FecId fecId) {
   auto const adjType = static_cast<U8>(fecId.value() >> FecId::idBits);
   auto const named = std::ranges::find(adjTypeNames, adjType, &decltype(adjTypeNames)::value_type::second);
   return (named != adjTypeNames.end() ? std::string(named->first) : std::to_string(adjType)) + ":" +
          std::to_string(fecId.id());
}

void exitIs(Node const& node, Lumen::IntfId& exit, Lumen::IntfId const& intfId) {
   if (exit.isValid()) {
      node.fail("the via already leaves through " + exit.stringValue());
   }
   exit = intfId;
}

}  // namespace state
