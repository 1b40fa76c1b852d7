#include "programs/command/RequestedPrefix.h"

#include "Lumen/Ip6AddrWithMask.h"
#include "Lumen/IpAddrWithMask.h"

#include <optional>
#include <stdexcept>

namespace kiv {
namespace {

constexpr std::string_view familyName(Lumen::Prefix const*) {
   return "IPv4";
}
constexpr std::string_view familyName(Lumen::Ip6Prefix const*) {
   return "IPv6";
}
template <class Prefix>
constexpr std::string_view family = familyName(static_cast<Prefix const*>(nullptr));

template <class Prefix>
using OtherFamily = std::conditional_t<Prefix::maxLength == 32, Lumen::Ip6Prefix, Lumen::Prefix>;

// The address and length that were typed; empty when they are none. Throws the range error of a length.
template <class Prefix>
std::optional<Lumen::BasicAddrWithMask<typename Prefix::AddrType>> typed(std::string_view word) {
   using Addr = typename Prefix::AddrType;
   try {
      if (word.find('/') == std::string_view::npos) {
         return {{Addr::parse(word), Prefix::maxLength}};
      }
      return Lumen::BasicAddrWithMask<Addr>::parse(word);
   } catch (Zam::ParseError const&) {
      return std::nullopt;
   }
}

template <class Prefix>
bool isOfFamily(std::string_view word) {
   try {
      return typed<Prefix>(word).has_value();
   } catch (Zam::RangeError const&) {
      return true;
   }
}

template <class Prefix>
std::string notOfFamily(std::string_view word) {
   std::string const wanted = "an " + std::string(family<Prefix>) + " address or prefix";
   using Other = OtherFamily<Prefix>;
   return isOfFamily<Other>(word) ? std::string(family<Other>) + " where " + wanted + " should be" : "not " + wanted;
}

}  // namespace

bool looksLikePrefix(std::string_view word) {
   return word.find_first_of(".:/") != std::string_view::npos || word.find_first_of("0123456789") == 0;
}

template <class Prefix>
RequestedPrefix<Prefix> requestedPrefix(std::string_view word) try {
   auto const address = typed<Prefix>(word);
   if (!address) {
      throw std::invalid_argument(notOfFamily<Prefix>(word));
   }
   if (address->subnet().address() != address->address()) {
      throw std::invalid_argument("host bits set; the prefix is " + address->subnet().stringValue());
   }
   return {address->subnet(), word.find('/') != std::string_view::npos};
} catch (Zam::RangeError const&) {
   throw std::invalid_argument("an " + std::string(family<Prefix>) + " prefix is not longer than " +
                               std::to_string(Prefix::maxLength) + " bits");
}

template RequestedPrefix<Lumen::Prefix> requestedPrefix(std::string_view word);
template RequestedPrefix<Lumen::Ip6Prefix> requestedPrefix(std::string_view word);

Lumen::IpGenAddr requestedNexthop(std::string_view word) {
   try {
      return Lumen::IpGenAddr::parse(word);
   } catch (Zam::ParseError const&) {
      throw std::invalid_argument("not an IP address");
   }
}

}  // namespace kiv
