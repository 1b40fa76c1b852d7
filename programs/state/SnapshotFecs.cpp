#include "programs/state/SnapshotContext.h"

namespace state {
namespace {

using Vault::Fib::ForwardingAction;
using Vault::Fib::Via;

constexpr U8 ipv6AdjType = 1;

constexpr auto actionNames = std::to_array<std::pair<std::string_view, ForwardingAction>>(
    {{"forward", ForwardingAction::forward},
     {"forwardVrf", ForwardingAction::forwardVrf},
     {"decap", ForwardingAction::decap},
     {"decapForwardVrf", ForwardingAction::decapForwardVrf}});

struct ViaTarget {
   Context const& context;
   Via via{};
   bool backup = false;
};

constexpr auto viaMembers = std::to_array<Member<ViaTarget>>({
    {"nexthop", [](Node const& n, ViaTarget& t) { t.via.hop = genAddrOf(n); }},
    {"interface", [](Node const& n, ViaTarget& t) { exitIs(n, t.via.intfId, t.context.interface(n)); }},
    {"weight", [](Node const& n, ViaTarget& t) { t.via.weight = Vault::Fib::ViaWeight::fromRaw(n.number<U16>()); }},
    {"label", [](Node const& n, ViaTarget& t) { t.via.label = Vault::Fib::ViaLabel::fromRaw(n.number<U32>()); }},
    {"backup", [](Node const& n, ViaTarget& t) { t.backup = n.boolean(); }},
    {"fec",
     [](Node const& n, ViaTarget& t) { exitIs(n, t.via.intfId, Lumen::IntfId::fromFecId(t.context.fec(n).value())); }},
    {"nexthopGroup",
     [](Node const& n, ViaTarget& t) {
        exitIs(n, t.via.intfId, Lumen::IntfId::fromNexthopGroup(t.context.nexthopGroup(n)));
     }},
    {"tunnel", [](Node const& n, ViaTarget& t) { t.via.tunnelId = tunnelIdOf(n); }},
    {"action", [](Node const& n, ViaTarget& t) { t.via.forwardingAction = namedOf(n, actionNames); }},
    {"forwardingVrf", [](Node const& n, ViaTarget& t) { t.via.forwardingVrf = t.context.vrf(n); }},
    {"indexedFec", [](Node const& n, ViaTarget& t) { t.via.fecId = fecIdOf(n, n.text()); }},
});

void addVia(Node const& node, ViaList& list, Context const& context) {
   if (list.vias.size() == Vault::Fib::maxVias) {
      node.fail("more than " + std::to_string(Vault::Fib::maxVias) + " vias");
   }
   ViaTarget target{context};
   readObject(node, viaMembers, target);
   if (target.backup && list.primaryVias == 0) {
      node.fail("a backup without a primary via before it");
   }
   if (!target.backup && list.primaryVias != list.vias.size()) {
      node.fail("a primary via after a backup");
   }
   list.primaryVias = static_cast<U16>(list.primaryVias + (target.backup ? 0 : 1));
   list.vias.push_back(target.via);
}

template <class Fec>
Fec fecOf(FecId fecId, ViaList list) {
   return {fecId, list.primaryVias, std::move(list.vias)};
}

// A corrupted adjacency type does not say where its FEC is, so it is where the others are.
void addFec(State& state, FecId fecId, ViaList list) {
   if (state.genericFib) {
      state.fecsGen.push_back(fecOf<Vault::FibGen::Fec>(fecId, std::move(list)));
   } else if (fecId.value() >> FecId::idBits == ipv6AdjType) {
      state.fecs6.push_back(fecOf<Vault::Fib6::Fec>(fecId, std::move(list)));
   } else {
      state.fecs.push_back(fecOf<Vault::Fib::Fec>(fecId, std::move(list)));
   }
}

void nameFec(Node const& node, Context& context) {
   FecId const fecId = fecIdOf(node, node.key());
   if (context.fecs.contains(fecId)) {
      node.fail("another name of the same FEC is given too");
   }
   context.fecs.insertOrReplace(fecId, true);
   context.lastFecId = std::max(context.lastFecId, fecId.id());
}

}  // namespace

std::size_t ViaListHash::operator()(ViaList const& list) const noexcept {
   U64 hash = list.primaryVias;
   for (Via const& via : list.vias) {
      hash = Zam::combinedHash(hash, via.intfId.hashValue());
      hash = Zam::combinedHash(hash, via.hop.hashValue());
      hash = Zam::combinedHash(hash, U64{via.label.raw()} << 32 | via.weight.raw());
      hash = Zam::combinedHash(hash, via.tunnelId ^ via.fecId.value());
   }
   return hash;
}

ViaList readVias(Node const& node, Context const& context) {
   ViaList list;
   node.forEachElement([&](Node const& via) { addVia(via, list, context); });
   return list;
}

FecId inlineFec(Context& context, U8 adjType, ViaList list) {
   auto& known = context.inlineFecs[adjType];
   if (FecId const* const same = known.find(list); same != nullptr) {
      return *same;
   }
   FecId const fecId = FecId::of(adjType, ++context.lastFecId);
   known.insertOrReplace(list, fecId);
   addFec(context.state, fecId, std::move(list));
   return fecId;
}

void nameFecs(Node const& node, Context& context) {
   node.forEachMember([&](Node const& fec) { nameFec(fec, context); });
}

void readFecs(Node const& node, Context& context) {
   node.forEachMember([&](Node const& fec) { addFec(context.state, fecIdOf(fec, fec.key()), readVias(fec, context)); });
}

void readPolicyFecs(Node const& node, Context& context) {
   node.forEachMember([&](Node const& fec) {
      FecId const fecId = fecIdOf(fec, fec.key());
      if (context.policyFecs.contains(fecId)) {
         fec.fail("another name of the same FEC is given too");
      }
      context.policyFecs.insertOrReplace(fecId, true);
      context.state.policyFecs.push_back(fecOf<Vault::Fib::Fec>(fecId, readVias(fec, context)));
   });
}

}  // namespace state
