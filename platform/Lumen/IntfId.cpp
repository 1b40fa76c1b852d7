#include "Lumen/IntfId.h"

#include "Lumen/TextCursor.h"
#include "Lumen/TextDigits.h"
#include "Zam/Error.h"
#include "Zam/Hash.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

namespace Lumen {
namespace {

constexpr std::string_view nameHead = "Name(";
constexpr std::string_view tail = ")";

struct IdForm {
   IntfId::Kind kind;
   std::string_view head;
   int base;
   U64 maxId;
   IntfId (*make)(U64 id) noexcept;
};

constexpr U64 maxId = std::numeric_limits<U64>::max();
constexpr U64 maxGroupId = std::numeric_limits<U32>::max();

constexpr std::array<IdForm, 3> idForms{{
    {IntfId::Kind::fec, "FecId(0x", 16, maxId, IntfId::fromFecId},
    {IntfId::Kind::dynamicTunnel, "DynamicTunnel(0x", 16, maxId, IntfId::fromTunnelId},
    {IntfId::Kind::nexthopGroup, "NexthopGroup(", 10, maxGroupId,
     [](U64 id) noexcept { return IntfId::fromNexthopGroup(static_cast<U32>(id)); }},
}};

// What stands between head and tail.
std::optional<std::string_view> inner(std::string_view text, std::string_view head) noexcept {
   if (!text.starts_with(head) || !text.ends_with(tail)) {
      return std::nullopt;
   }
   text.remove_prefix(head.size());
   text.remove_suffix(tail.size());
   return text;
}

// Exactly as it is written: lower case, no leading zeros.
std::optional<U64> readId(std::string_view digits, int base) noexcept {
   U64 id = 0;
   char const* const end = digits.data() + digits.size();
   auto const [at, error] = std::from_chars(digits.data(), end, id, base);
   bool const canonical = (digits.size() == 1 || !digits.starts_with('0')) &&
                          std::ranges::none_of(digits, [](char c) { return c >= 'A' && c <= 'F'; });
   return error == std::errc() && at == end && canonical ? std::optional(id) : std::nullopt;
}

std::optional<IntfId> readIdForm(std::string_view text) noexcept {
   for (auto const& form : idForms) {
      auto const digits = inner(text, form.head);
      auto const id = digits ? readId(*digits, form.base) : std::nullopt;
      if (id && *id <= form.maxId) {
         return form.make(*id);
      }
   }
   return std::nullopt;
}

// Whether a name cannot be its own text, since that text means something else.
bool isReserved(std::string_view text) noexcept {
   for (auto name = inner(text, nameHead); name; name = inner(text, nameHead)) {
      text = *name;
   }
   return readIdForm(text).has_value();
}

constexpr bool isNameByte(char c) noexcept {
   return static_cast<U8>(c) > ' ' && c != '\x7f';
}

// Takes a digit run from the front and returns it without leading zeros.
std::string_view takeNumber(std::string_view& text) noexcept {
   auto const size = static_cast<std::size_t>(std::ranges::find_if_not(text, TextCursor::isDigit) - text.begin());
   auto number = text.substr(0, size);
   text.remove_prefix(size);
   number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
   return number;
}

std::strong_ordering naturalOrder(std::string_view const first, std::string_view const second) noexcept {
   auto a = first;
   auto b = second;
   while (!a.empty() && !b.empty()) {
      if (TextCursor::isDigit(a.front()) && TextCursor::isDigit(b.front())) {
         auto const x = takeNumber(a);
         auto const y = takeNumber(b);
         if (auto const order = x.size() != y.size() ? x.size() <=> y.size() : x <=> y; order != 0) {
            return order;
         }
      } else if (a.front() != b.front()) {
         return static_cast<U8>(a.front()) <=> static_cast<U8>(b.front());
      } else {
         a.remove_prefix(1);
         b.remove_prefix(1);
      }
   }
   return a.size() != b.size() ? a.size() <=> b.size() : first <=> second;
}

}  // namespace

IntfId IntfId::named(std::string_view name) {
   if (name.size() > maxNameLength) {
      throw Zam::RangeError("Lumen::IntfId::name > maxLength() not allowed");
   }
   if (name.empty() || !std::ranges::all_of(name, isNameByte)) {
      throw Zam::ParseError("an interface name without blanks", name);
   }
   IntfId intfId;
   intfId.bytes_[0] = static_cast<char>(Kind::named);
   std::ranges::copy(name, intfId.bytes_.begin() + nameAt);
   return intfId;
}

std::strong_ordering IntfId::operator<=>(IntfId const& other) const noexcept {
   if (kind() != other.kind()) {
      return kind() <=> other.kind();
   }
   return isNamed() ? naturalOrder(name(), other.name()) : id() <=> other.id();
}

IntfId IntfId::parse(std::string_view text) {
   if (text.empty()) {
      return {};
   }
   if (auto const intfId = readIdForm(text)) {
      return *intfId;
   }
   return named(isReserved(text) ? *inner(text, nameHead) : text);
}

std::size_t IntfId::formatTo(char* out) const noexcept {
   char* at = out;
   if (isNamed()) {
      bool const reserved = isReserved(name());
      at = formatText(at, reserved ? nameHead : "");
      at = formatText(at, name());
      at = formatText(at, reserved ? tail : "");
   }
   for (auto const& form : idForms) {
      if (kind() == form.kind) {
         at = formatText(at, form.head);
         at = std::to_chars(at, out + maxTextLength, id(), form.base).ptr;
         at = formatText(at, tail);
      }
   }
   return static_cast<std::size_t>(at - out);
}

std::size_t IntfId::hashValue() const noexcept {
   std::array<std::size_t, 3> words;
   static_assert(sizeof(words) == sizeof(bytes_));
   std::memcpy(words.data(), bytes_.data(), sizeof(words));
   return Zam::combinedHash(words[0], words[1], words[2]);
}

}  // namespace Lumen
