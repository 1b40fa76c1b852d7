#pragma once

#include "Zam/Export.h"

#include <string_view>

// Feature toggles: files of switches by which an installation turns single features off or on. A file is one object of
// booleans,
//
//    { "MplsPushNdVrf": false }
//
// in the directory that the environment variable KIV_TOGGLE_DIR names, or else in /etc/kiv/toggles.
namespace Zam {

// Reads the file; a toggle is asked once per process and its answer kept by the asker. What is not there, or not
// written as above, is `byDefault`: a damaged file as a whole, since a part of it may mean something else.
KIV_EXPORT bool getToggleState(std::string_view file, std::string_view toggle, bool byDefault = true) noexcept;

// The same of a file's text.
KIV_EXPORT bool toggleState(std::string_view text, std::string_view toggle, bool byDefault) noexcept;

}  // namespace Zam
