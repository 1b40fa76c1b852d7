#pragma once

// Symbols are hidden by default; what other programs may link against carries this mark.
#define KIV_EXPORT __attribute__((visibility("default")))
