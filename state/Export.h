#pragma once

// What libKivState lets other programs link against; everything else in it is hidden.
#define KIV_STATE_EXPORT __attribute__((visibility("default")))
