#pragma once

#include "Lumen/Ip6Addr.h"
#include "Lumen/IpGenAddr.h"
#include "Vault/Fib.h"
#include "programs/command/Command.h"
#include "state/Inputs.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// Selected routes as plain rows, from which Python's objects and columns are made. They keep what they need; the tables
// may go.
namespace kivPython {

struct Row {
   Lumen::Ip6Addr address{};  // an IPv4 address in the low four bytes
   U32 metric = 0;
   U32 sourceVrf = 0;
   U32 fec = 0;  // a place among the FECs of its list
   U8 length = 0;
   U8 type = 0;
   U8 preference = 0;
   bool isInHardware = true;
   bool isInKernel = true;
};

struct ViaValue {
   std::optional<Lumen::IpGenAddr> nexthop{};  // nothing when the destination is on the link
   std::string interface {};
   std::string vrf{};
   std::optional<U32> label{};
   std::optional<U32> weight{};  // nothing among vias of equal weight
   bool isBackup = false;
   std::string nexthopGroup{};
   std::optional<U64> tunnel{};
   std::optional<U64> fec{};  // that it resolves through
   std::string action{};
};

struct Selected {
   Lumen::AddressFamily family = Lumen::AddressFamily::ipv4;
   std::string vrf{};
   std::vector<Row> rows{};  // in prefix order
   std::vector<Vault::Fib::FecId> fecs{};
   std::function<std::vector<ViaValue>(Vault::Fib::FecId fecId)> vias{};
   Zam::Ptr<Vrf::VrfIdMap::Status const> vrfNames{};

   bool isIpv4() const { return family == Lumen::AddressFamily::ipv4; }
};

// By the arguments of a command "show ip route" or "show ipv6 route". Ends with an interrupt.
Selected selectedBy(state::Inputs& inputs, kiv::Request const& request);

// How a type of that family is called in the model, and its code in the text; empty for one that has none.
std::string_view typeWord(Lumen::AddressFamily family, U8 type);
std::string_view typeCode(Lumen::AddressFamily family, U8 type);

}  // namespace kivPython
