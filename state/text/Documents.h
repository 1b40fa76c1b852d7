#pragma once

#include "state/State.h"
#include "state/text/Json.h"

#include <string>

// The two documents of a state directory: snapshots again, of what is in no table and of what is configured.
namespace state {

State readState(JsonDocument const& snapshot);

// FECs are taken as they are named, for they are in the shared tables.
State readEntities(JsonDocument const& document);
std::string entitiesText(State const& state);

// Takes a configuration's routes into a state in place of those that it has. JsonError for a VRF that the state does
// not have.
void readConfig(JsonDocument const& document, State& state);
// Equal configurations have equal texts.
std::string configText(State const& state);

}  // namespace state
