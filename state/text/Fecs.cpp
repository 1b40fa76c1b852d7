#include "state/text/Sections.h"

#include <array>

namespace state {
namespace {

using Vault::Fib::ForwardingAction;
using Vault::Fib::Via;

constexpr U8 ipv6AdjType = 1;

constexpr auto actionNames =
    std::to_array<Name<ForwardingAction>>({{"forward", ForwardingAction::forward},
                                           {"forwardVrf", ForwardingAction::forwardVrf},
                                           {"decap", ForwardingAction::decap},
                                           {"decapForwardVrf", ForwardingAction::decapForwardVrf}});

struct ListedVia {
   Via via{};
   bool backup = false;
};

struct ViaRecord {
   using Value = ListedVia;
   static constexpr std::string_view name = "via";
   static constexpr std::string_view rules =
       R"("description":"Leaves through at most one of interface, fec and nexthopGroup. )"
       R"(Without nexthop it is directly connected.")";
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<GenAddr, &Value::via, &Via::hop>("nexthop"), interfaceExit<&Value::via, &Via::intfId>,
        fecExit<&Value::via, &Via::intfId>, groupExit<&Value::via, &Via::intfId>,
        member<RawNumber<Vault::Fib::ViaWeight, U16>, &Value::via, &Via::weight>("weight"),
        member<RawNumber<Vault::Fib::ViaLabel, U32>, &Value::via, &Via::label>("label"),
        member<Flag, &Value::backup>("backup"), member<TunnelRef, &Value::via, &Via::tunnelId>("tunnel"),
        member<NameOrNumber<actionNames, maxU8>, &Value::via, &Via::forwardingAction>("action"),
        member<VrfRef, &Value::via, &Via::forwardingVrf>("forwardingVrf"),
        member<FecRef<anyFec>, &Value::via, &Via::fecId>("indexedFec")});
};

void addVia(Node const& node, ViaList& list, Reading& reading) {
   if (list.vias.size() == Vault::Fib::maxVias) {
      node.fail("more than " + std::to_string(Vault::Fib::maxVias) + " vias");
   }
   ListedVia const read = Object<ViaRecord>::read(node, reading);
   if (read.backup && list.primaryVias == 0) {
      node.fail("a backup without a primary via before it");
   }
   if (!read.backup && list.primaryVias != list.vias.size()) {
      node.fail("a primary via after a backup");
   }
   list.primaryVias = static_cast<U16>(list.primaryVias + (read.backup ? 0 : 1));
   list.vias.push_back(read.via);
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

void nameFec(Node const& node, Zam::HashMap<FecId, bool>& names) {
   FecId const fecId = fecIdOf(node, node.key());
   if (names.contains(fecId)) {
      node.fail("another name of the same FEC is given too");
   }
   names.insertOrReplace(fecId, true);
}

// Behind the ids that have names; after the highest one, between them.
FecId unnamedId(Reading& reading, U8 adjType) {
   do {
      reading.lastFecId = reading.lastFecId % FecId::idMask + 1;
   } while (reading.fecs.contains(FecId::of(adjType, reading.lastFecId)));
   return FecId::of(adjType, reading.lastFecId);
}

template <class Fec>
void writeFecs(JsonWriter& out, Writing const& writing, std::vector<Fec> const& fecs) {
   for (Fec const& fec : fecs) {
      out.key(fecText(fec.fecId));
      Vias::write(out, writing, {fec.primaryVias, fec.vias});
   }
}

std::string fecsSchema(Schema& schema) {
   return "\"type\":\"object\",\"propertyNames\":{" + fecSchema(schema) + "},\"additionalProperties\":{" +
          Vias::schema(schema) + "}";
}

constexpr Member<State> fecs{
    "fecs",
    [](Node const& node, Reading& reading, State& state) {
       node.forEachMember([&](Node const& fec) { addFec(state, fecIdOf(fec, fec.key()), Vias::read(fec, reading)); });
    },
    [](State const& state) { return !state.fecs.empty() || !state.fecs6.empty() || !state.fecsGen.empty(); },
    [](JsonWriter& out, Writing const& writing, State const& state) {
       out.open('{');
       writeFecs(out, writing, state.fecs);
       writeFecs(out, writing, state.fecs6);
       writeFecs(out, writing, state.fecsGen);
       out.close('}');
    },
    fecsSchema};

constexpr Member<State> policyFecs{
    "policyFecs",
    [](Node const& node, Reading& reading, State& state) {
       node.forEachMember([&](Node const& fec) {
          nameFec(fec, reading.policyFecs);
          state.policyFecs.push_back(fecOf<Vault::Fib::Fec>(fecIdOf(fec, fec.key()), Vias::read(fec, reading)));
       });
    },
    [](State const& state) { return !state.policyFecs.empty(); },
    [](JsonWriter& out, Writing const& writing, State const& state) {
       out.open('{');
       writeFecs(out, writing, state.policyFecs);
       out.close('}');
    },
    fecsSchema};

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

ViaList Vias::read(Node const& node, Reading& reading) {
   ViaList list;
   node.forEachElement([&](Node const& via) { addVia(via, list, reading); });
   return list;
}

void Vias::write(JsonWriter& out, Writing const& writing, ViaList const& list) {
   out.open('[');
   for (std::size_t i = 0; i < list.vias.size(); ++i) {
      if (list.vias[i].intfId.isDynamicTunnel()) {
         cannotSay("the interface " + list.vias[i].intfId.stringValue());
      }
      Object<ViaRecord>::write(out, writing, {list.vias[i], i >= list.primaryVias});
   }
   out.close(']');
}

std::string Vias::schema(Schema& schema) {
   return schema.defined("vias", [&] {
      return R"("description":"Primary vias, then backups. An empty list is a FEC without vias.","type":"array",)"
             "\"maxItems\":" +
             std::to_string(Vault::Fib::maxVias) + ",\"items\":{" + Object<ViaRecord>::schema(schema) + "}";
   });
}

FecId inlineFec(Reading& reading, U8 adjType, ViaList list) {
   auto& known = reading.inlineFecs[adjType];
   if (FecId const* const same = known.find(list); same != nullptr) {
      return *same;
   }
   FecId const fecId = unnamedId(reading, adjType);
   known.insertOrReplace(list, fecId);
   addFec(reading.state, fecId, std::move(list));
   return fecId;
}

void nameFecs(Node const& node, Reading& reading) {
   node.forEachMember([&](Node const& fec) {
      nameFec(fec, reading.fecs);
      reading.lastFecId = std::max(reading.lastFecId, fecIdOf(fec, fec.key()).id());
   });
}

std::span<Member<State> const> fecSections() {
   static constexpr auto sections = std::to_array<Member<State>>(
       {fecs.about(
                "The vias of FECs that routes and vias name; no need for those that only one list of vias describes.")
            .in(snapshotPart),
        policyFecs.about("The FECs of the policy forwarding table.").in(snapshotPart)});
   return sections;
}

}  // namespace state
