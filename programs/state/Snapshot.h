#pragma once

#include "programs/state/Json.h"
#include "programs/state/State.h"

#include <string>

// Snapshots: the state of a box in one JSON document, as docs/snapshot.md describes it. Reading is strict: whatever the
// format does not have, and every value or reference that cannot be, is a JsonError.
namespace state {

struct Snapshot {
   State state{};
   // A snapshot again, of all but what the shared tables and the configuration file hold.
   std::string entities{};
};

Snapshot readSnapshot(JsonDocument const& document);

// Reads what Snapshot::entities holds. FECs are taken as they are named, for they are in the shared tables.
State readEntities(JsonDocument const& document);

}  // namespace state
