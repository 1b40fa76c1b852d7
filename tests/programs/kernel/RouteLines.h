#pragma once

#include "programs/kernel/RtnlSocket.h"
#include "programs/state/State.h"

#include <filesystem>
#include <set>
#include <string>

// Routes and interfaces as one line of text each, made from a State and, by rules of their own, from what iproute2
// printed as JSON: the two must be equal.
namespace kernelTest {

using Lines = std::set<std::string>;

Lines routeLines(state::State const& state);
Lines interfaceLines(state::State const& state);

// `addresses`, `routes4` and `routes6` are the output of `ip -j -d addr`, `ip -j -d -4 route show table all` and `-6`.
struct IpJson {
   std::string addresses;
   std::string routes4;
   std::string routes6;

   bool operator==(IpJson const&) const = default;
};
Lines routeLines(IpJson const& json);
Lines interfaceLines(IpJson const& json);

// What is in one of them only, one line each; empty when they are equal.
std::string difference(Lines const& actual, Lines const& expected);

// The recorded machine in one of its states: "up", "carrierdown", "linkdown".
std::filesystem::path dataOf(std::string const& name);
kernel::Dumps recordedDumps(std::string const& name);
IpJson recordedJson(std::string const& name);

}  // namespace kernelTest
