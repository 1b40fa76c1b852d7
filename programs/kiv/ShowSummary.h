#pragma once

#include "programs/command/Command.h"

// How many routes there are, by category and by mask length.
namespace kiv {

// "show ip route summary", "show ipv6 route summary".
std::span<Command const> summaryCommands();

// A row of the table: what counts under one category. Its label begins with blanks when the row above it includes it.
struct SummaryRow {
   std::string_view label;
   std::string_view category;
};

// In the order in which they are shown, one for every category that routes of the family can count under.
std::span<SummaryRow const> ipSummaryRows();
std::span<SummaryRow const> ipv6SummaryRows();

}  // namespace kiv
