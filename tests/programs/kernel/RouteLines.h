#pragma once

#include "programs/kernel/RtnlSocket.h"
#include "state/State.h"
#include "support/Testing.h"

// Routes and interfaces as one line of text each, made from a State and, by the rules of lines.jq, from what iproute2
// printed as JSON: the two must be equal.
namespace kernelTest {

using Lines = std::set<std::string>;

Lines routeLines(state::State const& state);
Lines interfaceLines(state::State const& state);
Lines allLines(state::State const& state);
// Of a folder with addr.json, routes4.json and routes6.json.
Lines shownLines(std::filesystem::path const& folder);

// What is in one of them only.
Lines difference(Lines const& one, Lines const& other);

// Of a shell command, its errors too.
std::string outputOf(std::string const& command);

// The recorded machine in one of its states: "up", "carrierdown", "linkdown".
std::filesystem::path dataOf(std::string const& name);
kernel::Dumps recordedDumps(std::string const& name);

}  // namespace kernelTest
