#pragma once

#include "state/Export.h"
#include "state/State.h"

#include <stdexcept>
#include <string>
#include <string_view>

// Snapshots: the state of a box in one JSON document, as docs/snapshot.md describes it. Reading is strict: whatever the
// format does not have, and every value or reference that cannot be, is a JsonError. What is written reads back as the
// state that it was written from; only bytes that are no UTF-8 do not, for JSON has no place for them: they become
// U+FFFD.
namespace state {

// One line: the file, the way to the value, the value and what is wrong with it.
class KIV_STATE_EXPORT JsonError : public std::runtime_error {
 public:
   using std::runtime_error::runtime_error;
   ~JsonError() override;
};

KIV_STATE_EXPORT State readSnapshot(std::string const& file);
// `name` is what messages call the text.
KIV_STATE_EXPORT State parseSnapshot(std::string name, std::string text);

// Hive::StateError for what a snapshot has no words for, such as a VRF id without a VRF.
KIV_STATE_EXPORT std::string snapshotText(State const& state);

// The format as a JSON Schema of 2020-12.
KIV_STATE_EXPORT std::string snapshotSchema();

// The text as a JSON string.
KIV_STATE_EXPORT std::string jsonQuoted(std::string_view text);

}  // namespace state
