#pragma once

#include "Lumen/TextValue.h"
#include "Zam/Export.h"
#include "Zam/Int.h"

#include <array>
#include <compare>
#include <cstring>
#include <type_traits>

namespace Lumen {

// What a via leaves through: an interface known by name, or something that only stands for one (a FEC, a dynamic
// tunnel, a nexthop group). The default is none, which is no valid interface; its text is empty.
//
// Texts: a name is its own text; the others read "FecId(0x1f)", "DynamicTunnel(0x1f)", "NexthopGroup(7)". An interface
// whose own name has such a form is written "Name(FecId(0x1f))", so every text reads back as the value it came from.
// The order is by kind, then natural: digit runs in names compare as numbers (Ethernet2 before Ethernet10), ids compare
// as numbers; names alike but for leading zeros are decided byte-wise.
class KIV_EXPORT IntfId {
 public:
   enum class Kind : U8 { none = 0, named = 1, fec = 2, dynamicTunnel = 3, nexthopGroup = 4 };

   static constexpr std::size_t maxNameLength = 23;
   static constexpr std::size_t maxTextLength = 33;

   constexpr IntfId() noexcept = default;
   // 1 to 23 bytes without blanks, control characters or NUL: RangeError when longer, ParseError otherwise.
   static IntfId named(std::string_view name);
   static IntfId fromFecId(U64 fecId) noexcept { return IntfId(Kind::fec, fecId); }
   static IntfId fromTunnelId(U64 tunnelId) noexcept { return IntfId(Kind::dynamicTunnel, tunnelId); }
   static IntfId fromNexthopGroup(U32 groupId) noexcept { return IntfId(Kind::nexthopGroup, groupId); }

   Kind kind() const noexcept { return static_cast<Kind>(bytes_[0]); }
   bool isValid() const noexcept { return kind() != Kind::none; }
   bool isNamed() const noexcept { return kind() == Kind::named; }
   bool isFecId() const noexcept { return kind() == Kind::fec; }
   bool isDynamicTunnel() const noexcept { return kind() == Kind::dynamicTunnel; }
   bool isNexthopGroup() const noexcept { return kind() == Kind::nexthopGroup; }

   // What it stands for; zero, or the empty name, when it is of another kind. The name lives as long as this value.
   U64 fecId() const noexcept { return isFecId() ? id() : 0; }
   U64 tunnelId() const noexcept { return isDynamicTunnel() ? id() : 0; }
   U32 nexthopGroupId() const noexcept { return isNexthopGroup() ? static_cast<U32>(id()) : 0; }
   std::string_view name() const noexcept {
      char const* const text = bytes_.data() + nameAt;
      return isNamed() ? std::string_view(text, strnlen(text, maxNameLength)) : std::string_view();
   }

   bool operator==(IntfId const& other) const noexcept { return bytes_ == other.bytes_; }
   std::strong_ordering operator<=>(IntfId const& other) const noexcept;

   static IntfId parse(std::string_view text);
   std::size_t formatTo(char* out) const noexcept;
   std::string stringValue() const { return textOf(*this); }
   std::size_t hashValue() const noexcept;

 private:
   static constexpr std::size_t nameAt = 1;
   static constexpr std::size_t idAt = 8;

   IntfId(Kind kind, U64 id) noexcept {
      bytes_[0] = static_cast<char>(kind);
      std::memcpy(bytes_.data() + idAt, &id, sizeof(id));
   }

   U64 id() const noexcept {
      U64 id = 0;
      std::memcpy(&id, bytes_.data() + idAt, sizeof(id));
      return id;
   }

   // The kind, then the name filled up with NULs; or the kind, seven zeros and the id.
   alignas(U64) std::array<char, 24> bytes_{};
};

static_assert(sizeof(IntfId) == 24 && std::is_trivially_copyable_v<IntfId>);
static_assert(std::has_unique_object_representations_v<IntfId>);

}  // namespace Lumen
