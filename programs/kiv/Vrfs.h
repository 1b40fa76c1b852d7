#pragma once

#include "programs/command/Kinds.h"
#include "programs/command/Session.h"

#include <functional>
#include <vector>

// Commands about one VRF or all, whose output is one part per VRF: as text one part after the other, as JSON one
// document with the document of each VRF under its name, whether it is one VRF or several.
namespace kiv {

template <auto Member>
constexpr auto vrfOrAllClause =
    clause<Member, VrfNameOrAll>({.keyword = "vrf", .help = "of this VRF, or of all, not of the default one"});

// All VRFs in the order in which they are shown: the default one first, then by name.
std::vector<state::Inputs::Vrf> vrfsInOrder(state::Inputs const& inputs);
// The VRF of this name; refused when there is none.
state::Inputs::Vrf const& requestedVrf(state::Inputs const& inputs, std::string_view name);
// The same, or all when the name stands for them.
std::vector<state::Inputs::Vrf> requestedVrfs(state::Inputs const& inputs, std::string_view name);
// The interface of this name; refused when there is none.
Zam::Ptr<Interface::IntfStatus const> requestedInterface(state::Inputs const& inputs, std::string_view name);

// Makes the part of a VRF ready, and answers what prints it.
using PrepareVrf = std::function<std::function<ExitStatus()>(state::Inputs::Vrf const& vrf)>;

// Ends with the first VRF whose part is not ok. What fails while the first one is made ready leaves no output.
ExitStatus printPerVrf(Session const& session, std::vector<state::Inputs::Vrf> const& vrfs, PrepareVrf const& prepare);

}  // namespace kiv
