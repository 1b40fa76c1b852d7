#pragma once

#include "Lumen/IpGenAddr.h"
#include "Zam/Int.h"
#include "programs/command/Command.h"
#include "programs/command/RequestedPrefix.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <string>

// What parameters can be. A kind has the name under which users know it, what has such names now, and read(), which
// makes a typed value of a word or throws what is wrong with it; one that stands without a keyword also accepts() words
// by their form, or lists its words.
namespace kiv {

// What stands for all VRFs, and for any nexthop group; a VRF or group of that name cannot be asked for alone.
inline constexpr std::string_view allVrfs = "all";
inline constexpr std::string_view anyGroup = "any";

// A name, whatever it is.
template <Named What>
struct NameOf {
   static constexpr std::string_view name = "NAME";
   static constexpr Named named = What;
   static std::string read(std::string_view word) { return std::string(word); }
};
using VrfName = NameOf<Named::vrf>;
using InterfaceName = NameOf<Named::interface>;

struct NexthopGroupName : NameOf<Named::nexthopGroup> {
   static bool accepts(std::string_view) { return true; }
};

struct VrfNameOrAll : VrfName {
   static constexpr std::string_view name = "NAME|all";
   static constexpr std::array words{Word{allVrfs, allVrfs, "every VRF"}};
};

struct NexthopGroupNameOrAny : NameOf<Named::nexthopGroup> {
   static constexpr std::string_view name = "NAME|any";
   static constexpr std::array words{Word{anyGroup, anyGroup, "any nexthop group"}};
};

struct FileName : NameOf<Named::file> {
   static constexpr std::string_view name = "FILE";
   static bool accepts(std::string_view) { return true; }
};

template <U32 Min, U32 Max>
struct Number {
   static constexpr std::string_view name = "NUMBER";
   static constexpr Named named = Named::nothing;
   static bool accepts(std::string_view word) {
      return !word.empty() && word.find_first_not_of("0123456789") == std::string_view::npos;
   }
   static U32 read(std::string_view word) {
      U32 number = 0;
      auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
      if (error != std::errc() || end != word.data() + word.size() || number < Min || number > Max) {
         throw std::invalid_argument("not a number from " + std::to_string(Min) + " to " + std::to_string(Max));
      }
      return number;
   }
};

using AnyNumber = Number<0, std::numeric_limits<U32>::max()>;

// An address, which stands for the prefix of just itself, or a prefix.
template <class Prefix>
struct AddressOrPrefix {
   static constexpr std::string_view name = "ADDRESS|PREFIX";
   static constexpr Named named = Prefix::maxLength == Lumen::Prefix::maxLength ? Named::ipPrefix : Named::ip6Prefix;
   static bool accepts(std::string_view word) { return looksLikePrefix(word); }
   static RequestedPrefix<Prefix> read(std::string_view word) { return requestedPrefix<Prefix>(word); }
};

// Of either family.
struct Address {
   static constexpr std::string_view name = "ADDRESS";
   static constexpr Named named = Named::nothing;
   static Lumen::IpGenAddr read(std::string_view word) { return requestedNexthop(word); }
};

// One of some words, and the value that it stands for.
template <auto const& Words>
struct WordOf {
   static constexpr std::string_view name = "WORD";
   static constexpr Named named = Named::nothing;
   static constexpr std::span<Word const> words{Words};
   static std::string_view read(std::string_view word) {
      auto const found = std::ranges::find(words, word, &Word::word);
      return found != words.end() ? found->value : throw std::invalid_argument("no such word");
   }
};

}  // namespace kiv
