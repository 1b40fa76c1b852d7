#pragma once

#include "programs/kiv/Command.h"

// May this address, or this route distinguisher, be assigned? What must not be is refused, with the reason.
namespace kiv {

ExitStatus checkIpAddress(Request const& request);
ExitStatus checkIpv6Address(Request const& request);
ExitStatus checkRouteDistinguisher(Request const& request);

// Of addresses with their length, and of route distinguishers; what is wrong with one is thrown.
void checkIpAddressText(std::string_view word);
void checkIpv6AddressText(std::string_view word);
void checkRouteDistinguisherText(std::string_view word);

}  // namespace kiv
