#pragma once

#include "Lumen/Ip6Prefix.h"
#include "Lumen/IpGenAddr.h"
#include "Lumen/Prefix.h"

#include <string_view>

// The addresses and prefixes that users type. What is wrong with one is thrown as a std::invalid_argument whose text
// tells it.
namespace kiv {

// What a user asks about: a prefix, or an address, which stands for the prefix of just itself.
template <class Prefix>
struct RequestedPrefix {
   Prefix prefix{};
   bool hasMask = false;
};

// Whether a word can be meant as an address or prefix of any family.
bool looksLikePrefix(std::string_view word);

template <class Prefix>
RequestedPrefix<Prefix> requestedPrefix(std::string_view word);
extern template RequestedPrefix<Lumen::Prefix> requestedPrefix(std::string_view word);
extern template RequestedPrefix<Lumen::Ip6Prefix> requestedPrefix(std::string_view word);

// Of either family: the next hop of an IPv4 route may be an IPv6 one.
Lumen::IpGenAddr requestedNexthop(std::string_view word);

}  // namespace kiv
